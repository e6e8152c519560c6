#pragma once
// GstMediaPlayers: the engine's MediaPlayers on GStreamer. Sound files play
// on GstSoundFilePlayer; video surfaces come from the factory it is given,
// so the sound side stands on its own.
//
// Contract: as MediaPlayers. Main thread only. `devices`, when given, must
// outlive the factory and every player it made. A file that can't open
// gives null, and `lastFailure` says why in a few words for the log (not for
// opens off the main loop). Opens off the main loop run one at a time on the
// factory's own thread, since each waits for its preroll; destroying the
// factory answers the queued ones with null and waits for the one opening.

#include "LiveEngine/ports/AudioDevices.h"
#include "LiveEngine/ports/MediaPlayers.h"
#include "Platform/Sound/GstSoundFilePlayer.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace velarion {

class GstMediaPlayers final : public MediaPlayers {
public:
    using VideoFactory =
        std::function<std::shared_ptr<VideoSurface>(const SceneID&, const std::filesystem::path&)>;

    GstMediaPlayers(const AudioDevices* devices, VideoFactory videos, GstSoundOptions options = {});
    ~GstMediaPlayers() override;
    GstMediaPlayers(const GstMediaPlayers&) = delete;
    GstMediaPlayers& operator=(const GstMediaPlayers&) = delete;

    std::shared_ptr<SoundFilePlayer> openSound(const std::filesystem::path& path) override;
    void openSoundOffMainLoop(const std::filesystem::path& path, OpenedSound done) override;
    std::shared_ptr<SoundFilePlayer> openSoundData(std::vector<std::uint8_t> bytes) override;
    std::shared_ptr<VideoSurface> makeVideoSurface(const SceneID& id, const std::filesystem::path& path) override;

    const std::string& lastFailure() const { return lastFailure_; }

private:
    std::shared_ptr<SoundFilePlayer> open(const std::string& uri);
    void openInTurn();

    const AudioDevices* devices_;
    VideoFactory videos_;
    GstSoundOptions options_;
    std::string lastFailure_;

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::pair<std::filesystem::path, OpenedSound>> queued_;
    bool stopping_ = false;
    std::thread opener_; // started by the first open off the main loop
};

} // namespace velarion
