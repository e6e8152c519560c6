#include "Platform/Video/GstVideoSurface.h"

#include "Platform/Gst/GstWorkers.h"

#include <gst/app/gstappsink.h>
#include <gst/audio/audio.h>
#include <gst/pbutils/pbutils.h>
#include <gst/video/video.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstring>
#include <mutex>

namespace velarion {

using gst::Element;
using gst::GstRef;

namespace {

// The server's default output, when the device list knows it.
std::optional<std::string> systemOutputID(const AudioDevices* devices) {
    if (devices != nullptr)
        for (const AudioDevice& output : devices->outputs())
            if (output.isDefault) return output.id;
    return std::nullopt;
}

constexpr double nanosecondsPerSecond = 1e9;
// A looping pass is a segment, so that its end is reported before the
// sinks run dry and the next pass can join it; any other pass ends by EOS,
// which also drains the frames a decoder still holds.
void seekFrom(GstElement* pipeline, double seconds, bool flush, bool segment) {
    const auto flags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_ACCURATE | (segment ? GST_SEEK_FLAG_SEGMENT : 0) |
                                                 (flush ? GST_SEEK_FLAG_FLUSH : 0));
    gst_element_seek(pipeline, 1.0, GST_FORMAT_TIME, flags, GST_SEEK_TYPE_SET,
                     static_cast<gint64>(std::llround(seconds * nanosecondsPerSecond)), GST_SEEK_TYPE_NONE,
                     GST_CLOCK_TIME_NONE);
}

bool hasPrefix(GstPad* pad, const char* prefix) {
    GstCaps* caps = gst_pad_get_current_caps(pad);
    if (caps == nullptr) caps = gst_pad_query_caps(pad, nullptr);
    const bool matches = caps != nullptr && gst_caps_get_size(caps) > 0 &&
                         g_str_has_prefix(gst_structure_get_name(gst_caps_get_structure(caps, 0)), prefix);
    if (caps != nullptr) gst_caps_unref(caps);
    return matches;
}

std::string missingPluginWords(const std::string& description) {
    return "The video can't play: the GStreamer plugin for " + description + " isn't installed";
}

// The operator's words for a pipeline that failed before it was ready.
std::string loadFailureWords(const GError* error, const std::string& missingPlugin) {
    if (!missingPlugin.empty()) return missingPluginWords(missingPlugin);
    if (error == nullptr) return {};
    if (error->domain == GST_RESOURCE_ERROR &&
        (error->code == GST_RESOURCE_ERROR_NOT_FOUND || error->code == GST_RESOURCE_ERROR_OPEN_READ))
        return "The video file can't be opened";
    if (error->domain == GST_STREAM_ERROR &&
        (error->code == GST_STREAM_ERROR_TYPE_NOT_FOUND || error->code == GST_STREAM_ERROR_WRONG_TYPE))
        return "The file isn't a video this computer can read";
    return error->message != nullptr ? error->message : "";
}

} // namespace

struct GstVideoSurface::Shared {
    Scheduler* scheduler = nullptr;
    std::weak_ptr<GstVideoSurface> owner;

    // Made on the main thread; joined to the pipeline by `pad-added` on a
    // streaming thread, and let go at destruction, under `branchMutex`.
    std::mutex branchMutex;
    Element pipeline;
    Element videoConvert;
    Element appSink;
    Element audioConvert;
    Element volume;
    Element audioSink;
    bool videoLinked = false;
    bool audioLinked = false;
    gst::BusWatch watch;

    std::atomic<bool> looping{false};
    std::atomic<double> durationSeconds{0};
    std::atomic<bool> ended{false};
    std::atomic<bool> ready{false}; // the first preroll has been answered
    std::atomic<std::uint64_t> shownFrames{0};
    std::atomic<std::uint64_t> droppedFrames{0};

    std::mutex wordsMutex;
    std::string missingPlugin;
    std::string failure;

    // The latest-frame slot.
    mutable std::mutex frameMutex;
    std::shared_ptr<const VideoFrame> latest;
    const GstBuffer* prerolled = nullptr; // compared, never read

    // The audio tap: `sinkMutex` only guards the copy of the sink;
    // `deliveryMutex` is held while it is called, so that replacing the sink
    // waits out a call in flight.
    std::mutex sinkMutex;
    std::shared_ptr<const VideoAudioSink> sink;
    std::mutex deliveryMutex;
    GstAudioInfo audioInfo{}; // streaming thread only, from the caps event
    bool audioInfoValid = false;
    std::vector<std::vector<float>> channels;
    std::vector<const float*> channelPointers;

