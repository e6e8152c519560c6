#include "Platform/Sound/GstSoundFilePlayer.h"

#include "Platform/Gst/GstWorkers.h"

#include <gst/controller/gstdirectcontrolbinding.h>
#include <gst/controller/gstinterpolationcontrolsource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
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

constexpr double silentDecibels = -160;
constexpr double stopFadeSeconds = 0.01;
constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

std::int64_t steadyNanoseconds() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

std::int64_t toNanoseconds(double seconds) {
    return static_cast<std::int64_t>(std::llround(seconds * nanosecondsPerSecond));
}

} // namespace

struct GstSoundFilePlayer::Shared {
    Element pipeline;
    Element volume;
    Element sink;
    GstRef<GstPad> convertSinkPad;
    gst::BusWatch watch;
    double durationSeconds = 0;
    double sinkBufferSeconds = 0.1;

    // Written by the bus and streaming threads, read on the main thread.
    std::atomic<bool> ended{false};
    std::atomic<bool> looping{false};
    std::atomic<bool> segmentMode{false};
    std::atomic<std::int64_t> processedNanoseconds{0};
    std::atomic<double> rmsDecibels[2] = {silentDecibels, silentDecibels};
    std::atomic<int> lateBufferReports{0};
    std::atomic<bool> awaitingFirstBuffer{false};
    std::atomic<std::int64_t> playSteadyNanoseconds{0};
    std::atomic<std::int64_t> firstBufferSteadyNanoseconds{0};

    mutable std::mutex failureMutex;
    std::string failure;

    // Streaming thread only: the file's own segment, handed back to the sink.
    GstEvent* fileSegment = nullptr;

    ~Shared() {
        if (fileSegment != nullptr) gst_event_unref(fileSegment);
    }
    void fail(std::string text) {
        std::lock_guard lock(failureMutex);
        if (failure.empty()) failure = std::move(text);
    }
};

namespace {

using Shared = GstSoundFilePlayer::Shared;

// Seeks from `seconds` to the end as a segment, so that its end is
// reported and the next pass can join it.
void seekSegment(GstElement* pipeline, double seconds, bool flush) {
    const auto flags = static_cast<GstSeekFlags>(GST_SEEK_FLAG_SEGMENT | GST_SEEK_FLAG_ACCURATE |
                                                 (flush ? GST_SEEK_FLAG_FLUSH : 0));
    gst_element_seek(pipeline, 1.0, GST_FORMAT_TIME, flags, GST_SEEK_TYPE_SET,
                     static_cast<gint64>(std::llround(seconds * 1e9)), GST_SEEK_TYPE_NONE, GST_CLOCK_TIME_NONE);
}

// What the bus thread holds: the state and a reference to the pipeline, so
// a message handled while the player goes away still finds both alive.
struct WatchData {
    std::shared_ptr<Shared> shared;
    Element pipeline;
    GstRef<GstPad> convertSinkPad;
};

void deleteWatchData(gpointer data) { delete static_cast<WatchData*>(data); }
void deleteSharedHandle(gpointer data) { delete static_cast<std::shared_ptr<Shared>*>(data); }
Shared& sharedOf(gpointer data) { return **static_cast<std::shared_ptr<Shared>*>(data); }

void readLevels(Shared& shared, const GstStructure* structure) {
    const GValue* rms = gst_structure_get_value(structure, "rms");
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    // `level` still posts its readings as a GValueArray.
    if (rms == nullptr || !G_VALUE_HOLDS_BOXED(rms)) return;
    const auto* values = static_cast<const GValueArray*>(g_value_get_boxed(rms));
    for (guint channel = 0; channel < 2; ++channel) {
        // A mono file meters the same on both sides.
        const guint from = std::min(channel, values->n_values - 1);
        if (values->n_values == 0) break;
        const double decibels = g_value_get_double(&values->values[from]);
        // The last reading of a stream is not a number.
        if (std::isfinite(decibels)) shared.rmsDecibels[channel].store(decibels);
    }
    G_GNUC_END_IGNORE_DEPRECATIONS
}

gboolean onBusMessage(GstBus*, GstMessage* message, gpointer data) {
    auto& watch = *static_cast<WatchData*>(data);
    Shared& shared = *watch.shared;
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_EOS:
        shared.ended.store(true);
        break;
    case GST_MESSAGE_ERROR: {
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        gst::GErrorPtr owned(error);
        shared.fail(owned ? owned->message : "the sound pipeline failed");
        shared.ended.store(true);
        break;
    }
    case GST_MESSAGE_SEGMENT_DONE:
        // The pass has been read; the sink still holds its last moments, so
        // the next pass joins without a gap.
        if (shared.looping.load())
            seekSegment(watch.pipeline.get(), 0, false);
        else
            gst_pad_send_event(watch.convertSinkPad.get(), gst_event_new_eos());
        break;
    case GST_MESSAGE_ELEMENT:
        if (const GstStructure* structure = gst_message_get_structure(message);
            structure != nullptr && gst_structure_has_name(structure, "level"))
            readLevels(shared, structure);
        break;
    case GST_MESSAGE_QOS:
        shared.lateBufferReports.fetch_add(1);
        break;
    default:
        break;
    }
    return TRUE;
}

