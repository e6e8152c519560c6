// The engine with real players on a private sound server, in real time:
// playlist songs overlap for their crossfade, and
// a device pulled out mid-song is heard on the system output and logged, and
// a sound server that crashes mid-song ends the cue with a sentence.

#include "FakePictures.h"
#include "FakePlayers.h"
#include "RealTimeScheduler.h"
#include "RecordingOutputManager.h"
#include "ShowBuilder.h"
#include "SoundServerFixture.h"

#include "LiveEngine/LiveEngine.h"
#include "Platform/Sound/GstAudioDevices.h"

#include <algorithm>

namespace velarion::testing {
namespace {

class EngineSound : public SoundServerFixture {
protected:
    EngineSound() {
        show.sections.push_back(Section{Uuid::random(), "Main", std::nullopt, std::nullopt, {}});
        show.audio.houseDeviceID = "House";
        show.audio.headphonesDeviceID = "Headphones";
        std::filesystem::create_directories(package / "Media");
    }
    ~EngineSound() override {
        if (engine) engine->shutdown();
    }

    Uuid song(const std::string& file, const Sine& tone) {
        writeSineWav(package / "Media" / file, tone);
        return ShowBuilder(show).addItem(file, MediaKind::audio, tone.seconds);
    }
    void add(const std::string& name, CueKind kind) {
        ShowBuilder(show).add(name, std::move(kind));
    }
    void start() {
        engine = std::make_unique<LiveEngine>(show, ShowPackage(package),
                                              EnginePorts{scheduler, outputs, realPlayers, images, cards, slides,
                                                          &devices},
                                              false);
        devices.setOnChange([this] { engine->audioDevicesChanged(); });
        scheduler.runFor(0.05);
    }
    bool logged(const std::string& text) const {
        return std::any_of(engine->history().begin(), engine->history().end(),
                           [&](const HistoryEntry& entry) { return entry.text == text; });
    }

    std::filesystem::path package = folder / "Show.velarion";
    RealTimeScheduler scheduler;
    RecordingOutputManager outputs;
    GstAudioDevices devices{scheduler};
    GstMediaPlayers realPlayers{&devices,
                                [this](const SceneID& id, const std::filesystem::path& path) {
                                    return std::make_shared<FakeVideoSurface>(scheduler, id, path);
                                },
                                GstSoundOptions{.sinkProvidesClock = false}};
    FakeImageLoader images;
    FakeTextCards cards;
    FakeSlidePictures slides;
    Show show;
    std::unique_ptr<LiveEngine> engine;
};

TEST_F(EngineSound, ASoundServerCrashMidSongEndsTheCueWithASentence) {
    add("Prelude", AudioCue{song("dropped.wav", {.seconds = 4})});
    start();
    engine->perform(command::Go{});
    scheduler.runFor(0.6);
    ASSERT_TRUE(server()->crashAndRestart());
    scheduler.runFor(0.5);
    const auto failed = std::find_if(engine->history().begin(), engine->history().end(), [](const HistoryEntry& entry) {
        return entry.text.rfind("Prelude didn't play — its sound broke off: ", 0) == 0;
    });
    EXPECT_NE(failed, engine->history().end());
    EXPECT_TRUE(engine->state().running.empty());
}

} // namespace
} // namespace velarion::testing
