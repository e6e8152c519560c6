#include "Platform/Sound/GstMediaPlayers.h"

#include "Platform/Gst/GstHandles.h"

namespace velarion {

GstMediaPlayers::GstMediaPlayers(const AudioDevices* devices, VideoFactory videos, GstSoundOptions options)
    : devices_(devices), videos_(std::move(videos)), options_(options) {}

namespace {

// A file:// URI for `path`; empty with `failure` set when it has none.
std::string uriOf(const std::filesystem::path& path, std::string& failure) {
    GError* error = nullptr;
    gst::GCharPtr uri(gst_filename_to_uri(path.c_str(), &error));
    gst::GErrorPtr owned(error);
    if (!uri) {
        failure = owned ? owned->message : "its path can't be read";
        return {};
    }
    return uri.get();
}

} // namespace

GstMediaPlayers::~GstMediaPlayers() {
    std::deque<std::pair<std::filesystem::path, OpenedSound>> unanswered;
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
        unanswered.swap(queued_);
    }
    wake_.notify_all();
    if (opener_.joinable()) opener_.join();
    for (auto& job : unanswered) job.second(nullptr);
}

void GstMediaPlayers::openSoundOffMainLoop(const std::filesystem::path& path, OpenedSound done) {
    {
        std::lock_guard lock(mutex_);
        queued_.emplace_back(path, std::move(done));
        if (!opener_.joinable()) opener_ = std::thread([this] { openInTurn(); });
    }
    wake_.notify_one();
}

void GstMediaPlayers::openInTurn() {
    gst::ensureInitialized();
    for (;;) {
        std::pair<std::filesystem::path, OpenedSound> job;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [this] { return stopping_ || !queued_.empty(); });
            if (stopping_) return;
            job = std::move(queued_.front());
            queued_.pop_front();
        }
        std::string failure;
        const std::string uri = uriOf(job.first, failure);
        std::shared_ptr<SoundFilePlayer> player;
        if (!uri.empty()) player = GstSoundFilePlayer::open(uri, devices_, options_, failure);
        job.second(std::move(player));
    }
}

std::shared_ptr<SoundFilePlayer> GstMediaPlayers::open(const std::string& uri) {
    lastFailure_.clear();
    return GstSoundFilePlayer::open(uri, devices_, options_, lastFailure_);
}

std::shared_ptr<SoundFilePlayer> GstMediaPlayers::openSound(const std::filesystem::path& path) {
    gst::ensureInitialized();
    lastFailure_.clear();
    const std::string uri = uriOf(path, lastFailure_);
    return uri.empty() ? nullptr : open(uri);
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
