// The Library panel and the Present view over a real application model:
// library items dragged into the run of show, files dropped in and
// imported, missing files flagged and found, the Headphones preview, and
// slides shown from the Present view.

#include "AppModelFixture.h"

#include "Console/ConsoleWindow.h"
#include "Console/LibraryModel.h"
#include "Console/LibraryPanel.h"
#include "Console/LibraryPictures.h"
#include "Console/PresentView.h"
#include "Console/RunOfShowModel.h"

#include <QApplication>
#include <QImage>
#include <QListView>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QUrl>

#include <chrono>
#include <fstream>
#include <thread>

namespace velarion::testing {

namespace {

class LibraryTest : public AppModelFixture {
protected:
    // Opens the show with the named media files written into its package
    // (a picture for .png names), under a console window.
    void open(const Show& show, std::initializer_list<std::string> files) {
        start();
        const auto location = savePackage(show, show.title);
        for (const std::string& name : files) writeFile(location / "Media" / name);
        model->openShow(location);
        window = std::make_unique<console::ConsoleWindow>(*model, [this] { return scheduler.now(); });
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }
    static void writeFile(const std::filesystem::path& file, QSize pictureSize = {64, 36}) {
        std::filesystem::create_directories(file.parent_path());
        if (file.extension() == ".png") {
            QImage picture(pictureSize, QImage::Format_RGB32);
            picture.fill(Qt::darkCyan);
            ASSERT_TRUE(picture.save(QString::fromStdString(file.string())));
        } else std::ofstream(file) << file.filename().string();
    }
    void TearDown() override { window.reset(); }

