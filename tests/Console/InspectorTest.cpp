// The inspector over a real application model: a field of each kind of cue
// changed through its widget reaches the show and undoes; typed values land
// on their limits; refusals keep the show and say why; cues selected
// together change together; a song cue auditions in its app and gives way
// to live playback.

#include "AppModelFixture.h"
#include "FakeAudioDevices.h"
#include "FakeStreamApp.h"

#include "Console/ConsoleWindow.h"
#include "Console/Inspector.h"
#include "Console/InspectorForm.h"
#include "Console/RunOfShowModel.h"
#include "Console/RunOfShowView.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace velarion::testing {

namespace {

template <class W> W* field(QWidget& form, const QString& label) {
    for (QWidget* widget : form.findChildren<QWidget*>())
        if (widget->accessibleName() == label) {
            if (auto* direct = qobject_cast<W*>(widget)) return direct;
            return widget->findChild<W*>();
        }
    return nullptr;
}

void type(QLineEdit& edit, const QString& text) {
    edit.setFocus();
    edit.selectAll();
    QTest::keyClick(&edit, Qt::Key_Backspace);
    QTest::keyClicks(&edit, text);
    QTest::keyClick(&edit, Qt::Key_Return);
}

class InspectorTest : public AppModelFixture {
protected:
    void SetUp() override {
        preferences = std::make_unique<Preferences>(preferencesFile());
        AppPorts ports{scheduler, players, images, cards, slides, nullptr, outputs, slidePages,
                       desktop, folders, writer, application, *preferences};
        ports.streams = &streams;
        ports.devices = &soundDevices;
        model = std::make_unique<AppModel>(ports);
        model->openShow(savePackage(everyKind(), "Every kind"));
        window = std::make_unique<console::ConsoleWindow>(*model, [this] { return scheduler.now(); });
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        // No window manager runs on the private server to activate it.
        QApplication::setActiveWindow(window.get());
    }
    // The model goes before the sound outputs it watches.
    void TearDown() override {
        window.reset();
        model.reset();
    }

    static Show everyKind() {
        const MediaItem deck = makeItem(MediaKind::deck, "Welcome deck");
        const MediaItem film = makeItem(MediaKind::video, "Film", 10);
        const MediaItem still = makeItem(MediaKind::image, "Still");
        const MediaItem bell = makeItem(MediaKind::audio, "Bell", 4);
        SpotifyTrack opener;
        opener.reference = "spotify:track:opener";
        MusicTrack hymn;
        hymn.reference = "music:hymn";
        Section main = makeSection("Main", {makeCue("Deck", SlidesCue{deck.id}), makeCue("Film", VideoCue{film.id}),
                                            makeCue("Still", ImageCue{still.id}), makeCue("Bell", AudioCue{bell.id}),
                                            makeCue("Bell again", AudioCue{bell.id}),
                                            makeCue("Walk-in", PlaylistCue{{bell.id}}), makeCue("Opener", opener),
                                            makeCue("Mix", StreamPlaylistCue{"spotify:playlist:mix"}),
                                            makeCue("Hymn", hymn), makeCue("Countdown", TimerCue{}),
                                            makeCue("Doors", MessageCue{}), makeCue("Speaker", GraphicCue{}),
                                            makeCue("Clear all", ClearCue{})});
        return makeShow("Every kind", {main}, {deck, film, still, bell});
    }

    void settle() {
        scheduler.runDue();
        QApplication::processEvents();
        QApplication::processEvents();
    }
    console::Inspector& inspector() { return window->inspector(); }
    console::InspectorForm& pageOf(const Cue& cue) { return inspector().page(cueKind::kindCase(cue.kind)); }
    void select(const std::string& name) {
        model->selectCue(cueNamed(name).id);
        settle();
    }

