#include "Platform/Sound/GstMediaPlayers.h"

#include "Platform/Gst/GstHandles.h"

namespace velarion {

GstMediaPlayers::GstMediaPlayers(const AudioDevices* devices, VideoFactory videos, GstSoundOptions options)
    : devices_(devices), videos_(std::move(videos)), options_(options) {}

std::shared_ptr<SoundFilePlayer> GstMediaPlayers::open(const std::string& uri) {
    lastFailure_.clear();
    return GstSoundFilePlayer::open(uri, devices_, options_, lastFailure_);
}

std::shared_ptr<SoundFilePlayer> GstMediaPlayers::openSound(const std::filesystem::path& path) {
    gst::ensureInitialized();
    GError* error = nullptr;
    gst::GCharPtr uri(gst_filename_to_uri(path.c_str(), &error));
    gst::GErrorPtr owned(error);
    if (!uri) {
        lastFailure_ = owned ? owned->message : "its path can't be read";
        return nullptr;
    }
    return open(uri.get());
}

std::shared_ptr<SoundFilePlayer> GstMediaPlayers::openSoundData(std::vector<std::uint8_t> bytes) {
    // A data URI keeps the image inside the pipeline's own source.
    gst::GCharPtr encoded(g_base64_encode(bytes.data(), bytes.size()));
    return open(std::string("data:audio/x-wav;base64,") + encoded.get());
}

std::shared_ptr<VideoSurface> GstMediaPlayers::makeVideoSurface(const SceneID& id,
                                                                const std::filesystem::path& path) {
    return videos_(id, path);
}

} // namespace velarion
