// MIDI control inside the application model: bindings come from the
// computer's preferences, a bound button plays the show, and a learnt one
// is written back.

#include "AppModelFixture.h"

#include "Live/MIDISettingsJson.h"
#include "Live/ports/ManualMIDIInput.h"

#include <fstream>

namespace velarion::testing {
namespace {

class AppModelMIDITest : public AppModelFixture {
protected:
    AppModel& startWithMIDI(const std::string& preferencesJson) {
        std::filesystem::create_directories(preferencesFile().parent_path());
        std::ofstream(preferencesFile()) << preferencesJson;
        preferences = std::make_unique<Preferences>(preferencesFile());
        AppPorts ports{scheduler, players, images, cards, slides, nullptr, outputs, slidePages,
                       desktop, folders, writer, application, *preferences};
        ports.makeMIDIInput = [this] {
            auto made = std::make_unique<ManualMIDIInput>(scheduler);
            input = made.get();
            return made;
        };
        model = std::make_unique<AppModel>(ports);
        model->startMIDI();
        return *model;
    }
    void press(std::vector<std::uint8_t> bytes) {
        input->send(bytes);
        scheduler.runDue();
    }

    ManualMIDIInput* input = nullptr;
};

TEST_F(AppModelMIDITest, ASavedButtonPlaysTheShowAndALearntOneIsKept) {
    AppModel& app = startWithMIDI(
        R"({"live.midi": {"isEnabled": true, "bindings": [{"action": "go", "trigger": {"note": {"channel": 1, "note": 60}}}]}})");
    ASSERT_NE(input, nullptr);
    app.openShow(savePackage(showWithCues("Service", {"Welcome", "Song"}), "Service"));
    press({0x90, 60, 100});
    EXPECT_EQ(app.engine()->state().lastFiredCueID, cueNamed("Welcome").id);

    app.midi().learn(MIDIAction::panic);
    press({0xB0, 64, 127});
    EXPECT_EQ(app.status(), "Panic is now Controller 64 on channel 1");
    const Preferences reread(preferencesFile());
    EXPECT_EQ(midiSettingsFromJson(reread.value(preferenceKeys::midi)).trigger(MIDIAction::panic),
              MIDITrigger(midi::ControlChangeTrigger{1, 64}));
}

} // namespace
} // namespace velarion::testing
