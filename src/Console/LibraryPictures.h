#pragma once
// LibraryPictures: the small pictures of the library and the Present view,
// made off the main thread: an image's or a deck page's thumbnail, a
// video's poster frame, a sound's waveform, and whether the files are there
// at all. One worker thread takes the requests in order; the answers come
// back to the main thread through Qt's event loop.
//
// Contract.
// - `request` and `forget` on the main thread only. `done` runs on the main
//   thread, later, unless `forget` ran first (a new show: what was asked
//   for the old one is never delivered).
// - Destruction drops the queue, waits for the job under way and delivers
//   nothing afterwards.
// - Pictures come back as BGRA stills, ready for AppModel::caches(), scaled
//   to fit `fit` and never larger than the file's own picture.

#include "LiveModel/MediaItem.h"
#include "ShowStage/StillImage.h"

#include <QObject>
#include <QSize>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

class QImage;

namespace velarion::console {

class LibraryPictures final : public QObject {
public:
    enum class Look { none, picture, poster, waveform };
    struct Request {
        std::string key;                          // the cache's name for the answer
        std::vector<std::filesystem::path> files; // all must exist; the first is looked at
        Look look = Look::none;
        double posterSeconds = 0;
        QSize fit{192, 108};
    };
    struct Answer {
        std::string key;
        bool isMissing = false;
        std::optional<StillImage> picture;
        std::vector<float> peaks;
    };
    static constexpr int waveformBars = 120;

    explicit LibraryPictures(QObject* parent = nullptr);
    ~LibraryPictures() override;

    void request(Request request, std::function<void(Answer)> done);
    // Moves the waiting requests for these keys to the front, in the order
    // they were asked: what the operator can see comes first.
    void prefer(const std::vector<std::string>& keys);
    void forget();
    // Requests not yet answered.
    std::size_t pending() const { return pending_; }
    // Counts `forget`s: a caller that remembers what it asked for starts
    // over when this moved.
    std::uint64_t generation() const { return generation_; }

    // A still as a QImage over the same pixels (no copy): valid while the
    // still lives.
    static QImage view(const StillImage& still);
    static std::optional<StillImage> still(const QImage& image);

private:
    struct Job {
        Request request;
        std::uint64_t generation = 0;
        std::function<void(Answer)> done;
    };
    void loop();
    Answer make(const Request& request);

    struct Inspection;
    std::unique_ptr<Inspection> inspection_;
    std::uint64_t generation_ = 0;
    std::size_t pending_ = 0;
    std::mutex lock_;
    std::condition_variable wake_;
    std::deque<Job> queue_;
    bool stopping_ = false;
    std::thread thread_; // last: starts once the rest is ready
};

} // namespace velarion::console
