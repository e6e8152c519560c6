#pragma once
// GstMediaPlayers: the engine's MediaPlayers on GStreamer. Sound files play
// on GstSoundFilePlayer; video surfaces come from the factory it is given,
// so the sound side stands on its own.
//
// Contract: as MediaPlayers. Main thread only. `devices`, when given, must
// outlive the factory and every player it made. A file that can't open
// gives null, and `lastFailure` says why in a few words for the log.

#include "LiveEngine/ports/AudioDevices.h"
#include "LiveEngine/ports/MediaPlayers.h"
#include "Platform/Sound/GstSoundFilePlayer.h"

#include <functional>
#include <string>

namespace velarion {

class GstMediaPlayers final : public MediaPlayers {
public:
    using VideoFactory =
        std::function<std::shared_ptr<VideoSurface>(const SceneID&, const std::filesystem::path&)>;

    GstMediaPlayers(const AudioDevices* devices, VideoFactory videos, GstSoundOptions options = {});

    std::shared_ptr<SoundFilePlayer> openSound(const std::filesystem::path& path) override;
    std::shared_ptr<SoundFilePlayer> openSoundData(std::vector<std::uint8_t> bytes) override;
    std::shared_ptr<VideoSurface> makeVideoSurface(const SceneID& id, const std::filesystem::path& path) override;

    const std::string& lastFailure() const { return lastFailure_; }

private:
    std::shared_ptr<SoundFilePlayer> open(const std::string& uri);

    const AudioDevices* devices_;
    VideoFactory videos_;
    GstSoundOptions options_;
    std::string lastFailure_;
};

} // namespace velarion
