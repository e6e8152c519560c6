#pragma once
// Sound players and video surfaces for tests that play in virtual time: a
// position is worked out from the scheduler's `now()` when asked, so a test
// moves time with the scheduler and reads where playback has got to. A
// video can be made to fail or to take longer to prepare than it may.
//
// - FakeSoundFilePlayer plays for its duration (or for ever when looping),
//   fades linearly in scheduler time and reports `levelDecibels` on its
//   meters while playing, as of the last `updateMeters`. After `stop` it
//   never plays again.
// - FakeVideoSurface answers `prepare` after its behaviour's delay, with the
//   behaviour's failure or `notReadyInTime` when the timeout comes first. It
//   schedules its own end while playing and delivers it as the contract says.
//   Playing again from the end ends again at once. Destroying it drops every
//   pending callback and cancels its timed tasks.
// - FakeMediaPlayers makes both and keeps weak pointers to everything it
//   made, so the factory owns nothing, as the contract asks, while tests can
//   still find and drive what the engine holds.
//
// All of it belongs to the test's thread.

#include "LiveEngine/ports/MediaPlayers.h"
#include "LiveEngine/ports/Scheduler.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velarion::testing {

using DeviceUIDs = std::set<std::string>;

class FakeSoundFilePlayer final : public SoundFilePlayer {
public:
    // `missingDevices` is read at each `setDevice`, so it may change later.
    FakeSoundFilePlayer(Scheduler& scheduler, double durationSeconds,
                        std::shared_ptr<const DeviceUIDs> missingDevices = {});

    double durationSeconds() const override { return durationSeconds_; }
    double currentSeconds() const override;
    void setCurrentSeconds(double seconds) override;

    void play() override;
    void pause() override;
    void stop() override;
    bool isPlaying() const override;

    double volume() const override;
    void setVolume(double level, double fadeSeconds = 0) override;

    int loopCount() const override { return loopCount_; }
    void setLoopCount(int count) override;

    bool setDevice(const std::optional<std::string>& deviceUID) override;

    void updateMeters() override;
    double averagePowerDecibels(int channel) const override;

    // What every channel measures while playing.
    double levelDecibels = -160;

    // The device last asked for, found or not; none is the system output.
    const std::optional<std::string>& device() const { return device_; }
    bool isStopped() const { return stopped_; }

private:
    struct Progress {
        double positionSeconds;
        int loopsLeft; // negative: for ever
        bool ended;
    };
    Progress progress() const;
    // Folds the time played so far into the anchor so a change starts now.
    void settle();

    Scheduler& scheduler_;
    double durationSeconds_;
    std::shared_ptr<const DeviceUIDs> missingDevices_;

    bool playing_ = false;
    bool stopped_ = false;
    double anchorPositionSeconds_ = 0;
    double anchorTimeSeconds_ = 0;
    int loopCount_ = 0;
    int loopsLeft_ = 0;

    double fadeFromLevel_ = 1;
    double fadeToLevel_ = 1;
    double fadeStartSeconds_ = 0;
    double fadeSeconds_ = 0;

    std::optional<std::string> device_;
    double meteredDecibels_ = -160;
};

struct FakeVideoBehaviour {
    double durationSeconds = 10;
    // How long `prepare` takes to answer; past its timeout, the timeout answers.
    double prepareSeconds = 0.05;
    // When set, `prepare` answers with this instead of the facts.
    std::optional<VideoSurfaceError> failure;
    // When set, the end of the file is playback breaking off in these words.
    std::string breaksOffWith;
};

class FakeVideoSurface final : public VideoSurface {
public:
    FakeVideoSurface(Scheduler& scheduler, SceneID id, std::filesystem::path path,
                     FakeVideoBehaviour behaviour = {});
    ~FakeVideoSurface() override;
    // Its tasks point back at it.
    FakeVideoSurface(const FakeVideoSurface&) = delete;
    FakeVideoSurface& operator=(const FakeVideoSurface&) = delete;

    bool hasFrameToShow() const override { return info_.has_value(); }

    const SceneID& id() const override { return id_; }
    const std::filesystem::path& path() const override { return path_; }
    const std::optional<VideoSurfaceInfo>& info() const override { return info_; }

    void prepare(double timeoutSeconds, std::function<void(VideoPreparation)> done) override;
    void play() override;
    void pause() override;
    bool isPlaying() const override { return playing_; }
    void seek(double seconds, std::function<void()> done = {}) override;
    double currentSeconds() const override;

    void setVolume(double level, bool muted) override;
    double volume() const override { return volume_; }
    bool isMuted() const override { return muted_; }