    void postEnded() { post(&GstVideoSurface::ended); }
    void postSeeked() { post(&GstVideoSurface::seeked); }
    void post(void (GstVideoSurface::*member)()) {
        scheduler->post([owner = owner, member] {
            if (auto surface = owner.lock()) ((*surface).*member)();
        });
    }
    void postPrepared(VideoPreparation result) {
        scheduler->post([owner = owner, result = std::move(result)]() mutable {
            if (auto surface = owner.lock()) surface->prepared(std::move(result));
        });
    }
    void publish(GstSample* sample, bool preroll);
    void deliver(GstBuffer* buffer);
    VideoPreparation readInfo(GstElement* pipeline);
};

namespace {

using Shared = GstVideoSurface::Shared;

Shared& sharedOf(gpointer data) { return **static_cast<std::shared_ptr<Shared>*>(data); }
void deleteSharedHandle(gpointer data) { delete static_cast<std::shared_ptr<Shared>*>(data); }
void deleteSharedClosure(gpointer data, GClosure*) { deleteSharedHandle(data); }

GstFlowReturn onPreroll(GstAppSink* sink, gpointer data) {
    auto sample = gst::GstMiniRef<GstSample>::adopt(gst_app_sink_pull_preroll(sink));
    if (sample) sharedOf(data).publish(sample.get(), true);
    return GST_FLOW_OK;
}

GstFlowReturn onSample(GstAppSink* sink, gpointer data) {
    auto sample = gst::GstMiniRef<GstSample>::adopt(gst_app_sink_pull_sample(sink));
    if (sample) sharedOf(data).publish(sample.get(), false);
    return GST_FLOW_OK;
}

GstPadProbeReturn atTap(GstPad*, GstPadProbeInfo* info, gpointer data) {
    Shared& shared = sharedOf(data);
    if ((info->type & GST_PAD_PROBE_TYPE_BUFFER) != 0) {
        shared.deliver(GST_PAD_PROBE_INFO_BUFFER(info));
        return GST_PAD_PROBE_OK;
    }
    GstEvent* event = GST_PAD_PROBE_INFO_EVENT(info);
    if (event != nullptr && GST_EVENT_TYPE(event) == GST_EVENT_CAPS) {
        GstCaps* caps = nullptr;
        gst_event_parse_caps(event, &caps);
        shared.audioInfoValid = caps != nullptr && gst_audio_info_from_caps(&shared.audioInfo, caps);
    }
    return GST_PAD_PROBE_OK;
}

// Joins a decoded stream to its branch; the first video and the first sound
// only. Runs on a streaming thread.
void onPadAdded(GstElement*, GstPad* pad, gpointer data) {
    Shared& shared = sharedOf(data);
    std::lock_guard lock(shared.branchMutex);
    if (!shared.pipeline) return; // going away
    GstBin* bin = GST_BIN(shared.pipeline.get());
    if (hasPrefix(pad, "video/") && !shared.videoLinked) {
        Element flip = gst::makeElement("videoflip");
        if (!flip) return;
        gst_util_set_object_arg(G_OBJECT(flip.get()), "video-direction", "auto");
        gst_bin_add_many(bin, shared.videoConvert.get(), flip.get(), shared.appSink.get(), nullptr);
        gst_element_link_many(shared.videoConvert.get(), flip.get(), shared.appSink.get(), nullptr);
        for (GstElement* element : {shared.appSink.get(), flip.get(), shared.videoConvert.get()})
            gst_element_sync_state_with_parent(element);
        auto sinkPad = GstRef<GstPad>::adopt(gst_element_get_static_pad(shared.videoConvert.get(), "sink"));
        shared.videoLinked = gst_pad_link(pad, sinkPad.get()) == GST_PAD_LINK_OK;
    } else if (hasPrefix(pad, "audio/") && !shared.audioLinked) {
        // No sound server: the sound is decoded and tapped on a clocked null
        // sink, and the picture plays on. The check runs before the sink
        // joins the pipeline, so its failure is no pipeline error.
        if (gst_element_set_state(shared.audioSink.get(), GST_STATE_READY) == GST_STATE_CHANGE_FAILURE) {
            gst_element_set_state(shared.audioSink.get(), GST_STATE_NULL);
            shared.audioSink = gst::makeElement("fakesink");
            g_object_set(shared.audioSink.get(), "sync", TRUE, nullptr);
        }
        Element resample = gst::makeElement("audioresample");
        Element floats = gst::makeElement("capsfilter");
        if (!resample || !floats) return;
        auto caps = gst::GstMiniRef<GstCaps>::adopt(
            gst_caps_from_string("audio/x-raw,format=" GST_AUDIO_NE(F32) ",layout=interleaved"));
        g_object_set(floats.get(), "caps", caps.get(), nullptr);
        gst_bin_add_many(bin, shared.audioConvert.get(), resample.get(), floats.get(), shared.volume.get(),
                         shared.audioSink.get(), nullptr);
        gst_element_link_many(shared.audioConvert.get(), resample.get(), floats.get(), shared.volume.get(),
                              shared.audioSink.get(), nullptr);
        for (GstElement* element :
             {shared.audioSink.get(), shared.volume.get(), floats.get(), resample.get(), shared.audioConvert.get()})
            gst_element_sync_state_with_parent(element);
        auto sinkPad = GstRef<GstPad>::adopt(gst_element_get_static_pad(shared.audioConvert.get(), "sink"));
        shared.audioLinked = gst_pad_link(pad, sinkPad.get()) == GST_PAD_LINK_OK;
    }
}

// What the bus thread holds: the state and the pipeline, so a message
// handled while the surface goes away still finds both alive.
struct WatchData {
    std::shared_ptr<Shared> shared;
    Element pipeline;
};
void deleteWatchData(gpointer data) { delete static_cast<WatchData*>(data); }

gboolean onBusMessage(GstBus*, GstMessage* message, gpointer data) {
    auto& watch = *static_cast<WatchData*>(data);
    Shared& shared = *watch.shared;
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ASYNC_DONE:
        if (!shared.ready.exchange(true)) shared.postPrepared(shared.readInfo(watch.pipeline.get()));
        else shared.postSeeked();
        break;
    case GST_MESSAGE_ERROR: {
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        gst::GErrorPtr owned(error);
        std::string missing;
        {
            std::lock_guard lock(shared.wordsMutex);
            missing = shared.missingPlugin;
        }
        if (!shared.ready.exchange(true)) {
            shared.postPrepared(VideoSurfaceError{VideoSurfaceError::Case::loadFailed,
                                                  loadFailureWords(owned.get(), missing)});
            break;
        }
        {
            std::lock_guard lock(shared.wordsMutex);
            if (shared.failure.empty()) shared.failure = owned ? owned->message : "the video pipeline failed";
        }
        if (!shared.ended.exchange(true)) shared.postEnded();
        break;
    }
    case GST_MESSAGE_EOS:
        if (!shared.ended.exchange(true)) shared.postEnded();
        break;
    case GST_MESSAGE_SEGMENT_DONE:
        // The pass has been read; the sinks still hold its last moments, so
        // the next pass joins without a gap.
        // Looping was turned off during the pass: a last, plain pass from
        // its end gives the EOS.
        if (shared.looping.load()) seekFrom(watch.pipeline.get(), 0, false, true);
        else seekFrom(watch.pipeline.get(), shared.durationSeconds.load(), false, false);
        break;
    case GST_MESSAGE_ELEMENT:
        if (gst_is_missing_plugin_message(message)) {
            gst::GCharPtr description(gst_missing_plugin_message_get_description(message));
            std::lock_guard lock(shared.wordsMutex);
            if (shared.missingPlugin.empty()) shared.missingPlugin = gst::text(description.get());
        }
        break;
    case GST_MESSAGE_QOS: {
        // Late video frames dropped by the sink or skipped by the decoder.
        std::lock_guard lock(shared.branchMutex);
        if (GST_MESSAGE_SRC(message) != GST_OBJECT(shared.audioSink.get())) shared.droppedFrames.fetch_add(1);
        break;
    }
    default:
        break;
    }
    return TRUE;
}

} // namespace

