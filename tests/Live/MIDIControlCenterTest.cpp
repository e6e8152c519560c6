// MIDI control from bytes to engine commands, through the real inbox and
// matcher on a virtual main loop: Learn, the actions, the settings kept with
// the preferences, and a device that floods.

#include "CommandWords.h"
#include "Live/MIDIControlCenter.h"
#include "Live/MIDISettingsJson.h"
#include "Live/OperatorKeyboard.h"
#include "Live/OperatorViewFollow.h"
#include "Live/ports/ManualMIDIInput.h"
#include "VirtualScheduler.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

using Bytes = std::vector<std::uint8_t>;

using testing::commandWords;

class MIDIControlCenterTest : public ::testing::Test {
protected:
    void SetUp() override { make({}); }

    void make(MIDISettings settings) {
        center.reset();
        center.emplace(scheduler, std::move(settings), [this] {
            auto made = std::make_unique<ManualMIDIInput>(scheduler);
            input = made.get();
            return made;
        });
        center->perform = [this](const EngineCommand& command) { performed.push_back(commandWords(command)); };
        center->isAnythingPlaying = [this] { return playing; };
        center->save = [this](const MIDISettings& settings) { saved.push_back(settings); };
        center->note = [this](const std::string& text) { notes.push_back(text); };
        center->start();
    }

    void send(const Bytes& bytes, std::uint32_t source = 0) {
        input->send(bytes, source);
        scheduler.runDue();
    }

    testing::VirtualScheduler scheduler;
    ManualMIDIInput* input = nullptr;
    std::optional<MIDIControlCenter> center;
    std::vector<std::string> performed;
    std::vector<MIDISettings> saved;
    std::vector<std::string> notes;
    bool playing = false;
};

TEST_F(MIDIControlCenterTest, LearnBindsTheNextTriggerOnly) {
    center->learn(MIDIAction::go);
    send({0x80, 60, 0});   // a note off is no press
    send({0xB0, 64, 0});   // nor a pedal let go
    EXPECT_TRUE(center->settings().bindings.empty());
    send({0x90, 60, 100}); // this one is learnt, not played
    send({0x90, 61, 100}); // and the one after is not learnt
    EXPECT_TRUE(performed.empty());
    EXPECT_EQ(center->learning(), std::nullopt);
    ASSERT_EQ(saved.size(), 1u);
    EXPECT_EQ(saved.back().bindings, (std::vector<MIDIBinding>{{MIDIAction::go, midi::NoteTrigger{1, 60}}}));
    EXPECT_EQ(notes, std::vector<std::string>{"GO is now Note 60 on channel 1"});
    send({0x90, 60, 100});
    EXPECT_EQ(performed, std::vector<std::string>{"go"});
}

TEST_F(MIDIControlCenterTest, EachActionRunsItsCommand) {
    MIDISettings settings;
    settings.bind(MIDIAction::go, midi::NoteTrigger{1, 1});
    settings.bind(MIDIAction::stopAll, midi::NoteTrigger{1, 2});
    settings.bind(MIDIAction::panic, midi::NoteTrigger{1, 3});
    settings.bind(MIDIAction::pauseResume, midi::NoteTrigger{1, 4});
    make(settings);
    send({0x90, 1, 1, 2, 1, 3, 1, 4, 1});
    playing = true;
    send({0x90, 4, 1});
    EXPECT_EQ(performed, (std::vector<std::string>{"go", "clear everything 1.0", "panic", "resumeAll", "pauseAll"}));
}

