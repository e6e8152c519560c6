#include "Platform/Pictures/BackdropLoopEncoder.h"

#include "Platform/Gst/GstHandles.h"

#include <gst/app/gstappsrc.h>

#include <algorithm>
#include <array>
#include <optional>

namespace velarion {

namespace {

using Bus = gst::GstRef<GstBus>;
using Caps = gst::GstMiniRef<GstCaps>;

// Frames the source may hold before drawing waits for the encoder.
constexpr int queuedFrames = 4;
constexpr GstClockTime busPollNanoseconds = 10 * GST_MSECOND;

// Stopping the pipeline on every way out releases the file and the threads.
struct PipelineStopper {
    GstElement* pipeline;
    ~PipelineStopper() { gst_element_set_state(pipeline, GST_STATE_NULL); }
};

// QImage's RGB32 is 0xffRRGGBB in native words.
constexpr const char* rawFormat = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? "BGRx" : "xRGB";

std::string errorText(GstMessage* message) {
    GError* raw = nullptr;
    gchar* debug = nullptr;
    gst_message_parse_error(message, &raw, &debug);
    gst::GErrorPtr error(raw);
    gst::GCharPtr debugText(debug);
    return error ? gst::text(error->message) : std::string("the encoder stopped");
}

// The first error waiting on the bus, waiting up to `timeout` for one.
std::optional<std::string> pendingError(GstBus* bus, GstClockTime timeout) {
    gst::Message message =
        gst::Message::adopt(gst_bus_timed_pop_filtered(bus, timeout, GST_MESSAGE_ERROR));
    if (!message) return std::nullopt;
    return errorText(message.get());
}

// Hands the picture's pixels to GStreamer without a copy; the buffer frees
// the picture when the encoder is done with it.
GstBuffer* wrap(QImage image) {
    auto* held = new QImage(std::move(image));
    const auto size = static_cast<gsize>(held->sizeInBytes());
    return gst_buffer_new_wrapped_full(
        GST_MEMORY_FLAG_READONLY, const_cast<uchar*>(held->constBits()), size, 0, size, held,
        [](gpointer picture) { delete static_cast<QImage*>(picture); });
}

EncodeResult failure(std::string error) { return {EncodeEnd::failed, std::move(error)}; }

} // namespace

int loopBitrateKbps(int width, int height, int fps) {
    // 0.09 bit per pixel per frame, 2.5 Mbit/s at 1280×720×30: luma stays
    // above 50 dB against a near-lossless encode, so the glows don't band.
    const double kbps = double(width) * height * fps * 0.09 / 1000.0;
    return std::clamp(static_cast<int>(kbps), 200, 20'000);
}

EncodeResult encodeLoop(const std::filesystem::path& file, const LoopEncoding& settings,
                        const std::function<QImage(int)>& drawFrame,
                        const std::function<void(int)>& pushed, std::stop_token stop) {
    gst::ensureInitialized();
    constexpr std::array factories{"appsrc",  "videoconvert", "capsfilter",
                                   "x264enc", "qtmux",        "filesink"};
    std::array<gst::Element, factories.size()> elements;
    for (std::size_t i = 0; i < factories.size(); ++i) {
        elements[i] = gst::makeElement(factories[i]);
        if (!elements[i])
            return failure(std::string("the GStreamer element ") + factories[i] + " isn't installed");
    }
    const auto& [source, convert, filter, encoder, muxer, sink] = elements;

    const int frameBytes = settings.width * settings.height * 4;
    Caps rawCaps = Caps::adopt(gst_caps_new_simple(
        "video/x-raw", "format", G_TYPE_STRING, rawFormat, "width", G_TYPE_INT, settings.width,
        "height", G_TYPE_INT, settings.height, "framerate", GST_TYPE_FRACTION, settings.fps, 1,
        "pixel-aspect-ratio", GST_TYPE_FRACTION, 1, 1, nullptr));
    g_object_set(source.get(), "caps", rawCaps.get(), "format", GST_FORMAT_TIME, "is-live", FALSE,
                 "block", FALSE, "max-bytes", guint64(frameBytes) * queuedFrames, nullptr);
    // 4:2:0 so that every player can decode it; x264 would otherwise keep 4:4:4.
    Caps yuvCaps = Caps::adopt(gst_caps_from_string("video/x-raw,format=I420"));
    g_object_set(filter.get(), "caps", yuvCaps.get(), nullptr);
    g_object_set(encoder.get(), "bitrate", guint(settings.bitrateKbps), "key-int-max",
                 guint(std::max(settings.fps * 2, 1)), nullptr);
    // Soft gradients gain nothing from the slower searches: against a
    // near-lossless encode superfast scores within a dB of veryfast in half
    // the time, and unlike ultrafast it keeps CABAC and the deblocking filter.
    gst_util_set_object_arg(G_OBJECT(encoder.get()), "speed-preset", "superfast");
    g_object_set(sink.get(), "location", file.c_str(), nullptr);

    gst::Element pipeline = gst::Element::adopt(gst_pipeline_new("backdrop-loop"));
    for (const gst::Element& element : elements) gst_bin_add(GST_BIN(pipeline.get()), element.get());
    if (!gst_element_link_many(source.get(), convert.get(), filter.get(), encoder.get(),
                               muxer.get(), sink.get(), nullptr))
        return failure("the encoding pipeline couldn't be put together");

    Bus bus = Bus::adopt(gst_element_get_bus(pipeline.get()));
    PipelineStopper stopper{pipeline.get()};
    if (gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE)
        return failure(pendingError(bus.get(), 0).value_or("the encoder couldn't start"));

    auto* appsrc = GST_APP_SRC(source.get());
    const guint64 roomBytes = guint64(frameBytes) * queuedFrames;
    for (int index = 0; index < settings.frameCount; ++index) {
        while (gst_app_src_get_current_level_bytes(appsrc) >= roomBytes) {
            if (stop.stop_requested()) return {EncodeEnd::cancelled, {}};
            if (auto error = pendingError(bus.get(), busPollNanoseconds)) return failure(*error);
        }
        if (stop.stop_requested()) return {EncodeEnd::cancelled, {}};
        if (auto error = pendingError(bus.get(), 0)) return failure(*error);

        QImage picture = drawFrame(index);
        if (picture.width() != settings.width || picture.height() != settings.height ||
            picture.format() != QImage::Format_RGB32)
            return failure("a frame came out at the wrong size");
        GstBuffer* buffer = wrap(std::move(picture));
        const GstClockTime start = gst_util_uint64_scale(index, GST_SECOND, settings.fps);
        GST_BUFFER_PTS(buffer) = start;
        GST_BUFFER_DTS(buffer) = start;
        GST_BUFFER_DURATION(buffer) =
            gst_util_uint64_scale(index + 1, GST_SECOND, settings.fps) - start;
        if (gst_app_src_push_buffer(appsrc, buffer) != GST_FLOW_OK)
            return failure(pendingError(bus.get(), GST_SECOND).value_or("the encoder stopped taking frames"));
        if (pushed) pushed(index + 1);
    }
    gst_app_src_end_of_stream(appsrc);

    // The muxer writes the file's index at end of stream: only when that has
    // reached the sink is the file whole.
    for (;;) {
        if (stop.stop_requested()) return {EncodeEnd::cancelled, {}};
        gst::Message message = gst::Message::adopt(gst_bus_timed_pop_filtered(
            bus.get(), busPollNanoseconds * 5,
            static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR)));
        if (!message) continue;
        if (GST_MESSAGE_TYPE(message.get()) == GST_MESSAGE_EOS) return {EncodeEnd::finished, {}};
        return failure(errorText(message.get()));
    }
}

} // namespace velarion
