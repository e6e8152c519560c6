#include "Console/LibraryPictures.h"

#include "Platform/App/QtScheduler.h"
#include "Platform/Import/MediaInspection.h"

#include <QImage>
#include <QImageReader>
#include <QMetaObject>

#include <algorithm>
#include <cstring>
#include <unordered_set>

namespace velarion::console {

namespace {

QImage readScaled(const std::filesystem::path& file, QSize fit) {
    QImageReader reader(QString::fromStdString(file.string()));
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    // Scaled while decoding: a 4K picture never lands whole in memory.
    if (size.isValid() && (size.width() > fit.width() || size.height() > fit.height()))
        reader.setScaledSize(size.scaled(fit, Qt::KeepAspectRatio));
    return reader.read();
}

} // namespace

// Only the inspection's blocking calls are used, on the worker; its
// scheduler is there for the queued calls, which never run here.
struct LibraryPictures::Inspection {
    QtScheduler scheduler;
    MediaInspection inspection{scheduler};
};

LibraryPictures::LibraryPictures(QObject* parent)
    : QObject(parent), inspection_(std::make_unique<Inspection>()), thread_([this] { loop(); }) {}

LibraryPictures::~LibraryPictures() {
    {
        std::lock_guard guard(lock_);
        stopping_ = true;
        queue_.clear();
    }
    wake_.notify_all();
    thread_.join();
}

void LibraryPictures::request(Request request, std::function<void(Answer)> done) {
    ++pending_;
    {
        std::lock_guard guard(lock_);
        queue_.push_back({std::move(request), generation_, std::move(done)});
    }
    wake_.notify_one();
}

void LibraryPictures::prefer(const std::vector<std::string>& keys) {
    if (keys.empty()) return;
    const std::unordered_set<std::string> wanted(keys.begin(), keys.end());
    std::lock_guard guard(lock_);
    std::stable_partition(queue_.begin(), queue_.end(),
                          [&](const Job& job) { return wanted.count(job.request.key) > 0; });
}

void LibraryPictures::forget() {
    ++generation_;
    pending_ = 0;
    std::lock_guard guard(lock_);
    queue_.clear();
}

void LibraryPictures::loop() {
    for (;;) {
        Job job;
        {
            std::unique_lock guard(lock_);
            wake_.wait(guard, [this] { return stopping_ || !queue_.empty(); });
            if (stopping_) return;
            job = std::move(queue_.front());
            queue_.pop_front();
        }
        Answer answer = make(job.request);
        // Delivered on the main thread; a `forget` since drops it there.
        QMetaObject::invokeMethod(
            this,
            [this, generation = job.generation, done = std::move(job.done), answer = std::move(answer)]() mutable {
                if (generation != generation_) return;
                if (pending_ > 0) --pending_;
                done(std::move(answer));
            },
            Qt::QueuedConnection);
    }
}

LibraryPictures::Answer LibraryPictures::make(const Request& request) {
    Answer answer{request.key, false, std::nullopt, {}};
    std::error_code error;
    answer.isMissing = std::any_of(request.files.begin(), request.files.end(),
                                   [&](const std::filesystem::path& file) { return !std::filesystem::exists(file, error); });
    if (answer.isMissing || request.files.empty()) return answer;
    const std::filesystem::path& file = request.files.front();
    try {
        switch (request.look) {
        case Look::none: break;
        case Look::picture: answer.picture = still(readScaled(file, request.fit)); break;
        case Look::poster:
            if (const auto png = inspection_->inspection.posterPNG(file, request.posterSeconds)) {
                const QImage frame = QImage::fromData(reinterpret_cast<const uchar*>(png->data()), int(png->size()), "PNG");
                answer.picture = still(frame.scaled(request.fit, Qt::KeepAspectRatio, Qt::SmoothTransformation));
            }
            break;
        case Look::waveform:
            answer.peaks = inspection_->inspection.waveform(file, waveformBars);
            break;
        }
    } catch (const std::exception&) {
        // A file that can't be read shows its kind instead of a picture.
    }
    return answer;
}

QImage LibraryPictures::view(const StillImage& still) {
    return QImage(still.bgra().data(), still.width(), still.height(), still.width() * 4,
                  QImage::Format_ARGB32_Premultiplied);
}

std::optional<StillImage> LibraryPictures::still(const QImage& image) {
    if (image.isNull()) return std::nullopt;
    const QImage converted = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    std::vector<std::uint8_t> bgra(std::size_t(converted.width()) * std::size_t(converted.height()) * 4);
    for (int y = 0; y < converted.height(); ++y)
        std::memcpy(bgra.data() + std::size_t(y) * std::size_t(converted.width()) * 4, converted.constScanLine(y),
                    std::size_t(converted.width()) * 4);
    return StillImage::fromBGRA(converted.width(), converted.height(), std::move(bgra));
}

} // namespace velarion::console
