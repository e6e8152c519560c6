// The console over a real application model on a real show (the model's
// test doubles underneath): keys, menu shortcuts, reordering with undo,
// Show Mode, the live rail and the start page, driven through the widgets;
// and the snapshot tool's pictures against the kept goldens.

#include "AppModelFixture.h"
#include "ChildProcess.h"

#include "Console/ConsolePages.h"
#include "Console/ConsoleWindow.h"
#include "Console/LiveRail.h"
#include "Console/RunOfShowModel.h"
#include "Console/RunOfShowView.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QTest>

namespace velarion::testing {

namespace {

class ConsoleTest : public AppModelFixture {
protected:
    void SetUp() override {
        start();
        model->openShow(savePackage(showWithCues("Gala", {"One", "Two", "Three"}), "Gala"));
        window = std::make_unique<console::ConsoleWindow>(*model, [this] { return scheduler.now(); });
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        // No window manager runs on the private server to activate it.
        QApplication::setActiveWindow(window.get());
        window->runOfShow().setFocus();
    }
    void TearDown() override { window.reset(); }

    // Lets queued refreshes run.
    void settle() {
        QApplication::processEvents();
        QApplication::processEvents();
    }
    std::vector<std::string> cueNames() const {
        std::vector<std::string> names;
        for (const Cue* cue : model->show()->allCues()) names.push_back(cue->name);
        return names;
    }
    const EngineState& state() const { return model->engine()->state(); }