// On the bus thread, with the watch's own pipeline: the surface may be
// letting its own go at the same moment.
VideoPreparation Shared::readInfo(GstElement* pipeline) {
    std::string missing;
    {
        std::lock_guard lock(wordsMutex);
        missing = missingPlugin;
    }
    GstRef<GstPad> videoPad;
    bool hasAudio = false;
    {
        std::lock_guard lock(branchMutex);
        if (videoLinked) videoPad = GstRef<GstPad>::adopt(gst_element_get_static_pad(appSink.get(), "sink"));
        hasAudio = audioLinked;
    }
    if (!videoPad) {
        if (!missing.empty()) return VideoSurfaceError{VideoSurfaceError::Case::loadFailed, missingPluginWords(missing)};
        return VideoSurfaceError{VideoSurfaceError::Case::noVideoTrack, {}};
    }
    gint64 duration = 0;
    if (!gst_element_query_duration(pipeline, GST_FORMAT_TIME, &duration) || duration <= 0)
        return VideoSurfaceError{VideoSurfaceError::Case::noPlayableDuration, {}};
    auto caps = gst::GstMiniRef<GstCaps>::adopt(gst_pad_get_current_caps(videoPad.get()));
    GstVideoInfo video;
    if (!caps || !gst_video_info_from_caps(&video, caps.get()))
        return VideoSurfaceError{VideoSurfaceError::Case::loadFailed, {}};
    VideoSurfaceInfo info;
    // Rotation is already applied by `videoflip`; a non-square pixel widens.
    const double aspect = video.par_d > 0 ? static_cast<double>(video.par_n) / video.par_d : 1.0;
    info.pixelWidth = static_cast<int>(std::lround(video.width * (aspect > 0 ? aspect : 1.0)));
    info.pixelHeight = video.height;
    info.nominalFrameRate = video.fps_d > 0 ? static_cast<double>(video.fps_n) / video.fps_d : 0.0;
    info.durationSeconds = static_cast<double>(duration) / nanosecondsPerSecond;
    durationSeconds.store(info.durationSeconds);
    info.hasAudio = hasAudio;
    return info;
}

