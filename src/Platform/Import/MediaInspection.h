#pragma once
// MediaInspection: what the library learns about a file — its length,
// picture size, frame rate and whether it has sound (GStreamer's
// discoverer), a poster frame of a video and a thumbnail of an image (PNG,
// at most 640 by 360), and the waveform of a sound. One shared background
// worker serves the console's requests in order, with a cache, so that
// scrolling the library never decodes a file twice.
//
// Contract.
// - The blocking calls (`details`, `posterPNG`, `waveform`) run on the
//   calling thread, any thread but the main loop; the caches they share are
//   locked. `details` throws std::runtime_error with the reason; the
//   console shows "File details unavailable: " and it.
// - The `request…` calls queue work for the worker and return at once; the
//   answer reaches the main loop by Scheduler::post. Destruction drops the
//   queue, waits for the job under way and posts nothing afterwards. The
//   scheduler must outlive the inspection.
// - Caches are keyed by path, size and modification time: a replaced file
//   is looked at again. Waveforms are also kept on disk, in the user's
//   cache folder, so a show opens with its waveforms at once.
// - As MediaDurations it answers the length for imports (any thread).

#include "LiveEngine/ports/MediaImportTools.h"
#include "LiveEngine/ports/Scheduler.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace velarion {

struct MediaDetails {
    double duration = 0;
    std::optional<int> width;
    std::optional<int> height;
    std::optional<float> framesPerSecond;
    bool hasAudio = false;
    std::int64_t fileBytes = 0;
    friend bool operator==(const MediaDetails&, const MediaDetails&) = default;
};

class MediaInspection final : public MediaDurations {
public:
    static constexpr int posterWidth = 640;
    static constexpr int posterHeight = 360;
    static constexpr int waveformBars = 500;

    // `cacheFolder` defaults to $XDG_CACHE_HOME/Velarion (~/.cache/Velarion).
    explicit MediaInspection(Scheduler& scheduler, std::optional<std::filesystem::path> cacheFolder = std::nullopt);
    ~MediaInspection() override;
    MediaInspection(const MediaInspection&) = delete;
    MediaInspection& operator=(const MediaInspection&) = delete;

    MediaDetails details(const std::filesystem::path& file);
    // A video's frame at `seconds` (held inside the file by posterPosition),
    // or an image's thumbnail; none for a file without a picture.
    std::optional<std::string> posterPNG(const std::filesystem::path& file, double seconds);
    // `count` peaks from 0 to 1; all zeros for a file without sound. Throws
    // std::runtime_error when the file can't be decoded.
    std::vector<float> waveform(const std::filesystem::path& file, int count = waveformBars);

    std::optional<double> durationSeconds(const std::filesystem::path& file) override;

    // Queued for the worker; `done` runs on the main loop. A failure gives
    // the reason in words and no value.
    void requestDetails(const std::filesystem::path& file,
                        std::function<void(std::optional<MediaDetails>, const std::string& failure)> done);
    void requestPoster(const std::filesystem::path& file, double seconds,
                       std::function<void(std::optional<std::string> png)> done);
    void requestWaveform(const std::filesystem::path& file, int count,
                         std::function<void(std::optional<std::vector<float>> peaks)> done);

private:
    void enqueue(std::function<void()> job);
    void loop();
    std::optional<std::vector<float>> cachedWaveform(const std::string& key);

    Scheduler& scheduler_;
    std::filesystem::path cacheFolder_;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
    std::mutex cacheLock_;
    std::map<std::string, MediaDetails> details_;
    std::map<std::string, std::optional<std::string>> posters_;
    std::map<std::string, std::vector<float>> waveforms_;
    std::mutex queueLock_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> queue_;
    bool stopping_ = false;
    std::thread thread_; // last: starts once the rest is ready
};

} // namespace velarion