    // Turns both loops (the model's virtual one and Qt's) until `done`.
    bool waitFor(const std::function<bool()>& done) {
        for (int turn = 0; turn < 2500; ++turn) {
            scheduler.runDue();
            QApplication::processEvents();
            if (done()) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return false;
    }
    std::vector<std::string> cueNames() const {
        std::vector<std::string> names;
        for (const Cue* cue : model->show()->allCues()) names.push_back(cue->name);
        return names;
    }
    const console::LibraryModel::Row& rowOf(const std::string& name) {
        auto& items = window->library().items();
        for (int row = 0; row < items.rowCount(); ++row)
            if (items.row(row).name == QString::fromStdString(name)) return items.row(row);
        throw std::runtime_error("no library row " + name);
    }
    int rowBefore(const std::string& cueName) { return window->rows().indexOfCue(cueNamed(cueName).id).row(); }

    std::unique_ptr<console::ConsoleWindow> window;
};

TEST_F(LibraryTest, ALibraryItemDraggedIntoTheRunOfShowBecomesACueWhereItLands) {
    open(makeShow("Gala", {makeSection("Main", {makeCue("One"), makeCue("Two")})},
                  {makeItem(MediaKind::image, "Logo", std::nullopt, "Logo.png")}),
         {"Logo.png"});
    auto& items = window->library().items();
    std::unique_ptr<QMimeData> dragged(items.mimeData({items.indexOfItem(rowOf("Logo").id)}));
    ASSERT_TRUE(dragged);
    const std::size_t undoSteps = model->history().undoStack().size();
    window->rows().dropMimeData(dragged.get(), Qt::CopyAction, rowBefore("Two"), 0, {});
    waitFor([&] { return model->show()->allCues().size() == 3; });
    EXPECT_EQ(cueNames(), (std::vector<std::string>{"One", "Logo", "Two"}));
    EXPECT_EQ(model->selectedCueID(), cueNamed("Logo").id);
    EXPECT_EQ(model->status(), "Added Logo");
    EXPECT_EQ(model->history().undoStack().size(), undoSteps + 1);
}

TEST_F(LibraryTest, FilesDroppedFromTheFileManagerImportWithProgressIntoTheShow) {
    open(showWithCues("Gala", {"One", "Two"}), {});
    struct Case {
        const char* what;
        bool onRunOfShow;
        std::vector<std::string> cues;
    };
    const std::vector<Case> cases{
        {"on the library: items only", false, {"One", "Two"}},
        {"on the run of show: a cue at the drop", true, {"One", "Walk in", "Two"}},
    };
    for (const Case& item : cases) {
        const auto file = home / (item.onRunOfShow ? "b" : "a") / "Walk in.mp3";
        writeFile(file);
        QMimeData dropped;
        dropped.setUrls({QUrl::fromLocalFile(QString::fromStdString(file.string()))});
        const std::size_t items = model->show()->library.size();
        if (item.onRunOfShow) window->rows().dropMimeData(&dropped, Qt::CopyAction, rowBefore("Two"), 0, {});
        else window->library().items().dropMimeData(&dropped, Qt::CopyAction, -1, 0, {});
        ASSERT_TRUE(model->isImporting()) << item.what;
        QApplication::processEvents();
        EXPECT_TRUE(window->library().progress().isVisibleTo(&window->library())) << item.what;
        EXPECT_TRUE(window->library().cancelButton().isVisibleTo(&window->library())) << item.what;
        ASSERT_TRUE(waitFor([&] { return !model->isImporting(); })) << item.what;
        QApplication::processEvents();
        EXPECT_EQ(model->show()->library.size(), items + 1) << item.what;
        EXPECT_EQ(window->library().items().rowCount(), int(items + 1)) << item.what;
        EXPECT_EQ(cueNames(), item.cues) << item.what;
        EXPECT_FALSE(window->library().progress().isVisibleTo(&window->library())) << item.what;
    }
}

TEST_F(LibraryTest, AMissingFileIsFlaggedAndFindingItPutsItBack) {
    open(makeShow("Gala", {makeSection("Main")},
                  {makeItem(MediaKind::image, "Here", std::nullopt, "Here.png"),
                   makeItem(MediaKind::image, "Gone", std::nullopt, "Gone.png")}),
         {"Here.png"});
    auto& items = window->library().items();
    ASSERT_TRUE(waitFor([&] { return items.isLoaded(rowOf("Here")) && items.isLoaded(rowOf("Gone")); }));
    EXPECT_FALSE(items.isMissing(rowOf("Here")));
    EXPECT_TRUE(items.picture(rowOf("Here"))) << "a thumbnail from the worker";
    EXPECT_TRUE(items.isMissing(rowOf("Gone")));
    EXPECT_FALSE(items.picture(rowOf("Gone")));

    const auto found = home / "Found.png";
    writeFile(found);
    QString asked;
    window->library().chooseFile = [&](const QString& prompt) {
        asked = prompt;
        return QString::fromStdString(found.string());
    };
    model->selectMedia(rowOf("Gone").id);
    QApplication::processEvents();
    ASSERT_TRUE(window->library().findButton().isEnabled());
    QTest::mouseClick(&window->library().findButton(), Qt::LeftButton);
    EXPECT_EQ(asked, "Find \u201CGone\u201D");
    EXPECT_TRUE(waitFor([&] { return items.isLoaded(rowOf("Gone")) && !items.isMissing(rowOf("Gone")); }));
    EXPECT_FALSE(window->library().findButton().isEnabled());
}

TEST_F(LibraryTest, PicturesScrolledIntoViewAreMadeBeforeTheRestOfTheLibrary) {
    // Full-HD pictures, so that the worker is still busy when the list
    // scrolls to its end.
    std::vector<MediaItem> library;
    for (int i = 0; i < 120; ++i)
        library.push_back(makeItem(MediaKind::image, "P" + std::to_string(i), std::nullopt, "P" + std::to_string(i) + ".png"));
    start();
    const auto media = savePackage(makeShow("Gala", {makeSection("Main")}, library), "Gala") / "Media";
    writeFile(media / "P0.png", {1920, 1080});
    for (int i = 1; i < 120; ++i) std::filesystem::copy_file(media / "P0.png", media / ("P" + std::to_string(i) + ".png"));
    model->openShow(media.parent_path());
    console::LibraryPanel panel(*model);
    panel.resize(320, 480);
    panel.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&panel));
    panel.list().scrollToBottom();
    const std::size_t waiting = panel.pictures().pending();
    ASSERT_GT(waiting, 40u) << "the worker finished before the scroll; the test can't tell";
    auto& items = panel.items();
    const auto loadedCount = [&] {
        int loaded = 0;
        for (int row = 0; row < items.rowCount(); ++row) loaded += items.isLoaded(items.row(row)) ? 1 : 0;
        return loaded;
    };
    ASSERT_TRUE(waitFor([&] { return items.isLoaded(items.row(items.rowCount() - 1)); }));
    // In library order it would come last of all; seen first, it comes
    // with the rows on screen, ahead of most of those waiting.
    EXPECT_LT(loadedCount(), items.rowCount() - int(waiting) / 2);
}

TEST_F(LibraryTest, PreviewPlaysOnTheHeadphonesOutputOnly) {
    Show show = makeShow("Gala", {makeSection("Main")}, {makeItem(MediaKind::audio, "Hymn", 30, "Hymn.mp3")});
    players.defaultSoundSeconds = 30;
    for (const std::optional<std::string>& headphones : {std::optional<std::string>(), std::optional<std::string>("phones")}) {
        show.audio.headphonesDeviceID = headphones;
        show.id = Uuid::random();
        show.title = headphones ? "With" : "Without";
        window.reset();
        model.reset();
        open(show, {"Hymn.mp3"});
        model->selectMedia(rowOf("Hymn").id);
        QApplication::processEvents();
        QTest::mouseClick(&window->library().previewButton(), Qt::LeftButton);
        waitFor([&] { return !headphones || (model->previewPlayer() && model->previewPlayer()->isPlaying()); });
        // Opening tidies the file into the package's Audio folder.
        const auto sound = players.sound(model->package()->mediaURL(model->show()->library[0].fileName));
        if (!headphones) {
            EXPECT_EQ(model->status(), AppModel::noHeadphones);
            EXPECT_FALSE(sound);
            continue;
        }
        ASSERT_TRUE(sound) << model->status();
        EXPECT_TRUE(sound->isPlaying());
        EXPECT_EQ(sound->device(), "phones");
        EXPECT_FALSE(model->engineState()->lastFiredCueID) << "nothing reaches the show";
        EXPECT_EQ(window->library().previewButton().text(), "Stop Preview");
        QTest::mouseClick(&window->library().previewButton(), Qt::LeftButton);
        EXPECT_FALSE(sound->isPlaying());
        EXPECT_FALSE(model->previewedMediaID());
    }
}

TEST_F(LibraryTest, ThePresentViewShowsTheClickedSlideAndMarksIt) {
    MediaItem deck = makeItem(MediaKind::deck, "Morning Light");
    deck.deck = DeckInfo{};
    for (int page = 1; page <= 5; ++page) deck.deck->pages.push_back("Decks/Song/" + std::to_string(page) + ".png");
    deck.deck->groups = {{"Verse 1", 0}, {"Chorus", 2}, {"Verse 2", 3}};
    Show show = makeShow("Gala", {makeSection("Main", {makeCue("Song", SlidesCue{deck.id, 0, std::nullopt})})}, {deck});
    open(show, {"Decks/Song/1.png", "Decks/Song/2.png", "Decks/Song/3.png", "Decks/Song/4.png", "Decks/Song/5.png"});
    model->perform(command::Fire{cueNamed("Song").id});
    window->showPage(console::ConsoleWindow::Page::slides);
    auto& present = window->present();
    present.refresh();
    QStringList headings;
    for (const auto& cell : present.cells())
        if (cell.kind == console::PresentView::Cell::Kind::heading) headings << cell.key + " " + cell.text;
    EXPECT_EQ(headings, (QStringList{"V Verse 1", "C Chorus", "V Verse 2"}));
    EXPECT_EQ(present.onAir(), 0);

    QTest::mouseClick(&present.grid(), Qt::LeftButton, {}, present.slideRect(3).center());
    EXPECT_EQ(model->engineState()->activeSlide, 3);
    present.refresh();
    EXPECT_EQ(present.onAir(), 3);
    // The pages' pictures come from the worker into the model's caches.
    EXPECT_TRUE(waitFor([&] { return model->caches().slideImages.size() == 5; }));
}

} // namespace

} // namespace velarion::testing