    std::unique_ptr<console::ConsoleWindow> window;
};

TEST_F(ConsoleTest, OperatorKeysActOnTheEngineAndATextFieldKeepsItsOwn) {
    auto* field = new QLineEdit(window.get());
    field->show();
    struct Case {
        const char* what;
        Qt::Key key;
        bool inTextField;
        std::function<bool()> happened;
    };
    const std::vector<Case> cases{
        {"Space in a text field types", Qt::Key_Space, true, [&] { return field->text() == " " && !state().lastFiredCueID; }},
        {"Down selects the next cue", Qt::Key_Down, false, [&] { return model->selectedCueID() == cueNamed("Two").id; }},
        {"Space is GO", Qt::Key_Space, false, [&] { return state().lastFiredCueID == cueNamed("One").id; }},
        {"Period is Safe Slide", Qt::Key_Period, false, [&] { return state().holdingOn; }},
        {"Esc in a text field is Panic", Qt::Key_Escape, true, [&] {
             return !std::holds_alternative<PanicIdle>(state().panic);
         }},
    };
    for (const Case& item : cases) {
        QWidget* target = item.inTextField ? static_cast<QWidget*>(field) : &window->runOfShow();
        target->setFocus();
        QTest::keyClick(target, item.key);
        settle();
        EXPECT_TRUE(item.happened()) << item.what;
        scheduler.advance(0.3); // past GO's guard against bounced keys
    }
}

TEST_F(ConsoleTest, MenuShortcutsReachTheirCommands) {
    QTest::keyClick(window.get(), Qt::Key_L, Qt::ControlModifier);
    settle();
    EXPECT_TRUE(model->isLocked());
    EXPECT_TRUE(window->lockBadge().isVisible());
    EXPECT_EQ(window->action("Enter Show Mode")->text(), "Return to Edit");
    QTest::keyClick(window.get(), Qt::Key_Y, Qt::ControlModifier);
    settle();
    EXPECT_TRUE(window->historyIsVisible());
    QTest::keyClick(window.get(), Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(window->page(), console::ConsoleWindow::Page::slides);
}

TEST_F(ConsoleTest, DraggingACueReordersTheShowAndUndoPutsItBack) {
    auto& rows = window->rows();
    const QModelIndex three = rows.indexOfCue(cueNamed("Three").id, 0);
    std::unique_ptr<QMimeData> dragged(rows.mimeData({three}));
    const int onOne = rows.indexOfCue(cueNamed("One").id).row();
    rows.dropMimeData(dragged.get(), Qt::MoveAction, onOne, 0, {});
    settle();
    EXPECT_EQ(cueNames(), (std::vector<std::string>{"Three", "One", "Two"}));
    EXPECT_EQ(rows.data(rows.index(onOne, console::RunOfShowModel::nameColumn), Qt::DisplayRole).toString(), "Three");
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
    settle();
    EXPECT_EQ(cueNames(), (std::vector<std::string>{"One", "Two", "Three"}));
    // The move keys take the same road.
    model->selectCue(cueNamed("One").id);
    QTest::keyClick(window.get(), Qt::Key_Down, Qt::ControlModifier);
    settle();
    EXPECT_EQ(cueNames(), (std::vector<std::string>{"Two", "One", "Three"}));
}

TEST_F(ConsoleTest, ShowModeRefusesARenameInPlaceWithItsWordsAndABeep) {
    model->setLocked(true);
    auto& rows = window->rows();
    const QModelIndex name = rows.indexOfCue(cueNamed("Two").id, console::RunOfShowModel::nameColumn);
    EXPECT_FALSE(rows.flags(name) & Qt::ItemIsEditable);
    EXPECT_FALSE(rows.setData(name, "Renamed", Qt::EditRole));
    settle();
    EXPECT_EQ(model->status(), "Show Mode is on. Return to Edit to make changes.");
    EXPECT_EQ(desktop.beepCount, 1);
    EXPECT_EQ(cueNamed("Two").name, "Two");
}

TEST_F(ConsoleTest, TheLiveRailFollowsGoAndPanic) {
    auto& rail = window->rail();
    EXPECT_EQ(rail.goButton().text(), "GO\nOne");
    QTest::mouseClick(&rail.goButton(), Qt::LeftButton);
    window->refreshLive();
    EXPECT_EQ(rail.goButton().text(), "GO\nTwo");
    EXPECT_TRUE(rail.running().isVisible());
    EXPECT_EQ(rail.running().height(), console::RunningList::rowHeight);
    QTest::mouseClick(&rail.panicButton(), Qt::LeftButton);
    window->refreshLive();
    EXPECT_EQ(rail.panicButton().text(), "Stop Now");
    QTest::mouseClick(&rail.panicButton(), Qt::LeftButton);
    window->refreshLive();
    EXPECT_EQ(rail.panicButton().text(), "Panic");
    EXPECT_EQ(rail.running().height(), 0);
}

TEST_F(ConsoleTest, TheStartPageOpensARecentShow) {
    const auto location = model->package()->url();
    model->close();
    settle();
    ASSERT_EQ(window->page(), console::ConsoleWindow::Page::start);
    QListWidget& recents = window->startPage().recentList();
    ASSERT_EQ(recents.count(), 1);
    recents.setFocus();
    recents.setCurrentRow(0);
    QTest::keyClick(&recents, Qt::Key_Return);
    settle();
    ASSERT_TRUE(model->package());
    EXPECT_EQ(model->package()->url(), location);
    EXPECT_EQ(window->page(), console::ConsoleWindow::Page::cues);
}

// Pictures of the snapshot tool against the kept ones. Times shown in the
// views may differ by a second from run to run: a few digits' worth of
// pixels is allowed. VELARION_UPDATE_GOLDEN=1 rewrites them.
TEST(ConsoleSnapshots, MatchTheGoldens) {
    TempFolder home{"velarion-snapshot"};
    const auto folder = home / "out";
    ChildProcess tool(VELARION_EXECUTABLE, {"--snapshot", folder.string()},
                      {{"HOME", home.path().string()}, {"XDG_CONFIG_HOME", (home / "config").string()},
                       {"XDG_DATA_HOME", (home / "data").string()},
                       // Under AddressSanitizer: Qt's own caches live until exit.
                       {"ASAN_OPTIONS", "detect_leaks=0"}});
    ASSERT_EQ(tool.wait(), 0) << tool.transcript();
    const bool update = std::getenv("VELARION_UPDATE_GOLDEN") != nullptr;
    for (const char* name : {"start-page", "run-of-show", "live-rail", "program", "inspector", "library", "present",
                             "slide-editor", "settings-screens", "ready-check"}) {
        const QString golden = QString(VELARION_CONSOLE_GOLDEN_DIR) + "/" + name + ".png";
        const QImage actual = QImage(QString::fromStdString((folder / (std::string(name) + ".png")).string()))
                                  .convertToFormat(QImage::Format_ARGB32);
        ASSERT_FALSE(actual.isNull()) << name;
        if (update) {
            actual.save(golden);
            continue;
        }
        const QImage expected = QImage(golden).convertToFormat(QImage::Format_ARGB32);
        ASSERT_EQ(actual.size(), expected.size()) << name;
        long long differing = 0;
        for (int y = 0; y < actual.height(); ++y)
            for (int x = 0; x < actual.width(); ++x) {
                const QRgb a = actual.pixel(x, y), b = expected.pixel(x, y);
                if (std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                              std::abs(qBlue(a) - qBlue(b))}) > 40)
                    ++differing;
            }
        const double share = double(differing) / (double(actual.width()) * actual.height());
        EXPECT_LT(share, 0.01) << name << ": " << share * 100 << "% of pixels differ";
        if (share >= 0.01) actual.save(QString(VELARION_CONSOLE_GOLDEN_DIR) + "/" + name + ".actual.png");
    }
}

} // namespace

} // namespace velarion::testing
