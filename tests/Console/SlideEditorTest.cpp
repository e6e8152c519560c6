// The slide editor over a real application model: lyrics typed into it
// becoming the show's slides, a box moved by hand on the canvas that keeps
// its place through a redraw, and drags landing as one undoable change.

#include "AppModelFixture.h"

#include "Console/ConsoleWindow.h"
#include "Console/SlideEditorCanvas.h"
#include "Console/SlideEditorSong.h"
#include "Console/SlideEditorWindow.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTest>

namespace velarion::testing {

namespace {

class SlideEditorTest : public AppModelFixture {
protected:
    void SetUp() override {
        start();
        model->openShow(savePackage(showWithCues("Evening", {"Welcome"}), "Evening"));
        Song song = Song::parsing("[Verse 1]\nFirst line\nSecond line\n\n[Chorus]\nSing it\nOnce more", LyricLook::overBackground, 2);
        song.title = "Hymn";
        ASSERT_TRUE(model->addSong(song));
        itemID = std::get<SlidesCue>(cueNamed("Hymn").kind).deckID;
        window = std::make_unique<console::ConsoleWindow>(*model, [this] { return scheduler.now(); });
        model->selectCue(cueNamed("Hymn").id);
        window->action("Make Slides")->trigger();
        editor = window->slideEditors().window(itemID);
        ASSERT_NE(editor, nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(editor));
        settle();
    }
    void TearDown() override { window.reset(); }

    void settle() {
        QApplication::processEvents();
        QApplication::processEvents();
    }
    const MediaItem& deck() const { return *model->show()->media(itemID); }
    std::vector<std::vector<std::string>> slideLines() const {
        std::vector<std::vector<std::string>> lines;
        for (const MadeSlide& slide : *deck().deck->made) lines.push_back(deck().song->lyricLines(slide));
        return lines;
    }
    void typeLyrics(const QString& text) {
        QPlainTextEdit& lyrics = editor->song().lyrics();
        lyrics.setFocus();
        lyrics.selectAll();
        QTest::keyClick(&lyrics, Qt::Key_Delete);
        const QStringList lines = text.split('\n');
        for (int i = 0; i < lines.size(); ++i) {
            if (i > 0) QTest::keyClick(&lyrics, Qt::Key_Return);
            QTest::keyClicks(&lyrics, lines[i]);
        }
    }
    // The lyric box of the chosen slide, as the show has it.
    TextBox lyricBox(std::size_t slide) const { return (*deck().deck->made)[slide].effectiveBoxes().front(); }
    void drag(const QPointF& from, const QPointF& to) {
        auto& canvas = editor->canvas();
        QTest::mousePress(&canvas, Qt::LeftButton, {}, from.toPoint());
        QTest::mouseMove(&canvas, ((from + to) / 2).toPoint());
        QTest::mouseMove(&canvas, to.toPoint());
        QTest::mouseRelease(&canvas, Qt::LeftButton, {}, to.toPoint());
        settle();
    }