// On `volume`'s sink pad: the player's timeline becomes the stream time
// `volume` reads its control points at, whatever the file position.
GstPadProbeReturn intoTimeline(GstPad*, GstPadProbeInfo* info, gpointer data) {
    Shared& shared = sharedOf(data);
    if ((info->type & GST_PAD_PROBE_TYPE_BUFFER) != 0) {
        GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
        if (GST_BUFFER_DURATION_IS_VALID(buffer))
            shared.processedNanoseconds.fetch_add(static_cast<std::int64_t>(GST_BUFFER_DURATION(buffer)));
        return GST_PAD_PROBE_OK;
    }
    GstEvent* event = GST_PAD_PROBE_INFO_EVENT(info);
    if (event == nullptr || GST_EVENT_TYPE(event) != GST_EVENT_SEGMENT) return GST_PAD_PROBE_OK;
    GstSegment segment;
    gst_event_copy_segment(event, &segment);
    segment.time = static_cast<guint64>(shared.processedNanoseconds.load());
    GstEvent* timeline = gst_event_new_segment(&segment);
    gst_event_set_seqnum(timeline, gst_event_get_seqnum(event));
    if (shared.fileSegment != nullptr) gst_event_unref(shared.fileSegment);
    shared.fileSegment = event; // the probe's reference moves here
    GST_PAD_PROBE_INFO_DATA(info) = timeline;
    return GST_PAD_PROBE_OK;
}

// On `volume`'s source pad: the sink gets the file's segment back, so that
// positions read from it are positions in the file.
GstPadProbeReturn outOfTimeline(GstPad*, GstPadProbeInfo* info, gpointer data) {
    Shared& shared = sharedOf(data);
    GstEvent* event = GST_PAD_PROBE_INFO_EVENT(info);
    if (event == nullptr || GST_EVENT_TYPE(event) != GST_EVENT_SEGMENT || shared.fileSegment == nullptr)
        return GST_PAD_PROBE_OK;
    gst_event_unref(event);
    GST_PAD_PROBE_INFO_DATA(info) = std::exchange(shared.fileSegment, nullptr);
    return GST_PAD_PROBE_OK;
}

GstPadProbeReturn atSink(GstPad*, GstPadProbeInfo*, gpointer data) {
    Shared& shared = sharedOf(data);
    if (shared.awaitingFirstBuffer.exchange(false))
        shared.firstBufferSteadyNanoseconds.store(steadyNanoseconds());
    return GST_PAD_PROBE_OK;
}

void addProbe(GstElement* element, const char* padName, GstPadProbeType type, GstPadProbeCallback callback,
              const std::shared_ptr<Shared>& shared) {
    auto pad = GstRef<GstPad>::adopt(gst_element_get_static_pad(element, padName));
    gst_pad_add_probe(pad.get(), type, callback, new std::shared_ptr<Shared>(shared), deleteSharedHandle);
}

void onPadAdded(GstElement*, GstPad* pad, gpointer convert) {
    auto sinkPad = GstRef<GstPad>::adopt(gst_element_get_static_pad(GST_ELEMENT(convert), "sink"));
    if (gst_pad_is_linked(sinkPad.get())) return;
    GstCaps* caps = gst_pad_get_current_caps(pad);
    if (caps == nullptr) caps = gst_pad_query_caps(pad, nullptr);
    const bool sound = caps != nullptr && gst_caps_get_size(caps) > 0 &&
                       g_str_has_prefix(gst_structure_get_name(gst_caps_get_structure(caps, 0)), "audio/");
    if (caps != nullptr) gst_caps_unref(caps);
    if (sound) gst_pad_link(pad, sinkPad.get());
}