namespace {

// A decoder's buffer mapped for as long as a frame shows it; unmapping
// lets the buffer go back to the decoder's pool.
struct MappedFrame {
    GstVideoFrame frame{};
    ~MappedFrame() { gst_video_frame_unmap(&frame); }
};

VideoColorimetry colorimetryOf(const GstVideoInfo& info) {
    VideoColorimetry colorimetry;
    switch (info.colorimetry.matrix) {
    case GST_VIDEO_COLOR_MATRIX_BT601:
    case GST_VIDEO_COLOR_MATRIX_FCC:
    case GST_VIDEO_COLOR_MATRIX_SMPTE240M:
        colorimetry.matrix = VideoColorMatrix::bt601;
        break;
    case GST_VIDEO_COLOR_MATRIX_BT2020:
        colorimetry.matrix = VideoColorMatrix::bt2020;
        break;
    case GST_VIDEO_COLOR_MATRIX_BT709:
        colorimetry.matrix = VideoColorMatrix::bt709;
        break;
    default: // unknown: what a decoder assumes for the size
        colorimetry.matrix = info.height > 576 ? VideoColorMatrix::bt709 : VideoColorMatrix::bt601;
        break;
    }
    colorimetry.fullRange = info.colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255;
    return colorimetry;
}

} // namespace

void Shared::publish(GstSample* sample, bool preroll) {
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    if (buffer == nullptr) return;
    // A prerolled frame is rendered again when playback starts; once is enough.
    if (preroll) prerolled = buffer;
    else if (std::exchange(prerolled, nullptr) == buffer) return;
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, gst_sample_get_caps(sample))) return;
    const GstVideoFormat format = GST_VIDEO_INFO_FORMAT(&info);
    if (format != GST_VIDEO_FORMAT_I420 && format != GST_VIDEO_FORMAT_NV12) return;
    // Zero copy: the frame holds the decoder's buffer, mapped, until the
    // last renderer lets it go.
    auto mapped = std::make_shared<MappedFrame>();
    if (!gst_video_frame_map(&mapped->frame, &info, buffer, GST_MAP_READ)) return;
    GstVideoFrame& frame = mapped->frame;
    std::array<VideoPlane, 3> planes{};
    for (guint i = 0; i < GST_VIDEO_FRAME_N_PLANES(&frame) && i < planes.size(); ++i) {
        planes[i] = VideoPlane{static_cast<const std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, i)),
                               GST_VIDEO_FRAME_PLANE_STRIDE(&frame, i), GST_VIDEO_FRAME_COMP_WIDTH(&frame, i),
                               GST_VIDEO_FRAME_COMP_HEIGHT(&frame, i)};
    }
    auto next = VideoFrame::make(format == GST_VIDEO_FORMAT_I420 ? VideoPlaneLayout::i420 : VideoPlaneLayout::nv12,
                                 GST_VIDEO_FRAME_WIDTH(&frame), GST_VIDEO_FRAME_HEIGHT(&frame), planes,
                                 colorimetryOf(info), std::move(mapped));
    if (!next) return;
    {
        std::lock_guard lock(frameMutex);
        latest = std::move(next);
    }
    if (!preroll) shownFrames.fetch_add(1);
}

