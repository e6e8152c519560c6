#include "Platform/Import/MediaInspection.h"

#include "LiveEngine/MediaTrim.h"
#include "LiveModel/FileAccess.h"
#include "LiveModel/ShowPackage.h"
#include "Platform/Gst/GstHandles.h"
#include "Platform/Pictures/Canvas.h"

#include <gst/app/gstappsink.h>
#include <gst/pbutils/pbutils.h>
#include <gst/video/video.h>

#include <QImage>
#include <QImageReader>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace velarion {

namespace fs = std::filesystem;

namespace {

constexpr GstClockTime discoverTimeout = 15 * GST_SECOND;
constexpr GstClockTime stepTimeout = 10 * GST_SECOND;

struct GObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <class T> using GObjectPtr = std::unique_ptr<T, GObjectUnref>;

struct StreamListFree {
    void operator()(GList* list) const { gst_discoverer_stream_info_list_free(list); }
};
using StreamList = std::unique_ptr<GList, StreamListFree>;

std::string uriOf(const fs::path& file) {
    GError* raw = nullptr;
    const gst::GCharPtr uri(gst_filename_to_uri(file.c_str(), &raw));
    const gst::GErrorPtr error(raw);
    if (!uri) throw std::runtime_error("The file's location can't be read.");
    return uri.get();
}

// Path, size and modification time: a changed file is a new key.
std::string keyOf(const fs::path& file) {
    std::error_code error;
    const auto size = fs::file_size(file, error);
    const auto time = fs::last_write_time(file, error);
    return file.string() + "|" + std::to_string(error ? 0 : size) + "|" +
           std::to_string(error ? 0 : time.time_since_epoch().count());
}

bool isImage(const fs::path& file) { return ShowPackage::mediaKind(file) == MediaKind::image; }

std::optional<std::string> png(const QImage& picture) {
    const QByteArray bytes = encodePNG(picture);
    if (bytes.isEmpty()) return std::nullopt;
    return std::string(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

QImage fitted(const QImage& picture) {
    if (picture.width() <= MediaInspection::posterWidth && picture.height() <= MediaInspection::posterHeight) {
        return picture;
    }
    return picture.scaled(MediaInspection::posterWidth, MediaInspection::posterHeight, Qt::KeepAspectRatio,
                          Qt::SmoothTransformation);
}

// A small pipeline from a description, its source's uri set afterwards so
// that no file name is ever parsed as pipeline text.
struct Pipeline {
    gst::Element pipeline;
    gst::Element sink;

    Pipeline(const char* description, const fs::path& file) {
        gst::ensureInitialized();
        GError* raw = nullptr;
        pipeline = gst::Element::adopt(gst_parse_launch(description, &raw));
        const gst::GErrorPtr error(raw);
        if (!pipeline || error) throw std::runtime_error("The decoder couldn't be set up.");
        const gst::Element source = gst::Element::adopt(gst_bin_get_by_name(GST_BIN(pipeline.get()), "source"));
        sink = gst::Element::adopt(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
        g_object_set(source.get(), "uri", uriOf(file).c_str(), nullptr);
    }
    ~Pipeline() {
        if (pipeline) gst_element_set_state(pipeline.get(), GST_STATE_NULL);
    }
    Pipeline(const Pipeline&) = delete;
    Pipeline& operator=(const Pipeline&) = delete;

    // Waits for the state change to finish; false on error or time-out.
    bool settle() const {
        return gst_element_get_state(pipeline.get(), nullptr, nullptr, stepTimeout) == GST_STATE_CHANGE_SUCCESS;
    }
    std::string error() const {
        const gst::GstRef<GstBus> bus = gst::GstRef<GstBus>::adopt(gst_element_get_bus(pipeline.get()));
        const gst::Message message = gst::Message::adopt(gst_bus_pop_filtered(bus.get(), GST_MESSAGE_ERROR));
        if (!message) return "The file couldn't be decoded.";
        GError* raw = nullptr;
        gst_message_parse_error(message.get(), &raw, nullptr);
        const gst::GErrorPtr error(raw);
        return error ? std::string(error->message) : "The file couldn't be decoded.";
    }
};

std::string fnvHex(const std::string& text) {
    std::uint64_t hash = 14695981039346656037ULL;
    for (const unsigned char c : text) hash = (hash ^ c) * 1099511628211ULL;
    char out[17];
    std::snprintf(out, sizeof out, "%016llx", static_cast<unsigned long long>(hash));
    return out;
}

fs::path defaultCacheFolder() {
    if (const char* cache = std::getenv("XDG_CACHE_HOME"); cache && *cache) return fs::path(cache) / "Velarion";
    if (const char* home = std::getenv("HOME"); home && *home) return fs::path(home) / ".cache" / "Velarion";
    return fs::temp_directory_path() / "Velarion";
}

MediaDetails discover(const fs::path& file) {
    gst::ensureInitialized();
    MediaDetails details;
    std::error_code sizeError;
    const auto bytes = fs::file_size(file, sizeError);
    if (sizeError) throw std::runtime_error(sizeError == std::errc::no_such_file_or_directory
                                                ? "The file isn't there."
                                                : "The file can't be read: " + sizeError.message() + ".");
    details.fileBytes = static_cast<std::int64_t>(bytes);

    if (isImage(file)) {
        QImageReader reader(QString::fromStdString(file.string()));
        reader.setAutoTransform(true);
        QSize size = reader.size();
        if (!size.isValid()) throw std::runtime_error("The picture can't be read.");
        const QImageIOHandler::Transformations turn = reader.transformation();
        if (turn & QImageIOHandler::TransformationRotate90) size.transpose();
        details.width = size.width();
        details.height = size.height();
        return details;
    }

    GError* raw = nullptr;
    const GObjectPtr<GstDiscoverer> discoverer(gst_discoverer_new(discoverTimeout, &raw));
    gst::GErrorPtr error(raw);
    if (!discoverer) throw std::runtime_error("The media reader couldn't start.");
    raw = nullptr;
    const GObjectPtr<GstDiscovererInfo> info(
        gst_discoverer_discover_uri(discoverer.get(), uriOf(file).c_str(), &raw));
    error.reset(raw);
    const GstDiscovererResult result = info ? gst_discoverer_info_get_result(info.get()) : GST_DISCOVERER_ERROR;
    switch (result) {
    case GST_DISCOVERER_OK: break;
    case GST_DISCOVERER_TIMEOUT: throw std::runtime_error("Reading the file took too long.");
    case GST_DISCOVERER_MISSING_PLUGINS: throw std::runtime_error("Velarion can't decode this file's format.");
    default: throw std::runtime_error(error ? std::string(error->message) : "The file couldn't be read as media.");
    }

    const GstClockTime duration = gst_discoverer_info_get_duration(info.get());
    if (GST_CLOCK_TIME_IS_VALID(duration)) details.duration = static_cast<double>(duration) / GST_SECOND;
    const StreamList videos(gst_discoverer_info_get_video_streams(info.get()));
    if (videos) {
        auto* video = static_cast<GstDiscovererVideoInfo*>(videos->data);
        int width = static_cast<int>(gst_discoverer_video_info_get_width(video));
        int height = static_cast<int>(gst_discoverer_video_info_get_height(video));
        // Turned pictures (phone videos) report their stored size.
        if (const GstTagList* tags = gst_discoverer_stream_info_get_tags(GST_DISCOVERER_STREAM_INFO(video))) {
            gchar* orientation = nullptr;
            if (gst_tag_list_get_string(tags, GST_TAG_IMAGE_ORIENTATION, &orientation)) {
                const gst::GCharPtr owned(orientation);
                if (std::strstr(orientation, "90") || std::strstr(orientation, "270")) std::swap(width, height);
            }
        }
        details.width = width;
        details.height = height;
        const unsigned numerator = gst_discoverer_video_info_get_framerate_num(video);
        const unsigned denominator = gst_discoverer_video_info_get_framerate_denom(video);
        if (numerator > 0 && denominator > 0 && !gst_discoverer_video_info_is_image(video)) {
            details.framesPerSecond = static_cast<float>(numerator) / static_cast<float>(denominator);
        }
    }
    details.hasAudio = StreamList(gst_discoverer_info_get_audio_streams(info.get())) != nullptr;
    return details;
}

std::optional<std::string> thumbnail(const fs::path& file) {
    QImageReader reader(QString::fromStdString(file.string()));
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isValid() && (size.width() > MediaInspection::posterWidth || size.height() > MediaInspection::posterHeight)) {
        reader.setScaledSize(size.scaled(MediaInspection::posterWidth, MediaInspection::posterHeight, Qt::KeepAspectRatio));
    }
    const QImage picture = reader.read();
    if (picture.isNull()) return std::nullopt;
    return png(fitted(picture));
}

std::optional<std::string> videoFrame(const fs::path& file, double seconds) {
    Pipeline decode("uridecodebin name=source caps=video/x-raw expose-all-streams=false ! videoflip "
                    "method=automatic ! videoconvert ! videoscale ! video/x-raw,format=BGRx,pixel-aspect-ratio=1/1 "
                    "! appsink name=sink sync=false max-buffers=1",
                    file);
    gst_element_set_state(decode.pipeline.element(), GST_STATE_PAUSED);
    if (!decode.settle()) return std::nullopt;
    gint64 length = 0;
    std::optional<double> duration;
    if (gst_element_query_duration(decode.pipeline.element(), GST_FORMAT_TIME, &length) && length > 0) {
        duration = static_cast<double>(length) / GST_SECOND;
    }
    const double position = posterPosition(seconds, duration);
    // Within a tenth of a second either way, as a key frame nearby will do.
    const GstSeekFlags flags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE);
    if (position > 0.05) {
        gst_element_seek_simple(decode.pipeline.element(), GST_FORMAT_TIME, flags,
                                static_cast<gint64>(position * GST_SECOND));
        if (!decode.settle()) return std::nullopt;
    }
    const gst::GstMiniRef<GstSample> sample =
        gst::GstMiniRef<GstSample>::adopt(gst_app_sink_try_pull_preroll(GST_APP_SINK(decode.sink.get()), stepTimeout));
    if (!sample) return std::nullopt;
    GstVideoInfo video;
    if (!gst_video_info_from_caps(&video, gst_sample_get_caps(sample.get()))) return std::nullopt;
    GstBuffer* buffer = gst_sample_get_buffer(sample.get());
    GstMapInfo map;
    if (!buffer || !gst_buffer_map(buffer, &map, GST_MAP_READ)) return std::nullopt;
    const QImage frame =
        QImage(map.data, GST_VIDEO_INFO_WIDTH(&video), GST_VIDEO_INFO_HEIGHT(&video),
               static_cast<qsizetype>(GST_VIDEO_INFO_PLANE_STRIDE(&video, 0)), QImage::Format_RGB32)
            .copy();
    gst_buffer_unmap(buffer, &map);
    return png(fitted(frame));
}

std::vector<float> decodePeaks(const fs::path& file, int count, double duration) {
    Pipeline decode("uridecodebin name=source caps=audio/x-raw expose-all-streams=false ! audioconvert ! "
                    "audioresample quality=0 ! audio/x-raw,format=S16LE,channels=1,rate=8000,layout=interleaved ! "
                    "appsink name=sink sync=false max-buffers=64",
                    file);
    WaveformBars bars(count, duration);
    if (gst_element_set_state(decode.pipeline.element(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) {
        throw std::runtime_error(decode.error());
    }
    GstAppSink* sink = GST_APP_SINK(decode.sink.get());
    while (true) {
        const gst::GstMiniRef<GstSample> sample =
            gst::GstMiniRef<GstSample>::adopt(gst_app_sink_try_pull_sample(sink, stepTimeout));
        if (!sample) break;
        GstBuffer* buffer = gst_sample_get_buffer(sample.get());
        GstMapInfo map;
        if (!buffer || !gst_buffer_map(buffer, &map, GST_MAP_READ)) continue;
        bars.add({reinterpret_cast<const std::int16_t*>(map.data), map.size / sizeof(std::int16_t)});
        gst_buffer_unmap(buffer, &map);
    }
    if (!gst_app_sink_is_eos(sink)) throw std::runtime_error(decode.error());
    return bars.bars();
}

} // namespace

MediaInspection::MediaInspection(Scheduler& scheduler, std::optional<fs::path> cacheFolder)
    : scheduler_(scheduler), cacheFolder_(cacheFolder ? *cacheFolder : defaultCacheFolder()),
      thread_([this] { loop(); }) {}

MediaInspection::~MediaInspection() {
    {
        std::lock_guard guard(queueLock_);
        stopping_ = true;
        queue_.clear();
    }
    wake_.notify_all();
    thread_.join();
}

MediaDetails MediaInspection::details(const fs::path& file) {
    const std::string key = keyOf(file);
    {
        std::lock_guard guard(cacheLock_);
        if (const auto found = details_.find(key); found != details_.end()) return found->second;
    }
    MediaDetails found = discover(file);
    std::lock_guard guard(cacheLock_);
    details_[key] = found;
    return found;
}

std::optional<double> MediaInspection::durationSeconds(const fs::path& file) {
    try {
        const MediaDetails found = details(file);
        if (!std::isfinite(found.duration) || found.duration <= 0) return std::nullopt;
        return found.duration;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::optional<std::string> MediaInspection::posterPNG(const fs::path& file, double seconds) {
    const std::string key = keyOf(file) + "|" + std::to_string(seconds);
    {
        std::lock_guard guard(cacheLock_);
        if (const auto found = posters_.find(key); found != posters_.end()) return found->second;
    }
    std::optional<std::string> picture;
    if (isImage(file)) {
        picture = thumbnail(file);
    } else {
        try {
            if (details(file).width) picture = videoFrame(file, seconds);
        } catch (const std::exception&) {
            // A file without a readable picture has no poster.
        }
    }
    std::lock_guard guard(cacheLock_);
    posters_[key] = picture;
    return picture;
}

std::optional<std::vector<float>> MediaInspection::cachedWaveform(const std::string& key) {
    {
        std::lock_guard guard(cacheLock_);
        if (const auto found = waveforms_.find(key); found != waveforms_.end()) return found->second;
    }
    const fs::path stored = cacheFolder_ / "Waveforms" / (fnvHex(key) + ".peaks");
    std::error_code error;
    if (!fs::is_regular_file(stored, error)) return std::nullopt;
    try {
        const auto content = fileAccess::readRegularFile(stored, 1 << 20);
        const auto* bytes = std::get_if<std::string>(&content);
        // The key leads the file, so that a hash collision reads as a miss.
        if (!bytes || !bytes->starts_with(key + '\n')) return std::nullopt;
        const std::string_view data = std::string_view(*bytes).substr(key.size() + 1);
        if (data.size() % sizeof(float) != 0) return std::nullopt;
        std::vector<float> peaks(data.size() / sizeof(float));
        std::memcpy(peaks.data(), data.data(), data.size());
        return peaks;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

std::vector<float> MediaInspection::waveform(const fs::path& file, int count) {
    const std::string key = keyOf(file) + "|" + std::to_string(count);
    if (auto cached = cachedWaveform(key)) return *cached;

    const MediaDetails found = details(file);
    std::vector<float> peaks = found.hasAudio ? decodePeaks(file, count, found.duration)
                                              : std::vector<float>(static_cast<std::size_t>(std::max(count, 0)), 0.0F);
    {
        std::lock_guard guard(cacheLock_);
        waveforms_[key] = peaks;
    }
    try {
        const fs::path folder = cacheFolder_ / "Waveforms";
        fs::create_directories(folder);
        std::string bytes = key + '\n';
        bytes.append(reinterpret_cast<const char*>(peaks.data()), peaks.size() * sizeof(float));
        fileAccess::writeAtomically(folder / (fnvHex(key) + ".peaks"), bytes);
    } catch (const std::exception&) {
        // Without a cache on disk the peaks are computed again next time.
    }
    return peaks;
}

void MediaInspection::enqueue(std::function<void()> job) {
    {
        std::lock_guard guard(queueLock_);
        queue_.push_back(std::move(job));
    }
    wake_.notify_all();
}

void MediaInspection::loop() {
    std::unique_lock guard(queueLock_);
    while (true) {
        wake_.wait(guard, [this] { return stopping_ || !queue_.empty(); });
        if (stopping_) return;
        std::function<void()> job = std::move(queue_.front());
        queue_.pop_front();
        guard.unlock();
        job();
        job = nullptr;
        guard.lock();
    }
}

void MediaInspection::requestDetails(const fs::path& file,
                                     std::function<void(std::optional<MediaDetails>, const std::string&)> done) {
    enqueue([this, file, done = std::move(done), alive = std::weak_ptr<int>(life_)] {
        std::optional<MediaDetails> found;
        std::string failure;
        try {
            found = details(file);
        } catch (const std::exception& error) {
            failure = error.what();
        }
        scheduler_.post([alive, done, found, failure] {
            if (!alive.expired()) done(found, failure);
        });
    });
}

void MediaInspection::requestPoster(const fs::path& file, double seconds,
                                    std::function<void(std::optional<std::string>)> done) {
    enqueue([this, file, seconds, done = std::move(done), alive = std::weak_ptr<int>(life_)] {
        std::optional<std::string> picture = posterPNG(file, seconds);
        scheduler_.post([alive, done, picture = std::move(picture)] {
            if (!alive.expired()) done(picture);
        });
    });
}

void MediaInspection::requestWaveform(const fs::path& file, int count,
                                      std::function<void(std::optional<std::vector<float>>)> done) {
    enqueue([this, file, count, done = std::move(done), alive = std::weak_ptr<int>(life_)] {
        std::optional<std::vector<float>> peaks;
        try {
            peaks = waveform(file, count);
        } catch (const std::exception&) {
            // The view goes without a waveform.
        }
        scheduler_.post([alive, done, peaks = std::move(peaks)] {
            if (!alive.expired()) done(peaks);
        });
    });
}

} // namespace velarion