    Uuid itemID;
    std::unique_ptr<console::ConsoleWindow> window;
    console::SlideEditorWindow* editor = nullptr;
};

TEST_F(SlideEditorTest, LyricsTypedAreReadAtOnceAndBecomeTheShowsSlides) {
    struct Case {
        const char* typed;
        const char* summary;
        const char* order;
        std::vector<std::vector<std::string>> slides;
    };
    const std::vector<Case> cases{
        {"[Verse 1]\nA\nB\n\n[Chorus]\nC\nD\nE\n[Verse 1]", "2 sections · 4 slides", "V1 C V1",
         {{"A", "B"}, {"C", "D"}, {"E"}, {"A", "B"}}},
        {"Title: Round\nA\nB\n\nC\nD\n\nA\nB", "2 sections · 3 slides", "C V1 C", {{"A", "B"}, {"C", "D"}, {"A", "B"}}},
    };
    for (const Case& item : cases) {
        const auto before = slideLines();
        typeLyrics(item.typed);
        EXPECT_EQ(editor->song().summary().text(), item.summary) << item.typed;
        EXPECT_EQ(editor->song().order().text(), item.order) << item.typed;
        EXPECT_EQ(slideLines(), before) << "nothing is sent while typing goes on";
        model->perform(command::Go{}); // what is typed goes in before the show moves on
        settle();
        EXPECT_EQ(slideLines(), item.slides) << item.typed;
    }
    EXPECT_EQ(deck().song->title, "Round");
}

TEST_F(SlideEditorTest, ABoxMovedByHandKeepsItsPlaceWhenTheLyricsAreRedrawn) {
    auto& canvas = editor->canvas();
    const QRectF box = canvas.boxRect(lyricBox(0));
    drag(box.center(), box.center() + QPointF(0, canvas.pageRect().height() * 0.05));
    const TextBox moved = lyricBox(0);
    ASSERT_GT(moved.y, 0.14 + 0.04);

    typeLyrics("[Verse 1]\nNew words\nSecond line\n\n[Chorus]\nSing it\nOnce more");
    editor->sendTyping();
    settle();
    const TextBox redrawn = lyricBox(0);
    EXPECT_EQ(redrawn.text, "New words\nSecond line");
    EXPECT_DOUBLE_EQ(redrawn.y, moved.y);
    EXPECT_EQ(editor->canvas().slide()->effectiveBoxes().front().text, redrawn.text);
}

TEST_F(SlideEditorTest, ADragOnTheCanvasIsOneChangeThatUndoTakesBack) {
    auto& canvas = editor->canvas();
    struct Case {
        const char* what;
        bool byCorner;
        QPointF byPage; // share of the page's size
        std::function<bool(const TextBox& before, const TextBox& after)> landed;
    };
    const std::vector<Case> cases{
        {"moved by its body", false, {0.02, 0.04},
         [](const TextBox& a, const TextBox& b) { return b.y > a.y + 0.03 && b.width == a.width; }},
        {"sized by its corner", true, {-0.2, -0.2},
         [](const TextBox& a, const TextBox& b) { return b.x == a.x && b.width < a.width - 0.15; }},
        {"dragged off the slide stays on it", false, {2, 2},
         [](const TextBox&, const TextBox& b) { return b.x + b.width <= 1 + 1e-9 && b.y + b.height <= 1 + 1e-9; }},
    };
    for (const Case& item : cases) {
        const TextBox before = lyricBox(0);
        const std::size_t steps = model->history().undoStack().size();
        const QRectF frame = canvas.boxRect(before);
        // A press chooses the box; its handles are there from then on.
        QTest::mouseClick(&canvas, Qt::LeftButton, {}, frame.center().toPoint());
        const QPointF from = item.byCorner ? frame.bottomRight() : frame.center();
        drag(from, from + QPointF(item.byPage.x() * canvas.pageRect().width(), item.byPage.y() * canvas.pageRect().height()));
        EXPECT_TRUE(item.landed(before, lyricBox(0))) << item.what;
        EXPECT_EQ(model->history().undoStack().size(), steps + 1) << item.what;
        QTest::keyClick(editor, Qt::Key_Z, Qt::ControlModifier);
        settle();
        EXPECT_EQ(lyricBox(0), before) << item.what;
        EXPECT_EQ(model->status(), "Undone") << item.what;
    }
}

TEST_F(SlideEditorTest, BackgroundsChosenFromTheListsReachTheShow) {
    const MediaItem sky = makeItem(MediaKind::image, "Sky");
    ASSERT_TRUE(model->edit(edit::AddMedia{sky}));
    settle();
    const auto slide = [&] { return deck().deck->made->front(); };
    struct Case {
        QComboBox& list;
        const char* row;
        std::function<bool()> landed;
    };
    const std::vector<Case> cases{
        {editor->background(), "Picture: Sky", [&] { return slide().imageID == sky.id; }},
        {editor->background(), "Clear — what is behind shows through",
         [&] { return slide().isClear == true && !slide().imageID; }},
        {editor->deckBackground(), "Ember loop",
         [&] { return deck().deck->background == Backdrop(backdrop::BuiltIn{BuiltInBackdrop::ember}); }},
        {editor->deckBackground(), "Picture: Sky", [&] { return deck().deck->background == Backdrop(backdrop::Media{sky.id}); }},
    };
    for (const Case& item : cases) {
        const int row = item.list.findText(item.row);
        ASSERT_GE(row, 0) << item.row;
        item.list.setCurrentIndex(row);
        settle();
        EXPECT_TRUE(item.landed()) << item.row;
    }
}

TEST_F(SlideEditorTest, ShowModeRefusesADragWithItsWords) {
    model->setLocked(true);
    settle();
    EXPECT_TRUE(editor->song().lyrics().isReadOnly());
    const TextBox before = lyricBox(0);
    const QRectF box = editor->canvas().boxRect(before);
    drag(box.center(), box.center() + QPointF(30, 30));
    EXPECT_EQ(lyricBox(0), before);
    EXPECT_EQ(model->status(), "Show Mode is on. Return to Edit to make changes.");
}

TEST_F(SlideEditorTest, ImportedPagesMadeEditableGoBackWithUndoAndTheEditorCloses) {
    MediaItem talk;
    talk.id = Uuid::random();
    talk.kind = MediaKind::deck;
    talk.name = "Talk";
    talk.fileName = "Talk.pdf";
    talk.deck = DeckInfo{{"Decks/Talk/1.png", "Decks/Talk/2.png"}, {"", ""}, {}, "Talk.pdf", {}, {}, {}};
    ASSERT_TRUE(model->edit(edit::AddMedia{talk}));
    ASSERT_TRUE(model->add(AppModel::makeCue(talk)));
    settle();
    EXPECT_EQ(window->action("Make Slides")->text().section('\t', 0, 0), "Make Slides");
    window->action("Make Slides")->trigger();
    settle();
    ASSERT_NE(window->slideEditors().window(talk.id), nullptr);
    EXPECT_EQ(window->slideEditors().window(talk.id)->slideList().count(), 2);
    EXPECT_EQ(window->action("Make Slides")->text().section('\t', 0, 0), "Edit Slides");
    model->undo();
    settle();
    EXPECT_EQ(model->status(), "Undone — original imported pages restored; slide editor closed");
    EXPECT_EQ(window->slideEditors().window(talk.id), nullptr);
    EXPECT_NE(window->slideEditors().window(itemID), nullptr);

    // With no deck chosen, a new song is made and its editor opens.
    model->selectCue(cueNamed("Welcome").id);
    window->action("Make Slides")->trigger();
    settle();
    const MediaItem& song = model->show()->library.back();
    ASSERT_TRUE(song.song.has_value());
    EXPECT_NE(window->slideEditors().window(song.id), nullptr);
}

} // namespace

} // namespace velarion::testing
