#pragma once
// MediaPlayers: where the engine gets its players. One factory for sound
// files and video surfaces, so an engine can be built with real pipelines or
// with players that run in virtual time.
//
// Contract.
// - Main thread only, except `done` of `openSoundOffMainLoop`.
// - `openSound` decodes enough of the file to know its length and prepares
//   it to play; a file that is missing or not sound gives null. It must not
//   block the main loop for longer than opening a file takes.
// - `openSoundData` does the same for a whole sound file held in memory (a
//   WAV image); the player keeps its own copy.
// - `openSoundOffMainLoop` opens as `openSound` does, off the main loop, for
//   a player wanted a little later (the next song, the next pass of a loop).
//   `done` is called exactly once with the player or null, on any thread and
//   possibly before the call returns; it must only hand the player on (the
//   engine posts it to the main loop), and from then on the player belongs
//   to the main thread.
// - `makeVideoSurface` never fails: a bad file fails its `prepare`.
// - `fileExists` tells whether a media file is there, so that a cue whose
//   file is gone fails with the operator's words before any player is made.
// - `makeNetworkInput` plays a live NDI source as a surface, through the
//   factory the application gives `setNetworkInputs`; it throws NDIError
//   with the operator's words when the source or the runtime isn't there.
// - Ownership: the caller owns what it is given; the factory keeps nothing.

#include "LiveEngine/ports/NetworkFeeds.h"
#include "LiveEngine/ports/NetworkInput.h"
#include "LiveEngine/ports/SoundFilePlayer.h"
#include "LiveEngine/ports/VideoSurface.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace velarion {

class MediaPlayers {
public:
    virtual ~MediaPlayers() = default;

    virtual bool fileExists(const std::filesystem::path& path) const;
    virtual std::shared_ptr<SoundFilePlayer> openSound(const std::filesystem::path& path) = 0;
    using OpenedSound = std::function<void(std::shared_ptr<SoundFilePlayer>)>;
    virtual void openSoundOffMainLoop(const std::filesystem::path& path, OpenedSound done) = 0;
    virtual std::shared_ptr<SoundFilePlayer> openSoundData(std::vector<std::uint8_t> bytes) = 0;
    virtual std::shared_ptr<VideoSurface> makeVideoSurface(const SceneID& id,
                                                           const std::filesystem::path& path) = 0;

    static constexpr const char* noNetworkInputs = "NDI input isn't available on this computer.";
    using NetworkInputs = std::function<std::shared_ptr<NetworkInput>(const SceneID& id, const NDISource& source)>;
    void setNetworkInputs(NetworkInputs factory) { networkInputs_ = std::move(factory); }
    std::shared_ptr<NetworkInput> makeNetworkInput(const SceneID& id, const NDISource& source) const;

private:
    NetworkInputs networkInputs_;
};

} // namespace velarion