    FakeAudioDevices soundDevices{{{"usb", "USB Interface", false}, {"hdmi", "HDMI", true}}};
    FakeStreamApp spotify;
    InlineStreamTasks tasks;
    // The audition's watch ends after a few looks, as the tasks run inline.
    int sleepsLeft = 40;
    EngineStreams streams{[this] {
                              StreamRemote remote = spotify.remote();
                              remote.sleep = [this](double seconds, const StreamCancel& cancel) {
                                  if (cancel.isCancelled() || sleepsLeft-- <= 0) return false;
                                  spotify.clock += seconds;
                                  return true;
                              };
                              return remote;
                          }(),
                          tasks};
    std::unique_ptr<console::ConsoleWindow> window;
};

using Change = std::variant<double, const char*, bool>;

void change(QWidget& form, const QString& label, const Change& value) {
    if (const auto* number = std::get_if<double>(&value)) field<QDoubleSpinBox>(form, label)->setValue(*number);
    else if (const auto* text = std::get_if<const char*>(&value)) type(*field<QLineEdit>(form, label), *text);
    else field<QCheckBox>(form, label)->click();
}

TEST_F(InspectorTest, AFieldOfEachKindReachesTheShowAndUndoes) {
    struct Case {
        const char* cue;
        const char* field;
        Change value;
        std::function<bool(const CueKind&)> took;
    };
    const std::vector<Case> cases{
        {"Deck", "First slide", 3.0, [](const CueKind& k) { return std::get<SlidesCue>(k).startSlide == 2; }},
        {"Film", "Fade out", 2.5, [](const CueKind& k) { return std::get<VideoCue>(k).fadeOut == 2.5; }},
        {"Still", "Fade in", 1.5, [](const CueKind& k) { return std::get<ImageCue>(k).fadeIn == 1.5; }},
        {"Bell", "Level", 40.0, [](const CueKind& k) { return std::get<AudioCue>(k).level == 0.4; }},
        {"Walk-in", "Crossfade", 4.0, [](const CueKind& k) { return std::get<PlaylistCue>(k).crossfade == 4; }},
        {"Opener", "Start at", 30.0, [](const CueKind& k) { return std::get<SpotifyTrack>(k).startAt == 30; }},
        {"Mix", "Shuffle", true, [](const CueKind& k) { return std::get<StreamPlaylistCue>(k).shuffle; }},
        {"Hymn", "Level", 65.0, [](const CueKind& k) { return std::get<MusicTrack>(k).level == 65; }},
        {"Countdown", "Warn at", 60.0, [](const CueKind& k) { return std::get<TimerCue>(k).warnAt == 60; }},
        {"Doors", "Text", "Doors open", [](const CueKind& k) { return std::get<MessageCue>(k).text == "Doors open"; }},
        {"Speaker", "Subtitle", "Host", [](const CueKind& k) { return std::get<GraphicCue>(k).subtitle == "Host"; }},
        {"Clear all", "Fade", 3.0, [](const CueKind& k) { return std::get<ClearCue>(k).fade == 3; }},
    };
    for (const Case& item : cases) {
        select(item.cue);
        const Cue before = cueNamed(item.cue);
        change(pageOf(before), item.field, item.value);
        settle();
        EXPECT_TRUE(item.took(cueNamed(item.cue).kind)) << item.cue;
        model->undo();
        settle();
        EXPECT_EQ(cueNamed(item.cue), before) << item.cue;
    }
}

TEST_F(InspectorTest, ASoundOutputIsChosenFromTheComputersOutputsAndAGoneOneStaysListed) {
    select("Bell");
    auto* box = field<QComboBox>(inspector(), "Sound output");
    ASSERT_EQ(box->count(), 3);
    EXPECT_EQ(box->itemText(2), "HDMI (system default)");
    box->setCurrentIndex(1);
    box->activated(1);
    settle();
    EXPECT_EQ(cueNamed("Bell").audioDeviceID, "usb");

    soundDevices.change({});
    select("Bell again");
    select("Bell");
    EXPECT_EQ(box->currentText(), "usb (not connected)");
}

TEST_F(InspectorTest, ATypedValuePastItsLimitLandsOnItAndIsShown) {
    // The film is 10 s long: an In mark stays the shortest trim before it.
    select("Film");
    auto* in = field<QDoubleSpinBox>(pageOf(cueNamed("Film")), "In point");
    in->setValue(999);
    settle();
    EXPECT_DOUBLE_EQ(std::get<VideoCue>(cueNamed("Film").kind).inPoint, 9.9);
    EXPECT_DOUBLE_EQ(in->value(), 9.9);
}

TEST_F(InspectorTest, ARefusedEditKeepsTheShowAndSaysWhy) {
    struct Case {
        const char* what;
        std::function<void()> act;
        std::string words;
        std::function<bool()> unchanged;
    };
    const Cue speaker = cueNamed("Speaker");
    const std::vector<Case> cases{
        {"a group step of no length",
         [&] { field<QCheckBox>(inspector().starting(), "Step in a group")->click(); },
         "Group duration must be greater than zero seconds.",
         [&] { return cueNamed("Speaker") == speaker && !field<QCheckBox>(inspector().starting(), "Step in a group")->isChecked(); }},
        {"a section without a title",
         [&] {
             window->runOfShow().setCurrentIndex(window->rows().index(0, 0));
             settle();
             type(inspector().sectionTitle(), "");
         },
         "Names can't be empty.",
         [&] { return model->show()->sections[0].title == "Main" && inspector().sectionTitle().text() == "Main"; }},
    };
    for (const Case& item : cases) {
        select("Speaker");
        item.act();
        settle();
        EXPECT_EQ(model->status(), item.words) << item.what;
        EXPECT_TRUE(item.unchanged()) << item.what;
    }
}

TEST_F(InspectorTest, CuesSelectedTogetherChangeTogetherInOneUndoStep) {
    select("Bell");
    auto& view = window->runOfShow();
    view.selectionModel()->select(window->rows().indexOfCue(cueNamed("Bell again").id),
                                  QItemSelectionModel::Select | QItemSelectionModel::Rows);
    settle();
    field<QDoubleSpinBox>(pageOf(cueNamed("Bell")), "Level")->setValue(25);
    settle();
    EXPECT_EQ(std::get<AudioCue>(cueNamed("Bell").kind).level, 0.25);
    EXPECT_EQ(std::get<AudioCue>(cueNamed("Bell again").kind).level, 0.25);
    model->undo();
    settle();
    EXPECT_EQ(std::get<AudioCue>(cueNamed("Bell").kind).level, 1);
    EXPECT_EQ(std::get<AudioCue>(cueNamed("Bell again").kind).level, 1);
}

TEST_F(InspectorTest, AHalfTypedNameGoesInBeforeGo) {
    select("Speaker");
    const Uuid speaker = cueNamed("Speaker").id;
    QLineEdit* name = field<QLineEdit>(inspector().identity(), "Name");
    name->setFocus();
    QTest::keyClicks(name, " two");
    model->perform(command::Go{});
    EXPECT_EQ(model->show()->cue(speaker)->name, "Speaker two");
}

TEST_F(InspectorTest, ASongAuditionsInItsAppAndGivesWayToLivePlayback) {
    select("Opener");
    console::InspectorForm& page = pageOf(cueNamed("Opener"));
    auto* button = page.findChild<QPushButton*>("audition");
    auto* note = page.findChild<QLabel*>("auditionNote");
    button->click();
    settle();
    EXPECT_EQ(model->auditionState().cueID, cueNamed("Opener").id);
    EXPECT_EQ(note->text().toStdString(), "Testing in Spotify. Audio uses that app’s output.");
    EXPECT_EQ(button->text(), "Stop Audition");
    sleepsLeft = 40;
    model->perform(command::Fire{cueNamed("Opener").id});
    settle();
    EXPECT_EQ(note->text().toStdString(), "Live playback has taken control of Spotify.");
    EXPECT_EQ(button->text(), "Audition");
}

} // namespace

} // namespace velarion::testing
