// The MIDI byte parser, the matcher and binding: each table row is a fault a
// device or an operator would meet on stage.

#include "LiveModel/MIDIControl.h"

#include <gtest/gtest.h>

#include <vector>

namespace velarion {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Messages = std::vector<MIDIMessage>;
using namespace midi;

struct ParseCase {
    const char* what;
    Bytes bytes;
    Messages expected;
};

TEST(MIDIParse, GivesTheMessagesInOrder) {
    const ParseCase cases[] = {
        ParseCase{"running status", {0x90, 60, 100, 62, 100}, {NoteOn{1, 60, 100}, NoteOn{1, 62, 100}}},
        ParseCase{"a clock inside a note", {0x90, 60, 0xF8, 100}, {NoteOn{1, 60, 100}}},
        ParseCase{"a clock keeps the running status", {0x90, 60, 100, 0xF8, 61, 90}, {NoteOn{1, 60, 100}, NoteOn{1, 61, 90}}},
        ParseCase{"velocity 0 is a note off", {0x9F, 60, 0}, {NoteOff{16, 60}}},
        ParseCase{"note off", {0x80, 60, 64}, {NoteOff{1, 60}}},
        ParseCase{"controller and program", {0xB2, 64, 127, 0xC2, 5}, {ControlChange{3, 64, 127}, ProgramChange{3, 5}}},
        ParseCase{"program with running status", {0xC0, 1, 2}, {ProgramChange{1, 1}, ProgramChange{1, 2}}},
        ParseCase{"channel pressure is one byte, dropped", {0xD0, 5, 0x90, 60, 1}, {NoteOn{1, 60, 1}}},
        ParseCase{"pitch bend dropped", {0xE0, 0, 64, 0xB0, 1, 2}, {ControlChange{1, 1, 2}}},
        ParseCase{"SysEx between messages", {0x90, 60, 1, 0xF0, 0x7E, 0x90, 0xF7, 0xB0, 7, 8}, {NoteOn{1, 60, 1}, ControlChange{1, 7, 8}}},
        ParseCase{"SysEx without an end drops the rest only", {0x90, 60, 1, 0xF0, 0x90, 61, 1}, {NoteOn{1, 60, 1}}},
        ParseCase{"data with no status", {60, 100, 0xB0, 1, 127}, {ControlChange{1, 1, 127}}},
        ParseCase{"a cut-off message ends the parse", {0x90, 60, 100, 0x90, 61}, {NoteOn{1, 60, 100}}},
        ParseCase{"nothing", {}, {}}};
    for (const ParseCase& c : cases) EXPECT_EQ(midiMessage::parse(c.bytes), c.expected) << c.what;
}

TEST(MIDIMatcher, ControllerFiresOncePerPressThroughHoldAndRelease) {
    MIDISettings settings;
    settings.bind(MIDIAction::go, ControlChangeTrigger{1, 64});
    MIDIMatcher matcher;
    int fired = 0;
    for (int value : {127, 127, 0, 127, 100, 63, 64}) fired += int(matcher.actions(ControlChange{1, 64, value}, settings).size());
    EXPECT_EQ(fired, 3);
}

struct MatchCase {
    const char* what;
    MIDIMessage message;
    std::vector<MIDIAction> expected;
};

TEST(MIDIMatcher, MatchesKindChannelAndNumber) {
    MIDISettings settings;
    settings.bind(MIDIAction::go, NoteTrigger{1, 60});
    settings.bind(MIDIAction::stopAll, ProgramChangeTrigger{1, 60});
    settings.bind(MIDIAction::pauseResume, ControlChangeTrigger{1, 60});
    const MatchCase cases[] = {
        {"note on", NoteOn{1, 60, 1}, {MIDIAction::go}},
        {"note off", NoteOff{1, 60}, {}},
        {"other channel", NoteOn{2, 60, 100}, {}},
        {"other note", NoteOn{1, 61, 100}, {}},
        {"program of the same number", ProgramChange{1, 60}, {MIDIAction::stopAll}},
        {"controller of the same number", ControlChange{1, 60, 64}, {MIDIAction::pauseResume}},
    };
    for (const MatchCase& c : cases) {
        MIDIMatcher matcher;
        EXPECT_EQ(matcher.actions(c.message, settings), c.expected) << c.what;
    }
}

TEST(MIDISettings, BindGivesATriggerOneJobAndAnActionOneTrigger) {
    MIDISettings settings;
    settings.bind(MIDIAction::go, NoteTrigger{1, 60});
    settings.bind(MIDIAction::panic, NoteTrigger{1, 61});
    settings.bind(MIDIAction::panic, NoteTrigger{1, 60}); // takes GO's note
    settings.bind(MIDIAction::stopAll, NoteTrigger{1, 62});
    settings.bind(MIDIAction::stopAll, NoteTrigger{1, 63}); // moves
    EXPECT_EQ(settings.bindings, (std::vector<MIDIBinding>{{MIDIAction::panic, NoteTrigger{1, 60}},
                                                           {MIDIAction::stopAll, NoteTrigger{1, 63}}}));
}

} // namespace
} // namespace velarion