void onNoMorePads(GstElement* decoder, gpointer convert) {
    auto sinkPad = GstRef<GstPad>::adopt(gst_element_get_static_pad(GST_ELEMENT(convert), "sink"));
    if (!gst_pad_is_linked(sinkPad.get()))
        gst_element_post_message(decoder, gst_message_new_application(
                                              GST_OBJECT(decoder), gst_structure_new_empty("velarion-no-sound")));
}

// Waits for the pipeline to preroll; the failure's words when it doesn't.
std::string awaitPreroll(GstElement* pipeline, double timeoutSeconds) {
    auto bus = GstRef<GstBus>::adopt(gst_element_get_bus(pipeline));
    const std::int64_t deadline = steadyNanoseconds() + toNanoseconds(timeoutSeconds);
    for (;;) {
        const std::int64_t left = deadline - steadyNanoseconds();
        if (left <= 0) return "it took too long to open";
        auto message = gst::Message::adopt(gst_bus_timed_pop_filtered(
            bus.get(), static_cast<GstClockTime>(left),
            static_cast<GstMessageType>(GST_MESSAGE_ASYNC_DONE | GST_MESSAGE_ERROR | GST_MESSAGE_APPLICATION)));
        if (!message) return "it took too long to open";
        switch (GST_MESSAGE_TYPE(message.get())) {
        case GST_MESSAGE_ASYNC_DONE:
            return {};
        case GST_MESSAGE_APPLICATION:
            return "it has no sound";
        default: {
            GError* error = nullptr;
            gst_message_parse_error(message.get(), &error, nullptr);
            gst::GErrorPtr owned(error);
            return owned ? owned->message : "it can't be read";
        }
        }
    }
}

} // namespace

double GstSoundFilePlayer::Fade::levelAt(std::int64_t nanoseconds) const {
    if (nanoseconds >= endNanoseconds) return toLevel;
    if (nanoseconds <= startNanoseconds) return fromLevel;
    const double share = static_cast<double>(nanoseconds - startNanoseconds) /
                         static_cast<double>(endNanoseconds - startNanoseconds);
    return fromLevel + (toLevel - fromLevel) * share;
}

std::shared_ptr<GstSoundFilePlayer> GstSoundFilePlayer::open(const std::string& uri, const AudioDevices* devices,
                                                             const GstSoundOptions& options,
                                                             std::string& failure) {
    gst::ensureInitialized();
    auto pipeline = Element::adopt(gst_pipeline_new(nullptr));
    Element decode = gst::makeElement("uridecodebin");
    Element convert = gst::makeElement("audioconvert");
    Element resample = gst::makeElement("audioresample");
    Element volume = gst::makeElement("volume");
    Element level = gst::makeElement("level");
    Element sink = gst::makeElement("pulsesink");
    if (!decode || !convert || !resample || !volume || !level || !sink) {
        failure = "the sound plugins aren't installed";
        return nullptr;
    }
    g_object_set(decode.get(), "uri", uri.c_str(), nullptr);
    g_object_set(level.get(), "post-messages", TRUE, "interval", static_cast<guint64>(50 * GST_MSECOND), nullptr);
    g_object_set(sink.get(), "provide-clock", options.sinkProvidesClock ? TRUE : FALSE, "buffer-time",
                 static_cast<gint64>(options.sinkBufferSeconds * 1e6), "qos", TRUE, nullptr);
    gst_bin_add_many(GST_BIN(pipeline.get()), decode.get(), convert.get(), resample.get(), volume.get(),
                     level.get(), sink.get(), nullptr);
    if (!gst_element_link_many(convert.get(), resample.get(), volume.get(), level.get(), sink.get(), nullptr)) {
        failure = "the sound pipeline can't be built";
        return nullptr;
    }
    g_signal_connect(decode.get(), "pad-added", G_CALLBACK(onPadAdded), convert.get());
    g_signal_connect(decode.get(), "no-more-pads", G_CALLBACK(onNoMorePads), convert.get());

    auto shared = std::make_shared<Shared>();
    shared->sinkBufferSeconds = options.sinkBufferSeconds;
    const auto dataProbe = static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_BUFFER |
                                                        GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM);
    addProbe(volume.get(), "sink", dataProbe, intoTimeline, shared);
    addProbe(volume.get(), "src", GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM, outOfTimeline, shared);
    addProbe(sink.get(), "sink", GST_PAD_PROBE_TYPE_BUFFER, atSink, shared);

    shared->pipeline = pipeline;
    shared->volume = volume;
    shared->sink = sink;
    shared->convertSinkPad = GstRef<GstPad>::adopt(gst_element_get_static_pad(convert.get(), "sink"));

    std::shared_ptr<GstSoundFilePlayer> player(new GstSoundFilePlayer(shared, devices));
    player->installFade(player->fade_);

    gst_element_set_state(pipeline.get(), GST_STATE_PAUSED);
    failure = awaitPreroll(pipeline.get(), options.prepareTimeoutSeconds);
    gint64 duration = 0;
    if (failure.empty() && (!gst_element_query_duration(pipeline.get(), GST_FORMAT_TIME, &duration) || duration <= 0))
        failure = "its length can't be read";
    if (!failure.empty()) {
        player->stopped_ = true;
        player->finishStop(0);
        return nullptr;
    }
    shared->durationSeconds = static_cast<double>(duration) / nanosecondsPerSecond;
    auto bus = GstRef<GstBus>::adopt(gst_element_get_bus(pipeline.get()));
    shared->watch = gst::GstWorkers::shared().watch(
        bus.get(), onBusMessage, new WatchData{shared, pipeline, shared->convertSinkPad}, deleteWatchData);
    return player;
}

