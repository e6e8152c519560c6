// The Settings window and the Ready check view over a real application
// model: a display chosen for a screen reaches the output manager, a grant
// reaches the model and the preferences file, and each kind of Ready check
// button lands where its fix says.

#include "AppModelFixture.h"
#include "Console/ConsoleWindow.h"
#include "Console/ReadyView.h"
#include "Console/SettingsWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <fstream>

namespace velarion::testing {

namespace {

class SettingsTest : public AppModelFixture {
protected:
    void open(const Show& show) {
        start();
        model->openShow(savePackage(show, show.title));
        window = std::make_unique<console::ConsoleWindow>(
            *model, [this] { return scheduler.now(); }, preferences.get());
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        settle();
    }
    void TearDown() override { window.reset(); }
    void settle() {
        QApplication::processEvents();
        QApplication::processEvents();
    }

    std::unique_ptr<console::ConsoleWindow> window;
};

TEST_F(SettingsTest, ADisplayChosenForAScreenReachesTheOutputManager) {
    outputs.displays = {{"HDMI-1", "Projector", 1920, 1080, false}};
    Show show = showWithCues("Gala", {"One"});
    // An older setup naming a display that isn't plugged in.
    show.outputs.audienceDisplayIDs = {"DP-2"};
    open(show);
    window->action("Outputs and Sound")->trigger();
    settle();
    ASSERT_TRUE(window->settings().isVisible());
    QComboBox* connection = window->settings().screens().connectionBox(0);
    ASSERT_NE(connection, nullptr);
    EXPECT_EQ(connection->currentData().toString(), "display:DP-2");

    connection->setCurrentIndex(connection->findData("display:HDMI-1"));
    settle();
    const OutputSetup& applied = outputs.latest->setups.back();
    EXPECT_TRUE(applied.usesLogicalScreens);
    ASSERT_EQ(applied.screens.size(), 1u);
    EXPECT_EQ(applied.screens[0].destination, ScreenDestination(destination::Display{"HDMI-1"}));
    EXPECT_EQ(window->settings().screens().connectionBox(0)->currentData().toString(),
              "display:HDMI-1");

    model->undo();
    settle();
    EXPECT_EQ(outputs.latest->setups.back().effectiveScreens()[0].destination,
              ScreenDestination(destination::Display{"DP-2"}));
}

TEST_F(SettingsTest, EachAgentGrantReachesTheModelAndThePreferencesFileAlone) {
    open(showWithCues("Gala", {"One"}));
    window->settings().showTab(console::SettingsWindow::Tab::agent);
    struct Case {
        const char* grant;
        QCheckBox& box;
        std::function<bool()> granted;
        const PreferenceKey<bool>& key;
        const PreferenceKey<bool>& otherKey;
    };
    auto& agent = window->settings().agent();
    const std::vector<Case> cases{
        {"run", agent.runBox(), [&] { return model->agentMayRun(); }, preferenceKeys::agentRun,
         preferenceKeys::agentEdit},
        {"edit", agent.editBox(), [&] { return model->agentMayEdit(); }, preferenceKeys::agentEdit,
         preferenceKeys::agentRun},
    };
    for (const Case& grant : cases) {
        for (bool on : {true, false}) {
            QTest::mouseClick(&grant.box, Qt::LeftButton, {}, QPoint(8, grant.box.height() / 2));
            settle();
            EXPECT_EQ(grant.granted(), on) << grant.grant;
            const Preferences stored(preferencesFile());
            EXPECT_EQ(stored.value(grant.key), on) << grant.grant;
            EXPECT_FALSE(stored.value(grant.otherKey)) << grant.grant;
            EXPECT_EQ(grant.box.isChecked(), on) << grant.grant;
        }
    }
}

TEST_F(SettingsTest, ARunningPlayerPickedInTheMusicTabBecomesTheMusicPlayer) {
    std::vector<std::string> running;
    musicPlayers = [&] { return running; };
    open(showWithCues("Gala", {"One"}));
    window->settings().showTab(console::SettingsWindow::Tab::music);
    auto& music = window->settings().music();
    EXPECT_FALSE(music.runningPlayers().isEnabled());
    running = {"org.mpris.MediaPlayer2.rhythmbox", "org.mpris.MediaPlayer2.vlc"};
    window->settings().refresh();
    ASSERT_EQ(music.runningPlayers().count(), 3);
    EXPECT_EQ(music.runningPlayers().itemText(2), "vlc");
    emit music.runningPlayers().activated(2);
    EXPECT_EQ(music.playerField().text(), "vlc");
    EXPECT_EQ(Preferences(preferencesFile()).value(preferenceKeys::musicPlayer), "vlc");
}

TEST_F(SettingsTest, TheTestTonePlaysOnTheBusDeviceAndHeadphonesNotChosenUseTheHouse) {
    open(showWithCues("Gala", {"One"}));
    struct Case {
        const char* what;
        AudioSetup audio;
        AudioBus bus;
        bool plays;
    };
    const std::vector<Case> cases{
        {"house on the system output", {}, AudioBus::house, true},
        {"house device gone", {"gone", std::nullopt}, AudioBus::house, false},
        {"headphones not chosen, house gone", {"gone", std::nullopt}, AudioBus::headphones, false},
        {"headphones gone, house on the system output",
         {std::nullopt, "gone"},
         AudioBus::headphones,
         false},
    };
    for (const Case& tone : cases) {
        ASSERT_TRUE(model->edit(edit::SetAudio{tone.audio})) << tone.what;
        model->setStatus("");
        const std::size_t before = players.soundData.size();
        EXPECT_EQ(model->playTestTone(tone.bus), tone.plays) << tone.what;
        EXPECT_EQ(players.soundData.size() > before, tone.plays) << tone.what;
        EXPECT_EQ(model->status().empty(), tone.plays) << tone.what;
    }
}

TEST_F(SettingsTest, EachReadyCheckButtonLandsWhereItsFixSays) {
    Cue walkIn = makeCue("Walk-in");
    walkIn.visualOutputIDs = std::vector<std::string>{"gone"};
    MediaItem video = makeItem(MediaKind::video, "Intro video", 10.0, "Video/intro.mp4");
    MediaItem deck = makeItem(MediaKind::deck, "Talk", std::nullopt, "Decks/talk.pdf");
    deck.deck = DeckInfo{};
    deck.deck->pages = {"Slides/talk/1.png"};
    Show show = makeShow("Gala", {makeSection("Main", {makeCue("One"), walkIn})}, {video, deck});
    show.audio.houseDeviceID = "gone-device";
    open(show);

    const auto found = temp.path() / "found.mp4";
    std::ofstream(found) << "a video";
    window->readyView().places.chooseFile = [&](const MediaItem&) { return std::optional(found); };
    window->action("Ready Check")->trigger();
    settle();
    ASSERT_TRUE(window->readyView().isVisible());

    using Tab = console::SettingsWindow::Tab;
    const auto onTab = [&](Tab tab) {
        return [this, tab] {
            return window->settings().isVisible() && window->settings().currentTab() == tab;
        };
    };
    struct Case {
        const char* fix;
        std::size_t kind; // the fix's index in ReadyFix
        std::function<bool()> landed;
    };
    const std::vector<Case> cases{
        {"open outputs", 3, onTab(Tab::screens)},
        {"open audio", 4, onTab(Tab::sound)},
        {"open MIDI", 6, onTab(Tab::midi)},
        {"edit cue", 2,
         [&] {
             return model->selectedCueID() == walkIn.id &&
                    window->page() == console::ConsoleWindow::Page::cues;
         }},
        {"show library", 5,
         [&] { return window->findChild<QDockWidget*>("library")->isVisible(); }},
        {"find media", 1,
         [&] { return model->show()->media(video.id)->fileName != video.fileName; }},
    };
    for (const Case& item : cases) {
        window->settings().hide();
        window->findChild<QDockWidget*>("library")->hide();
        const auto& items = window->readyView().items();
        const auto line = std::find_if(items.begin(), items.end(), [&](const ReadyItem& each) {
            return each.fix && each.fix->index() == item.kind;
        });
        ASSERT_NE(line, items.end()) << item.fix;
        QPushButton* button = window->readyView().fixButton(line->id());
        ASSERT_NE(button, nullptr) << item.fix;
        QTest::mouseClick(button, Qt::LeftButton);
        settle();
        EXPECT_TRUE(item.landed()) << item.fix;
    }
    // The found file no longer shows as missing.
    for (const ReadyItem& line : window->readyView().items())
        EXPECT_FALSE(line.fix && std::holds_alternative<readyFix::FindMedia>(*line.fix))
            << line.title;

    // An output that drops out shows in the open view without asking.
    OutputHealth dropped;
    dropped.name = "Side screen";
    outputs.latest->emitHealth({dropped});
    window->refreshLive();
    const auto& items = window->readyView().items();
    EXPECT_TRUE(std::any_of(items.begin(), items.end(), [](const ReadyItem& line) {
        return line.title.find("Side screen") != std::string::npos;
    }));
}

} // namespace

} // namespace velarion::testing
