// MIDI control end to end on a real JACK server: the test's own virtual
// output ports play the devices, RtMidiInput listens as in the application,
// and the control center turns what it hears into engine commands on the
// main loop.

#include "CommandWords.h"
#include "Live/MIDIControlCenter.h"
#include "Platform/MIDI/RtMidiInput.h"
#include "PrivateJackServer.h"
#include "RealTimeScheduler.h"

#include <RtMidi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>

namespace velarion {
namespace {

using Bytes = std::vector<unsigned char>;

testing::PrivateJackServer* server() {
    static std::string whyNot;
    static auto started = testing::PrivateJackServer::start(whyNot);
    if (!started) ADD_FAILURE() << "no JACK server: " << whyNot;
    return started.get();
}

// A device: a virtual output port of the test's own JACK client.
std::unique_ptr<RtMidiOut> device(const std::string& client, const std::string& port) {
    auto out = std::make_unique<RtMidiOut>(RtMidi::UNIX_JACK, client);
    out->openVirtualPort(port);
    return out;
}

void play(RtMidiOut& device, const Bytes& bytes) { device.sendMessage(bytes.data(), bytes.size()); }


class RtMidiInputTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(server(), nullptr);
        MIDISettings settings;
        settings.bind(MIDIAction::go, midi::NoteTrigger{1, 60});
        settings.bind(MIDIAction::panic, midi::ControlChangeTrigger{1, 64});
        center = std::make_unique<MIDIControlCenter>(scheduler, settings, [this] {
            return std::make_unique<RtMidiInput>(
                scheduler, RtMidiInput::Options{.backend = RtMidiInput::Backend::jack, .rescanSeconds = 0.1});
        });
        center->perform = [this](const EngineCommand& command) { performed.push_back(testing::commandWords(command)); };
    }

    // Runs the main loop until `done` or a generous bound; the bound only
    // turns a hang into a failure.
    bool runUntil(const std::function<bool()>& done) {
        for (int i = 0; i < 200 && !done(); ++i) scheduler.runFor(0.05);
        return done();
    }
    bool hasSource(const std::string& name) const {
        const auto& sources = center->sources();
        return std::any_of(sources.begin(), sources.end(), [&](const MIDISourceInfo& s) { return s.name == name; });
    }
    bool performs(std::vector<std::string> expected) {
        const bool done = runUntil([&] { return performed.size() >= expected.size(); });
        EXPECT_EQ(performed, expected);
        performed.clear();
        return done;
    }

    testing::RealTimeScheduler scheduler;
    std::unique_ptr<MIDIControlCenter> center;
    std::vector<std::string> performed;
};

TEST_F(RtMidiInputTest, DevicesPlayTheShowAndComeAndGo) {
    auto pedals = device("Pedals", "Foot switch");
    center->start();
    ASSERT_TRUE(runUntil([&] { return hasSource("Pedals:Foot switch"); }));
    EXPECT_EQ(center->lastError(), std::nullopt);

    play(*pedals, {0x90, 60, 100});
    EXPECT_TRUE(performs({"go"}));

    // Plugged in during the show: it works without anyone doing anything.
    auto pad = device("Pad", "Buttons");
    ASSERT_TRUE(runUntil([&] { return hasSource("Pad:Buttons"); }));
    play(*pad, {0x90, 60, 127});
    EXPECT_TRUE(performs({"go"}));
    ASSERT_TRUE(center->lastHeard());
    EXPECT_EQ(center->lastHeard()->message, "Note 60 on channel 1, velocity 127 from Pad:Buttons");

    // Pulled out: closed quietly, the other one plays on.
    pedals.reset();
    ASSERT_TRUE(runUntil([&] { return !hasSource("Pedals:Foot switch"); }));
    EXPECT_EQ(center->lastError(), std::nullopt);
    play(*pad, {0xB0, 64, 127});
    EXPECT_TRUE(performs({"panic"}));

    // Stopped: nothing more arrives.
    center->stop();
    play(*pad, {0x90, 60, 127});
    scheduler.runFor(0.2);
    EXPECT_TRUE(performed.empty());
    EXPECT_TRUE(center->sources().empty());
}

TEST(RtMidiInputErrors, AMissingMIDISystemIsTriedAgainThenGivenUpInWords) {
    if (std::filesystem::exists("/dev/snd/seq")) GTEST_SKIP() << "this computer has an ALSA sequencer";
    testing::RealTimeScheduler scheduler;
    RtMidiInput input(scheduler, {.backend = RtMidiInput::Backend::alsa, .rescanSeconds = 0.05, .maxRetries = 2});
    std::vector<std::optional<std::string>> errors;
    input.onStatusChange = [&] { errors.push_back(input.lastError()); };
    input.start();
    for (int i = 0; i < 100 && errors.size() < 2; ++i) scheduler.runFor(0.05);
    const std::vector<std::optional<std::string>> expected{
        "MIDI isn't available yet (error 2). Trying again…",
        "MIDI isn't available on this computer right now. Restart Velarion to try again."};
    EXPECT_EQ(errors, expected);
}

} // namespace
} // namespace velarion