void Shared::deliver(GstBuffer* buffer) {
    std::lock_guard delivering(deliveryMutex);
    std::shared_ptr<const VideoAudioSink> current;
    {
        std::lock_guard lock(sinkMutex);
        current = sink;
    }
    if (!current || !audioInfoValid || GST_AUDIO_INFO_FORMAT(&audioInfo) != GST_AUDIO_FORMAT_F32) return;
    const int channelCount = GST_AUDIO_INFO_CHANNELS(&audioInfo);
    const int frameBytes = GST_AUDIO_INFO_BPF(&audioInfo);
    GstMapInfo map;
    if (channelCount < 1 || frameBytes < 1 || !gst_buffer_map(buffer, &map, GST_MAP_READ)) return;
    const std::size_t frames = map.size / static_cast<std::size_t>(frameBytes);
    if (frames > 0) {
        const auto* samples = reinterpret_cast<const float*>(map.data);
        channels.resize(static_cast<std::size_t>(channelCount));
        channelPointers.resize(channels.size());
        for (std::size_t channel = 0; channel < channels.size(); ++channel) {
            auto& list = channels[channel];
            list.resize(frames);
            for (std::size_t i = 0; i < frames; ++i) list[i] = samples[i * channels.size() + channel];
            channelPointers[channel] = list.data();
        }
        (*current)(VideoAudioBlock{channelPointers, frames, static_cast<double>(GST_AUDIO_INFO_RATE(&audioInfo))});
    }
    gst_buffer_unmap(buffer, &map);
}

std::shared_ptr<GstVideoSurface> GstVideoSurface::make(Scheduler& scheduler, const AudioDevices* devices, SceneID id,
                                                       std::filesystem::path path, GstVideoOptions options) {
    gst::ensureInitialized();
    static std::once_flag pbutils;
    std::call_once(pbutils, [] { gst_pb_utils_init(); });
    std::shared_ptr<GstVideoSurface> surface(new GstVideoSurface(scheduler, devices, id, std::move(path)));
    Shared& shared = *surface->shared_;
    shared.owner = surface;
    shared.scheduler = &scheduler;
    shared.pipeline = Element::adopt(gst_pipeline_new(nullptr));
    Element decode = gst::makeElement("uridecodebin");
    shared.videoConvert = gst::makeElement("videoconvert");
    shared.appSink = gst::makeElement("appsink");
    shared.audioConvert = gst::makeElement("audioconvert");
    shared.volume = gst::makeElement("volume");
    shared.audioSink = gst::makeElement("pulsesink");
    if (!shared.audioSink) shared.audioSink = gst::makeElement("fakesink");
    if (!decode || !shared.videoConvert || !shared.appSink || !shared.audioConvert || !shared.volume ||
        !shared.audioSink)
        return surface; // `prepare` tells: the pipeline has no decoder
    gst_bin_add(GST_BIN(shared.pipeline.get()), decode.get());

    gst::GErrorPtr error;
    GError* raw = nullptr;
    gst::GCharPtr uri(gst_filename_to_uri(surface->path_.c_str(), &raw));
    error.reset(raw);
    g_object_set(decode.get(), "uri", uri ? uri.get() : "file:///nonexistent", nullptr);
    g_signal_connect_data(decode.get(), "pad-added", G_CALLBACK(onPadAdded),
                          new std::shared_ptr<Shared>(surface->shared_), deleteSharedClosure, GConnectFlags{});

    // The decoders' own planes pass through untouched; `videoconvert` only
    // works for the rare file decoded into anything else.
    g_object_set(shared.videoConvert.get(), "n-threads", 0u, nullptr);
    auto planar = gst::GstMiniRef<GstCaps>::adopt(gst_caps_from_string("video/x-raw,format={I420,NV12}"));
    // Late by more than a frame of 50 fps: dropped, as a video sink would.
    g_object_set(shared.appSink.get(), "caps", planar.get(), "sync", TRUE, "qos", TRUE, "max-buffers", 2u,
                 "max-lateness", static_cast<gint64>(20 * GST_MSECOND), "enable-last-sample", FALSE, nullptr);
    GstAppSinkCallbacks callbacks{};
    callbacks.new_preroll = onPreroll;
    callbacks.new_sample = onSample;
    gst_app_sink_set_callbacks(GST_APP_SINK(shared.appSink.get()), &callbacks,
                               new std::shared_ptr<Shared>(surface->shared_), deleteSharedHandle);
    if (g_object_class_find_property(G_OBJECT_GET_CLASS(shared.audioSink.get()), "provide-clock") != nullptr)
        g_object_set(shared.audioSink.get(), "provide-clock", options.sinkProvidesClock ? TRUE : FALSE, nullptr);
    else
        g_object_set(shared.audioSink.get(), "sync", TRUE, nullptr);
    auto tapPad = GstRef<GstPad>::adopt(gst_element_get_static_pad(shared.volume.get(), "src"));
    gst_pad_add_probe(tapPad.get(),
                      static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM),
                      atTap, new std::shared_ptr<Shared>(surface->shared_), deleteSharedHandle);

    auto bus = GstRef<GstBus>::adopt(gst_element_get_bus(shared.pipeline.get()));
    shared.watch = gst::GstWorkers::shared().watch(bus.get(), onBusMessage,
                                                   new WatchData{surface->shared_, shared.pipeline}, deleteWatchData);
    return surface;
}

