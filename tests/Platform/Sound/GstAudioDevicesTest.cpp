// The output list on a private sound server, and the test tone played
// through real players.

#include "RealTimeScheduler.h"
#include "SoundServerFixture.h"

#include "LiveEngine/TestTone.h"
#include "Platform/Sound/GstAudioDevices.h"

#include <algorithm>

namespace velarion::testing {
namespace {

class SoundOutputs : public SoundServerFixture {
protected:
    static std::vector<std::string> ids(const std::vector<AudioDevice>& outputs) {
        std::vector<std::string> names;
        for (const AudioDevice& output : outputs) names.push_back(output.id);
        std::sort(names.begin(), names.end());
        return names;
    }
    RealTimeScheduler scheduler;
};

TEST_F(SoundOutputs, ListsTheServersOutputsAndNoticesOneGoing) {
    GstAudioDevices devices(scheduler);
    EXPECT_EQ(ids(devices.outputs()), (std::vector<std::string>{"Headphones", "House", "Speakers"}));
    EXPECT_EQ(devices.name("House"), "House-desk") << "the description, not the id";
    const auto outputs = devices.outputs();
    const auto defaults = std::count_if(outputs.begin(), outputs.end(), [](const AudioDevice& output) {
        return output.isDefault;
    });
    EXPECT_EQ(defaults, 1);
    EXPECT_TRUE(std::find_if(outputs.begin(), outputs.end(), [](const AudioDevice& output) {
                    return output.id == "Speakers";
                })->isDefault);

    int changes = 0;
    devices.setOnChange([&] { ++changes; });
    ASSERT_TRUE(server()->removeSink("Headphones"));
    for (int i = 0; i < 40 && changes == 0; ++i) scheduler.runFor(0.05);
    EXPECT_GE(changes, 1) << "the change reaches the main loop";
    EXPECT_FALSE(devices.isPresent("Headphones"));
    EXPECT_TRUE(devices.isPresent("House"));
    ASSERT_TRUE(server()->addSink("Headphones"));
    for (int i = 0; i < 40 && !devices.isPresent("Headphones"); ++i) scheduler.runFor(0.05);
    EXPECT_TRUE(devices.isPresent("Headphones")) << "and one coming back";
}

} // namespace
} // namespace velarion::testing