TEST_F(MIDIControlCenterTest, AFloodingDeviceLeavesBoundedWorkForTheMainLoop) {
    center->learn(MIDIAction::go);
    send({0x90, 60, 100});
    const Bytes controller{0xB0, 1, 5};
    for (int i = 0; i < 10'000; ++i) input->send(controller);
    // However long the loop was away, one drain task waits for it.
    EXPECT_EQ(scheduler.pendingCount(), 1u);
    int changes = 0;
    center->onChange = [&] { ++changes; };
    scheduler.runDue();
    EXPECT_EQ(notes.back(), MIDIInbox::floodNotice);
    EXPECT_EQ(changes, int((MIDIInbox::capacity + MIDIInbox::batchSize - 1) / MIDIInbox::batchSize));
    input->send(controller);
    input->send(Bytes{0x90, 60, 100});
    scheduler.runDue();
    EXPECT_EQ(performed, std::vector<std::string>{"go"});
    EXPECT_EQ(std::count(notes.begin(), notes.end(), MIDIInbox::floodNotice), 1);
}

TEST(MIDISettingsJson, KeepsWhatItCanReadOfAHandEditedFile) {
    const auto json = nlohmann::json::parse(R"({"isEnabled": false, "bindings": [
        {"action": "go", "trigger": {"note": {"channel": 1, "note": 60}}},
        {"action": "panic", "trigger": {"controlChange": {"channel": 17, "controller": 1}}},
        {"action": "jump", "trigger": {"note": {"channel": 1, "note": 61}}},
        {"action": "stopAll", "trigger": {"programChange": {"channel": 16, "program": 127}}},
        {"action": "pauseResume", "trigger": {"note": {"channel": 2}}}]})");
    MIDISettings expected{false, {{MIDIAction::go, midi::NoteTrigger{1, 60}},
                                  {MIDIAction::stopAll, midi::ProgramChangeTrigger{16, 127}}}};
    EXPECT_EQ(midiSettingsFromJson(json), expected);
    EXPECT_EQ(midiSettingsFromJson(midiSettingsJson(expected)), expected);
    EXPECT_EQ(midiSettingsJson(expected)["bindings"][0]["trigger"],
              nlohmann::json::parse(R"({"note":{"channel":1,"note":60}})"));
    EXPECT_EQ(midiSettingsFromJson(nlohmann::json::array()), MIDISettings{});
}

// The operator's key table in every situation a key can arrive in, and the
// page that follows what is on air.
using enum OperatorKeyAction;
namespace key = operatorKeyCode;
using Answer = std::optional<OperatorKeyAction>;

constexpr OperatorKeyContext mainWindow{.hasShow = true, .isMainWindow = true};

// Situations other than the plain main window, and what they still allow.
struct Situation {
    const char* name;
    OperatorKeyContext context;
    bool allowsPanic;
};
constexpr Situation restricted[] = {
    {"no show", {.hasShow = false, .isMainWindow = true}, false},
    {"native dialog", {.hasShow = true, .isMainWindow = true, .hasNativeDialog = true}, false},
    {"command modifier", {.hasShow = true, .isMainWindow = true, .hasCommandModifier = true}, false},
    {"other window", {.hasShow = true, .isMainWindow = false}, true},
    {"slide editor", {.hasShow = true, .isMainWindow = true, .isSlideEditor = true}, true},
    {"editing text", {.hasShow = true, .isMainWindow = true, .isEditingText = true}, true},
};

TEST(OperatorKeyboard, TheTableInTheMainWindow) {
    const std::pair<std::uint16_t, Answer> table[] = {
        {key::space, go}, {key::escape, panic}, {key::returnKey, armNext}, {key::keypadEnter, armNext},
        {key::rightArrow, nextSlide}, {key::pageDown, nextSlide}, {key::leftArrow, previousSlide},
        {key::pageUp, previousSlide}, {key::period, toggleSafeSlide}, {key::s, toggleSafeSlide},
        {key::downArrow, selectNext}, {key::upArrow, selectPrevious},
        {9 /* V */, sectionShortcut}, {0 /* A */, sectionShortcut}, {48 /* Tab */, sectionShortcut},
    };
    for (const auto& [code, expected] : table)
        EXPECT_EQ(OperatorKeyboard::action(code, mainWindow), expected) << "key " << code;
}

TEST(OperatorKeyboard, EscIsTheOnlyKeyOutsideTheMainWindowAndNothingPassesTheGates) {
    for (const Situation& situation : restricted) {
        for (std::uint16_t code = 0; code < 128; ++code) {
            const Answer expected = code == key::escape && situation.allowsPanic ? Answer(panic) : std::nullopt;
            EXPECT_EQ(OperatorKeyboard::action(code, situation.context), expected)
                << situation.name << ", key " << code;
        }
    }
}

} // namespace
} // namespace velarion
