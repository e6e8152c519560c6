#include "Platform/NDI/NDIAudioPlayback.h"

#include "Platform/Gst/GstWorkers.h"

#include <gst/app/gstappsrc.h>

#include <algorithm>
#include <cstring>

namespace velarion {

NDIAudioPlayback::NDIAudioPlayback(std::optional<std::string> deviceUID, double volume)
    : deviceUID_(std::move(deviceUID)), volume_(std::clamp(volume, 0.0, 1.0)) {
    gst::ensureInitialized();
}

NDIAudioPlayback::~NDIAudioPlayback() { stop(); }

void NDIAudioPlayback::stop() {
    if (stopped_) return;
    stopped_ = true;
    takeDown();
}

void NDIAudioPlayback::takeDown() {
    if (pipeline_) gst::GstWorkers::shared().retire(std::move(pipeline_), 0);
    pipeline_ = {}, source_ = {}, level_ = {};
    sampleRate_ = channels_ = 0;
}

bool NDIAudioPlayback::prepare(int sampleRate, int channels) {
    takeDown();
    ++generation_;
    gst::Element pipeline = gst::makeElement("pipeline");
    gst::Element source = gst::makeElement("appsrc");
    gst::Element convert = gst::makeElement("audioconvert");
    gst::Element resample = gst::makeElement("audioresample");
    gst::Element level = gst::makeElement("volume");
    gst::Element sink = gst::makeElement("pulsesink");
    if (!pipeline || !source || !convert || !resample || !level || !sink) {
        lastError_ = openFailedWords;
        return false;
    }
    GstCaps* caps = gst_caps_new_simple("audio/x-raw", "format", G_TYPE_STRING, "F32LE", "layout", G_TYPE_STRING,
                                        "interleaved", "rate", G_TYPE_INT, sampleRate, "channels", G_TYPE_INT,
                                        channels, nullptr);
    // A live source that drops what arrives while a quarter second waits.
    g_object_set(source.get(), "caps", caps, "format", GST_FORMAT_TIME, "is-live", TRUE, "do-timestamp", TRUE,
                 "max-time", static_cast<guint64>(bufferSeconds * GST_SECOND), "leaky-type", 1 /* upstream */,
                 nullptr);
    gst_caps_unref(caps);
    g_object_set(level.get(), "volume", volume_, nullptr);
    g_object_set(sink.get(), "buffer-time", static_cast<gint64>(100000), "device",
                 deviceUID_ ? deviceUID_->c_str() : nullptr, nullptr);
    gst_bin_add_many(GST_BIN(pipeline.get()), source.get(), convert.get(), resample.get(), level.get(), sink.get(),
                     nullptr);
    if (!gst_element_link_many(source.get(), convert.get(), resample.get(), level.get(), sink.get(), nullptr) ||
        gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) {
        gst::GstWorkers::shared().retire(std::move(pipeline), 0);
        lastError_ = openFailedWords;
        return false;
    }
    pipeline_ = std::move(pipeline), source_ = std::move(source), level_ = std::move(level);
    sampleRate_ = sampleRate, channels_ = channels;
    lastError_.reset();
    return true;
}

void NDIAudioPlayback::append(const NDIAudioFrame& frame) {
    if (stopped_ || paused_) return;
    if (frame.samplesPerChannel <= 0 || !frame.isWellFormed()) {
        lastError_ = invalidWords;
        return;
    }
    if (frame.durationSeconds() > bufferSeconds) {
        lastError_ = oversizedWords;
        return;
    }
    if ((frame.sampleRate != sampleRate_ || frame.channels != channels_) && !prepare(frame.sampleRate, frame.channels))
        return;
    const auto count = static_cast<std::size_t>(frame.samplesPerChannel) * static_cast<std::size_t>(frame.channels);
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, count * sizeof(float), nullptr);
    GstMapInfo map;
    if (!buffer || !gst_buffer_map(buffer, &map, GST_MAP_WRITE)) {
        if (buffer) gst_buffer_unref(buffer);
        lastError_ = bufferWords;
        return;
    }
    auto* out = reinterpret_cast<float*>(map.data);
    for (int c = 0; c < frame.channels; ++c) {
        const float* in = frame.samples.data() + static_cast<std::size_t>(c) * frame.samplesPerChannel;
        for (int i = 0; i < frame.samplesPerChannel; ++i) out[static_cast<std::size_t>(i) * frame.channels + c] = in[i];
    }
    gst_buffer_unmap(buffer, &map);
    gst_app_src_push_buffer(GST_APP_SRC(source_.get()), buffer); // takes the buffer
}

void NDIAudioPlayback::setVolume(double level) {
    volume_ = std::clamp(level, 0.0, 1.0);
    if (level_) g_object_set(level_.get(), "volume", volume_, nullptr);
}

void NDIAudioPlayback::setDevice(const std::optional<std::string>& deviceUID) {
    if (deviceUID == deviceUID_) return;
    deviceUID_ = deviceUID;
    // The next frame builds the path on the new output.
    if (pipeline_) takeDown();
}

} // namespace velarion