GstVideoSurface::GstVideoSurface(Scheduler& scheduler, const AudioDevices* devices, SceneID id,
                                 std::filesystem::path path)
    : scheduler_(scheduler), devices_(devices), id_(id), path_(std::move(path)),
      shared_(std::make_shared<Shared>()) {}

GstVideoSurface::~GstVideoSurface() {
    prepareTimeout_.cancel();
    shared_->watch.remove();
    Element pipeline;
    {
        // The callbacks hold the shared state, so it must not hold them.
        std::lock_guard lock(shared_->branchMutex);
        pipeline = std::move(shared_->pipeline);
        shared_->videoConvert = shared_->appSink = shared_->audioConvert = Element();
        shared_->volume = shared_->audioSink = Element();
    }
    if (pipeline) gst::GstWorkers::shared().retire(std::move(pipeline), 0);
    std::lock_guard lock(shared_->sinkMutex);
    shared_->sink.reset();
}

bool GstVideoSurface::hasFrameToShow() const { return latestVideoFrame() != nullptr; }

std::shared_ptr<const StillPixels> GstVideoSurface::latestFrame() const {
    const auto frame = latestVideoFrame();
    return frame ? frame->bgra() : nullptr;
}

std::shared_ptr<const VideoFrame> GstVideoSurface::latestVideoFrame() const {
    std::lock_guard lock(shared_->frameMutex);
    return shared_->latest;
}

void GstVideoSurface::prepare(double timeoutSeconds, std::function<void(VideoPreparation)> done) {
    if (info_) {
        scheduler_.post([done = std::move(done), info = *info_] { done(info); });
        return;
    }
    preparing_ = std::move(done);
    std::weak_ptr<GstVideoSurface> weak = weak_from_this();
    prepareTimeout_ = scheduler_.after(timeoutSeconds, [weak] {
        if (auto surface = weak.lock()) surface->prepared(VideoSurfaceError{VideoSurfaceError::Case::notReadyInTime, {}});
    });
    if (GST_BIN_NUMCHILDREN(GST_BIN(shared_->pipeline.get())) == 0) {
        shared_->ready.store(true);
        shared_->postPrepared(VideoSurfaceError{VideoSurfaceError::Case::loadFailed,
                                                "The video can't play: GStreamer's playback plugins aren't installed"});
        return;
    }
    gst_element_set_state(shared_->pipeline.get(), GST_STATE_PAUSED);
}

void GstVideoSurface::prepared(VideoPreparation result) {
    if (!preparing_) return;
    prepareTimeout_.cancel();
    auto done = std::move(preparing_);
    preparing_ = nullptr;
    if (const auto* info = std::get_if<VideoSurfaceInfo>(&result)) {
        info_ = *info;
        if (pendingSeconds_) seekNow(*std::exchange(pendingSeconds_, std::nullopt));
        if (playing_) {
            playing_ = false;
            play();
        }
    }
    done(std::move(result));
}