    bool loops() const override { return loops_; }
    void setLoops(bool loops) override;
    void setOnEnd(std::function<void()> onEnd) override { onEnd_ = std::move(onEnd); }

    std::optional<std::string> audioOutputDeviceUID() const override { return deviceUID_; }
    void setAudioOutputDeviceUID(const std::optional<std::string>& deviceUID) override {
        deviceUID_ = deviceUID;
    }
    void setAudioSink(VideoAudioSink sink) override { audioSink = std::move(sink); }
    std::string failure() const override { return behaviour_.breaksOffWith; }
    VideoAudioSink audioSink;

    int playCount = 0;

private:
    // Runs `task` later unless the surface is gone by then.
    Scheduler::Task guarded(Scheduler::Task task) const;
    void scheduleEnd();
    void cancelEnd();
    void reachEnd();

    Scheduler& scheduler_;
    SceneID id_;
    std::filesystem::path path_;
    FakeVideoBehaviour behaviour_;
    std::shared_ptr<char> lifetime_ = std::make_shared<char>();

    std::optional<VideoSurfaceInfo> info_;
    bool playing_ = false;
    double anchorPositionSeconds_ = 0;
    double anchorTimeSeconds_ = 0;
    bool loops_ = false;
    double volume_ = 1;
    bool muted_ = false;
    std::optional<std::string> deviceUID_;
    std::function<void()> onEnd_;

    // Every reschedule makes earlier end tasks stale.
    std::uint64_t endGeneration_ = 0;
    TaskHandle endTask_;
    std::vector<TaskHandle> prepareTasks_;
};

class FakeMediaPlayers final : public MediaPlayers {
public:
    explicit FakeMediaPlayers(Scheduler& scheduler);

    // Every media file is there except the missing paths.
    bool fileExists(const std::filesystem::path& path) const override {
        return !missingPaths.contains(path);
    }
    std::shared_ptr<SoundFilePlayer> openSound(const std::filesystem::path& path) override;
    // Answers inside the call, or `offLoopOpenSeconds` later when set, as a
    // slow disk would.
    void openSoundOffMainLoop(const std::filesystem::path& path, OpenedSound done) override;
    // Opens a WAV image for its length; anything else opens as null. Its
    // player is found under the empty path.
    std::shared_ptr<SoundFilePlayer> openSoundData(std::vector<std::uint8_t> bytes) override;
    std::shared_ptr<VideoSurface> makeVideoSurface(const SceneID& id,
                                                   const std::filesystem::path& path) override;

    // A sound opens with its duration here, else with `defaultSoundSeconds`;
    // with neither, or when listed missing, it opens as null.
    std::map<std::filesystem::path, double> soundDurations;
    std::optional<double> defaultSoundSeconds;
    std::set<std::filesystem::path> missingPaths;

    std::map<std::filesystem::path, FakeVideoBehaviour> videoBehaviours;
    FakeVideoBehaviour defaultVideoBehaviour;

    // Device UIDs that every sound player made here fails to find.
    DeviceUIDs& missingDevices() { return *missingDevices_; }

    // Every image given to `openSoundData`.
    std::vector<std::vector<std::uint8_t>> soundData;
    // Paths asked of `openSound` and of `openSoundOffMainLoop`.
    std::vector<std::filesystem::path> soundRequests;
    std::vector<std::filesystem::path> offLoopSoundRequests;
    std::optional<double> offLoopOpenSeconds;

    // Everything made, in creation order; null where its owners let go.
    std::vector<std::shared_ptr<FakeSoundFilePlayer>> sounds() const;
    std::vector<std::shared_ptr<FakeVideoSurface>> surfaces() const;
    // The latest made for that path or id, null if none is alive.
    std::shared_ptr<FakeSoundFilePlayer> sound(const std::filesystem::path& path) const;
    std::shared_ptr<FakeVideoSurface> surface(const std::filesystem::path& path) const;
    std::shared_ptr<FakeVideoSurface> surface(const SceneID& id) const;

private:
    std::shared_ptr<SoundFilePlayer> makeSound(const std::filesystem::path& path);

    Scheduler& scheduler_;
    std::shared_ptr<DeviceUIDs> missingDevices_ = std::make_shared<DeviceUIDs>();
    std::vector<std::pair<std::filesystem::path, std::weak_ptr<FakeSoundFilePlayer>>> sounds_;
    std::vector<std::weak_ptr<FakeVideoSurface>> surfaces_;
};

} // namespace velarion::testing