GstSoundFilePlayer::GstSoundFilePlayer(std::shared_ptr<Shared> shared, const AudioDevices* devices)
    : shared_(std::move(shared)), devices_(devices) {}

GstSoundFilePlayer::~GstSoundFilePlayer() { stop(); }

double GstSoundFilePlayer::durationSeconds() const { return shared_->durationSeconds; }

double GstSoundFilePlayer::currentSeconds() const {
    if (stopped_) return frozenSeconds_;
    if (pendingSeconds_) return *pendingSeconds_;
    if (shared_->ended.load() && loopCount_ >= 0) return shared_->durationSeconds;
    gint64 position = 0;
    if (!gst_element_query_position(shared_->pipeline.get(), GST_FORMAT_TIME, &position)) return frozenSeconds_;
    return std::clamp(static_cast<double>(position) / nanosecondsPerSecond, 0.0, shared_->durationSeconds);
}

void GstSoundFilePlayer::setCurrentSeconds(double seconds) {
    if (stopped_) return;
    seconds = std::clamp(std::isfinite(seconds) ? seconds : 0.0, 0.0, shared_->durationSeconds);
    shared_->ended.store(false);
    if (playing_)
        seekNow(seconds, true);
    else
        pendingSeconds_ = seconds;
}

void GstSoundFilePlayer::seekNow(double seconds, bool flush) {
    seekSegment(shared_->pipeline.get(), seconds, flush);
    shared_->segmentMode.store(true);
    frozenSeconds_ = seconds;
    pendingSeconds_.reset();
    prerollStale_ = false;
}

void GstSoundFilePlayer::play() {
    if (stopped_ || playing_) return;
    // Played again after its end: from the start, as a new pass.
    if (shared_->ended.exchange(false) && !pendingSeconds_) pendingSeconds_ = 0.0;
    if (pendingSeconds_ || prerollStale_ || (loopCount_ < 0 && !shared_->segmentMode.load()))
        seekNow(pendingSeconds_ ? *pendingSeconds_ : currentSeconds(), true);
    shared_->playSteadyNanoseconds.store(steadyNanoseconds());
    shared_->firstBufferSteadyNanoseconds.store(0);
    shared_->awaitingFirstBuffer.store(true);
    gst_element_set_state(shared_->pipeline.get(), GST_STATE_PLAYING);
    playing_ = true;
}

void GstSoundFilePlayer::pause() {
    if (stopped_ || !playing_) return;
    frozenSeconds_ = currentSeconds();
    gst_element_set_state(shared_->pipeline.get(), GST_STATE_PAUSED);
    playing_ = false;
}

bool GstSoundFilePlayer::isPlaying() const { return playing_ && !stopped_ && !shared_->ended.load(); }

double GstSoundFilePlayer::volume() const { return fade_.levelAt(shared_->processedNanoseconds.load()); }

void GstSoundFilePlayer::setVolume(double level, double fadeSeconds) {
    if (stopped_) return;
    level = std::clamp(std::isfinite(level) ? level : 0.0, 0.0, 1.0);
    const std::int64_t now = shared_->processedNanoseconds.load();
    Fade next{level, level, now, now};
    if (fadeSeconds > 0) next = Fade{fade_.levelAt(now), level, now, now + toNanoseconds(fadeSeconds)};
    installFade(next);
    // The prerolled audio already passed `volume` at the old level.
    if (!playing_) prerollStale_ = true;
}