void GstVideoSurface::seekNow(double seconds) {
    shared_->ended.store(false);
    seekFrom(shared_->pipeline.get(), seconds, true, loops_);
    segmentMode_ = loops_;
    seeking_ = true;
    seekingSeconds_ = seconds;
}

void GstVideoSurface::seeked() {
    seeking_ = false;
    for (auto& done : std::exchange(seekDone_, {}))
        if (done) done();
}

void GstVideoSurface::play() {
    if (playing_ && !shared_->ended.load()) return;
    playing_ = true;
    if (!info_) return; // starts once prepared
    // Played again after its end: from the start, as a new pass.
    if (shared_->ended.load() && !pendingSeconds_) pendingSeconds_ = 0.0;
    if (pendingSeconds_ || (loops_ && !segmentMode_)) seekNow(pendingSeconds_.value_or(currentSeconds()));
    pendingSeconds_.reset();
    gst_element_set_state(shared_->pipeline.get(), GST_STATE_PLAYING);
}

void GstVideoSurface::pause() {
    if (!playing_) return;
    playing_ = false;
    if (info_) gst_element_set_state(shared_->pipeline.get(), GST_STATE_PAUSED);
}

bool GstVideoSurface::isPlaying() const { return playing_ && info_ && !shared_->ended.load(); }

void GstVideoSurface::seek(double seconds, std::function<void()> done) {
    seconds = std::isfinite(seconds) ? std::max(seconds, 0.0) : 0.0;
    if (info_) seconds = std::min(seconds, info_->durationSeconds);
    if (done) seekDone_.push_back(std::move(done));
    if (!info_) {
        pendingSeconds_ = seconds;
        return;
    }
    seekNow(seconds);
}

double GstVideoSurface::currentSeconds() const {
    if (!info_) return pendingSeconds_.value_or(0);
    if (seeking_) return seekingSeconds_;
    if (shared_->ended.load() && !loops_) return info_->durationSeconds;
    gint64 position = 0;
    if (!gst_element_query_position(shared_->pipeline.get(), GST_FORMAT_TIME, &position)) return seekingSeconds_;
    return std::clamp(static_cast<double>(position) / nanosecondsPerSecond, 0.0, info_->durationSeconds);
}

void GstVideoSurface::setVolume(double level, bool muted) {
    volume_ = std::clamp(std::isfinite(level) ? level : 0.0, 0.0, 1.0);
    muted_ = muted;
    if (shared_->volume) g_object_set(shared_->volume.get(), "volume", volume_, "mute", muted_ ? TRUE : FALSE, nullptr);
}

void GstVideoSurface::setLoops(bool loops) {
    loops_ = loops;
    shared_->looping.store(loops);
    // Looping needs a segment to loop; a pass already under way gets one.
    if (loops && playing_ && info_ && !segmentMode_) seekNow(currentSeconds());
}

void GstVideoSurface::setAudioOutputDeviceUID(const std::optional<std::string>& deviceUID) {
    device_ = deviceUID;
    // A device that is gone leaves the sound on the system output.
    const bool found = !deviceUID || devices_ == nullptr || devices_->isPresent(*deviceUID);
    const std::optional<std::string> systemOutput = systemOutputID(devices_);
    std::lock_guard lock(shared_->branchMutex);
    gst::pointSinkAt(shared_->audioSink.get(), found ? deviceUID : std::nullopt, systemOutput);
}

void GstVideoSurface::setAudioSink(VideoAudioSink sink) {
    auto next = sink ? std::make_shared<const VideoAudioSink>(std::move(sink)) : nullptr;
    {
        std::lock_guard lock(shared_->sinkMutex);
        shared_->sink = std::move(next);
    }
    // A call of the old sink in flight finishes before this returns.
    std::lock_guard wait(shared_->deliveryMutex);
}

void GstVideoSurface::ended() {
    if (!shared_->ended.load()) return; // a seek has started a new pass since
    if (onEnd_ && !loops_) onEnd_();
}

GstVideoSurface::FrameCounts GstVideoSurface::frameCounts() const {
    return {shared_->shownFrames.load(), shared_->droppedFrames.load()};
}

std::string GstVideoSurface::failure() const {
    std::lock_guard lock(shared_->wordsMutex);
    return shared_->failure;
}

} // namespace velarion
