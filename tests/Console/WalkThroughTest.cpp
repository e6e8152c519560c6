// A new user's first show, taken as they would take it, in the whole
// application as it ships (real sound on the private sound server, real
// windows on the private X server, real import, pages and video): from the
// start page a template, two pictures and a video dropped in, a song typed
// into the slide editor, GO through every cue with the audience's test
// window open, save, quit; then a second start that reopens the show with
// nothing playing.

#include "ConsoleLaunch.h"
#include "GeneratedVideo.h"
#include "HeadlessApplication.h"
#include "PrivateSoundServer.h"
#include "ScopedEnvironment.h"
#include "TempFolder.h"

#include "Console/ConsolePages.h"
#include "Console/ConsoleWindow.h"
#include "Console/RunOfShowModel.h"
#include "Console/SlideEditorSong.h"
#include "Console/SlideEditorWindow.h"
#include "Live/AppModel.h"
#include "LiveModel/ShowTemplate.h"

#include <QApplication>
#include <QImage>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <gtest/gtest.h>

namespace velarion::testing {
namespace {

constexpr int patienceMilliseconds = 20000;

const Show& show(const AppModel& model) { return *model.show(); }

std::vector<std::string> cueNames(const AppModel& model) {
    std::vector<std::string> names;
    for (const Cue* cue : show(model).allCues()) names.push_back(cue->name);
    return names;
}

bool hasCueNamed(const AppModel& model, const std::string& name) {
    return model.show() && std::ranges::count(cueNames(model), name) == 1;
}

// The application with its console, whose `script` runs on the main loop
// once the console is up; the application quits when the script ends,
// whatever happened in it.
int runApplication(std::optional<std::filesystem::path> showFile,
                   std::function<void(console::ConsoleWindow&, AppModel&)> script) {
    HeadlessOptions options;
    options.show = std::move(showFile);
    ConsoleLaunch launch;
    launch.prepare(options);
    const auto makeConsole = options.console;
    options.console = [&](AppModel& model, Scheduler& scheduler, Preferences& preferences) {
        auto window = makeConsole(model, scheduler, preferences);
        auto* console = static_cast<console::ConsoleWindow*>(window.get());
        QTimer::singleShot(0, console, [console, &model, &script] {
            script(*console, model);
            console->close();
            QCoreApplication::quit();
        });
        return window;
    };
    HeadlessApplication application(std::move(options));
    return application.run();
}

void dropFiles(console::ConsoleWindow& window, const std::vector<std::filesystem::path>& files) {
    QMimeData dropped;
    QList<QUrl> urls;
    for (const auto& file : files) urls << QUrl::fromLocalFile(QString::fromStdString(file.string()));
    dropped.setUrls(urls);
    console::RunOfShowModel& rows = window.rows();
    rows.dropMimeData(&dropped, Qt::CopyAction, rows.rowCount({}), 0, {});
}

TEST(WalkThrough, AFirstShowFromTheStartPageThroughGoToReopening) {
    std::string whyNot;
    const auto sound = PrivateSoundServer::start(whyNot);
    if (!sound) GTEST_SKIP() << "No sound server could start here: " << whyNot;
    TempFolder home;
    const ScopedEnvironment environment[] = {
        {"HOME", home.path().string()},
        {"XDG_CONFIG_HOME", (home / "config").string()},
        {"XDG_DATA_HOME", (home / "data").string()},
        {"XDG_DOCUMENTS_DIR", (home / "Documents").string()},
        {"VELARION_AGENT_SOCKET", (home / "agent.sock").string()},
        {"DBUS_SESSION_BUS_ADDRESS", std::nullopt},
    };
    std::filesystem::create_directories(home / "Media");
    const std::vector<std::filesystem::path> media{home / "Media" / "Welcome.png", home / "Media" / "Sponsors.png",
                                                   home / "Media" / "Opener.mkv"};
    for (const auto& [file, colour] : {std::pair{media[0], Qt::darkCyan}, {media[1], Qt::darkMagenta}}) {
        QImage picture(320, 180, QImage::Format_RGB32);
        picture.fill(colour);
        ASSERT_TRUE(picture.save(QString::fromStdString(file.string())));
    }
    ASSERT_TRUE(writeCodedVideo(media[2], CodedVideo{.frames = 30}));
    std::filesystem::path saved;

    const int firstRun = runApplication(std::nullopt, [&](console::ConsoleWindow& window, AppModel& model) {
        // A template from the start page.
        const QString conference = QString::fromStdString(std::string(showTemplate::name(ShowTemplate::conference)));
        QPushButton* templateButton = nullptr;
        for (auto* button : window.startPage().findChildren<QPushButton*>())
            if (button->text().startsWith(conference)) templateButton = button;
        ASSERT_NE(templateButton, nullptr);
        QTest::mouseClick(templateButton, Qt::LeftButton);
        ASSERT_TRUE(QTest::qWaitFor([&] { return model.show().has_value(); }, patienceMilliseconds));
        const std::size_t templateCues = show(model).allCues().size();
        QTest::qWait(100); // the console's refresh comes on the next turn of the loop

        // Two pictures and a video dropped on the run of show become cues.
        dropFiles(window, media);
        ASSERT_TRUE(QTest::qWaitFor([&] {
            return hasCueNamed(model, "Welcome") && hasCueNamed(model, "Sponsors") && hasCueNamed(model, "Opener");
        }, patienceMilliseconds)) << model.status() << "; cues: " << ::testing::PrintToString(cueNames(model));

        // A song typed into the slide editor becomes slides.
        model.selectCue(std::nullopt);
        window.action("Make Slides")->trigger();
        console::SlideEditorWindow* editor = nullptr;
        ASSERT_TRUE(QTest::qWaitFor([&] {
            for (const MediaItem& item : show(model).library)
                if (item.song) editor = window.slideEditors().window(item.id);
            return editor != nullptr;
        }, patienceMilliseconds));
        QPlainTextEdit& lyrics = editor->song().lyrics();
        lyrics.setFocus();
        for (const QString line : {"Title: Morning Song", "[Verse 1]", "Wake up and sing", "The day is here", "",
                                   "[Chorus]", "Sing it loud", "Sing it long"}) {
            QTest::keyClicks(&lyrics, line);
            QTest::keyClick(&lyrics, Qt::Key_Return);
        }
        editor->sendTyping();
        const Uuid songID = editor->itemID();
        ASSERT_TRUE(QTest::qWaitFor([&] {
            const MediaItem* deck = show(model).media(songID);
            return deck && deck->song && deck->song->title == "Morning Song" && deck->deck && deck->deck->made &&
                   deck->deck->made->size() == 2 && !model.isDrawingPages();
        }, patienceMilliseconds)) << model.status();
        editor->close();
        EXPECT_EQ(show(model).allCues().size(), templateCues + 4);

        // GO through the whole show with the audience's test window open.
        if (model.offersTestWindow()) model.openAudienceTestWindow();
        model.selectCue(show(model).allCues().front()->id);
        for (const Cue* cue : show(model).allCues()) {
            window.action("GO")->trigger();
            QTest::qWait(400);
            EXPECT_EQ(model.engine()->state().lastFiredCueID, cue->id) << cue->name;
        }
        for (const HistoryEntry& entry : model.engine()->history())
            EXPECT_NE(entry.kind, HistoryEntry::Kind::warning) << entry.text;
        for (const OutputHealth& health : model.outputManager()->health())
            EXPECT_FALSE(health.detail) << health.name << ": " << *health.detail;
        window.action("Clear Everything")->trigger();
        ASSERT_TRUE(QTest::qWaitFor([&] { return model.engine()->state().running.empty(); }, patienceMilliseconds));

        // Saved under the name offered, in the shows folder.
        window.chooseSaveLocation = [&](const QString& suggested) {
            return QString::fromStdString((home / "Documents").string()) + "/" + suggested;
        };
        window.action("Save")->trigger();
        ASSERT_TRUE(QTest::qWaitFor([&] { return !model.isDirty() && !model.package()->isScratch(); },
                                    patienceMilliseconds)) << model.status();
        saved = model.package()->url();
        EXPECT_EQ(saved.parent_path(), home / "Documents");
    });
    ASSERT_EQ(firstRun, 0);
    ASSERT_TRUE(std::filesystem::exists(saved));

    // The next start reopens it, media and slides in place, nothing playing.
    const int secondRun = runApplication(saved, [&](console::ConsoleWindow& window, AppModel& model) {
        ASSERT_TRUE(model.show());
        QTest::qWait(100); // the console's refresh comes on the next turn of the loop
        EXPECT_EQ(window.page(), console::ConsoleWindow::Page::cues);
        for (const char* name : {"Welcome", "Sponsors", "Opener"}) EXPECT_TRUE(hasCueNamed(model, name)) << name;
        EXPECT_TRUE(std::ranges::any_of(show(model).library, [](const MediaItem& item) {
            return item.song && item.song->title == "Morning Song" && item.deck->made->size() == 2;
        }));
        for (const MediaItem& item : show(model).library) {
            if (item.song) continue; // a song's slides are drawn, not imported
            EXPECT_TRUE(std::filesystem::exists(model.package()->mediaURL(item.fileName))) << item.name;
        }
        EXPECT_TRUE(model.engine()->state().running.empty());
    });
    EXPECT_EQ(secondRun, 0);
}

} // namespace
} // namespace velarion::testing