void GstSoundFilePlayer::installFade(const Fade& fade) {
    fade_ = fade;
    GstControlSource* source = gst_interpolation_control_source_new();
    g_object_set(source, "mode", GST_INTERPOLATION_MODE_LINEAR, nullptr);
    auto* points = GST_TIMED_VALUE_CONTROL_SOURCE(source);
    // A point at 0 covers every buffer already on its way through `volume`;
    // a binding with no value for a buffer is an error.
    gst_timed_value_control_source_set(points, 0, fade.fromLevel);
    if (fade.endNanoseconds > fade.startNanoseconds) {
        gst_timed_value_control_source_set(points, static_cast<GstClockTime>(fade.startNanoseconds), fade.fromLevel);
        gst_timed_value_control_source_set(points, static_cast<GstClockTime>(fade.endNanoseconds), fade.toLevel);
    } else {
        gst_timed_value_control_source_set(points, 0, fade.toLevel);
    }
    // Replacing the whole binding is atomic for the streaming thread.
    gst_object_add_control_binding(GST_OBJECT(shared_->volume.get()),
                                   gst_direct_control_binding_new_absolute(GST_OBJECT(shared_->volume.get()),
                                                                           "volume", source));
    gst_object_unref(source);
}

void GstSoundFilePlayer::setLoopCount(int count) {
    loopCount_ = count < 0 ? -1 : count;
    shared_->looping.store(loopCount_ < 0);
    // Looping needs a segment to loop; a pass already under way gets one.
    if (loopCount_ < 0 && playing_ && !shared_->segmentMode.load()) seekNow(currentSeconds(), true);
}

bool GstSoundFilePlayer::setDevice(const std::optional<std::string>& deviceUID) {
    if (stopped_) return false;
    // A device that is gone leaves the sound on the system output.
    const bool found = !deviceUID || devices_ == nullptr || devices_->isPresent(*deviceUID);
    gst::pointSinkAt(shared_->sink.get(), found ? deviceUID : std::nullopt, systemOutputID(devices_));
    return found;
}

void GstSoundFilePlayer::updateMeters() {
    for (int channel = 0; channel < 2; ++channel) meteredDecibels_[channel] = shared_->rmsDecibels[channel].load();
}

double GstSoundFilePlayer::averagePowerDecibels(int channel) const {
    if (!isPlaying()) return silentDecibels;
    return meteredDecibels_[std::clamp(channel, 0, 1)];
}

void GstSoundFilePlayer::stop() {
    if (stopped_) return;
    frozenSeconds_ = currentSeconds();
    stopped_ = true;
    double drainSeconds = 0;
    if (playing_ && !shared_->ended.load()) {
        // Never cut: a fade to silence already running is heard out, and
        // anything else fades in 10 ms; the sink's buffer is heard too.
        const std::int64_t now = shared_->processedNanoseconds.load();
        if (fade_.toLevel > 0)
            installFade(Fade{fade_.levelAt(now), 0, now, now + toNanoseconds(stopFadeSeconds)});
        drainSeconds = static_cast<double>(std::max<std::int64_t>(fade_.endNanoseconds - now, 0)) /
                           nanosecondsPerSecond +
                       shared_->sinkBufferSeconds + 0.05;
    }
    playing_ = false;
    finishStop(drainSeconds);
}

void GstSoundFilePlayer::finishStop(double drainSeconds) {
    shared_->watch.remove();
    gst::GstWorkers::shared().retire(std::move(shared_->pipeline), drainSeconds);
    // The probes hold the shared state, so it must not hold the pipeline.
    shared_->volume = Element();
    shared_->sink = Element();
    shared_->convertSinkPad = GstRef<GstPad>();
}

std::optional<double> GstSoundFilePlayer::secondsToFirstBufferAfterPlay() const {
    const std::int64_t first = shared_->firstBufferSteadyNanoseconds.load();
    if (first == 0) return std::nullopt;
    return static_cast<double>(first - shared_->playSteadyNanoseconds.load()) / nanosecondsPerSecond;
}

int GstSoundFilePlayer::lateBufferReports() const { return shared_->lateBufferReports.load(); }

std::string GstSoundFilePlayer::failure() const {
    std::lock_guard lock(shared_->failureMutex);
    return shared_->failure;
}

std::string GstSoundFilePlayer::currentDevice() const {
    if (!shared_->sink) return {};
    gchar* name = nullptr;
    g_object_get(shared_->sink.get(), "current-device", &name, nullptr);
    gst::GCharPtr owned(name);
    return gst::text(name);
}

} // namespace velarion
