#include "Platform/NDI/CNDIBridge.h"

#include "Platform/NDI/NDIRuntimeABI.h"

#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace {

struct DlClose {
    void operator()(void* handle) const {
        if (handle) dlclose(handle);
    }
};
using LibraryHandle = std::unique_ptr<void, DlClose>;

struct Runtime {
    NDIlib_initialize_f initialize = nullptr;
    NDIlib_version_f version = nullptr;
    NDIlib_find_create_v2_f findCreate = nullptr;
    NDIlib_find_destroy_f findDestroy = nullptr;
    NDIlib_find_get_current_sources_f findCurrent = nullptr;
    NDIlib_find_wait_for_sources_f findWait = nullptr;
    NDIlib_send_create_f sendCreate = nullptr;
    NDIlib_send_destroy_f sendDestroy = nullptr;
    NDIlib_send_send_video_v2_f sendVideo = nullptr;
    NDIlib_send_send_audio_v2_f sendAudio = nullptr;
    NDIlib_send_get_source_name_f sendSourceName = nullptr;
    NDIlib_send_get_no_connections_f sendConnections = nullptr;
    NDIlib_recv_create_v3_f recvCreate = nullptr;
    NDIlib_recv_destroy_f recvDestroy = nullptr;
    NDIlib_recv_capture_v2_f recvCapture = nullptr;
    NDIlib_recv_free_video_v2_f recvFreeVideo = nullptr;
    NDIlib_recv_free_audio_v2_f recvFreeAudio = nullptr;
    NDIlib_recv_free_metadata_f recvFreeMetadata = nullptr;
    NDIlib_recv_get_no_connections_f recvConnections = nullptr;
    NDIlib_recv_get_performance_f recvPerformance = nullptr;
};

std::mutex loadMutex;
LibraryHandle library; // guarded by loadMutex; never released once loaded
Runtime runtime;       // written under loadMutex before `loaded` turns true
std::atomic<bool> loaded{false};

void writeError(char* error, std::size_t size, const std::string& text) {
    if (error && size > 0) std::snprintf(error, size, "%s", text.c_str());
}

template <typename F>
bool bind(void* handle, F& slot, const char* symbol, std::string& missing) {
    if (!missing.empty()) return false;
    void* address = dlsym(handle, symbol);
    if (!address) {
        missing = symbol;
        return false;
    }
    slot = reinterpret_cast<F>(address);
    return true;
}

// Straight colour by alpha and premultiplied colour: the rounded c×255/a,
// limited to 255, and 0 where alpha is 0.
const std::vector<std::uint8_t>& straightTable() {
    static const std::vector<std::uint8_t> table = [] {
        std::vector<std::uint8_t> values(256 * 256, 0);
        for (unsigned a = 1; a < 256; ++a)
            for (unsigned c = 0; c < 256; ++c) values[a * 256 + c] = static_cast<std::uint8_t>(std::min(255u, (c * 255 + a / 2) / a));
        return values;
    }();
    return table;
}

} // namespace

struct vela_ndi_finder {
    NDIlib_find_instance_t instance = nullptr;
    const NDIlib_source_t* sources = nullptr;
    std::uint32_t count = 0;
};

struct vela_ndi_sender {
    NDIlib_send_instance_t instance = nullptr;
    std::vector<std::uint8_t> scratch; // straight-alpha copies, grown as needed
};

struct vela_ndi_receiver {
    NDIlib_recv_instance_t instance = nullptr;
    NDIlib_video_frame_v2_t video{};
    NDIlib_audio_frame_v2_t audio{};
};

extern "C" {

int vela_ndi_load(const char* path, char* error, std::size_t size) {
    std::lock_guard lock(loadMutex);
    if (library) return 1;
    dlerror();
    LibraryHandle handle(dlopen(path, RTLD_NOW | RTLD_LOCAL));
    if (!handle) {
        const char* text = dlerror();
        writeError(error, size, text ? text : "the library could not be opened");
        return 0;
    }
    Runtime bound;
    std::string missing;
    void* h = handle.get();
    bind(h, bound.initialize, "NDIlib_initialize", missing);
    bind(h, bound.version, "NDIlib_version", missing);
    bind(h, bound.findCreate, "NDIlib_find_create_v2", missing);
    bind(h, bound.findDestroy, "NDIlib_find_destroy", missing);
    bind(h, bound.findCurrent, "NDIlib_find_get_current_sources", missing);
    bind(h, bound.findWait, "NDIlib_find_wait_for_sources", missing);
    bind(h, bound.sendCreate, "NDIlib_send_create", missing);
    bind(h, bound.sendDestroy, "NDIlib_send_destroy", missing);
    bind(h, bound.sendVideo, "NDIlib_send_send_video_v2", missing);
    bind(h, bound.sendAudio, "NDIlib_send_send_audio_v2", missing);
    bind(h, bound.sendSourceName, "NDIlib_send_get_source_name", missing);
    bind(h, bound.sendConnections, "NDIlib_send_get_no_connections", missing);
    bind(h, bound.recvCreate, "NDIlib_recv_create_v3", missing);
    bind(h, bound.recvDestroy, "NDIlib_recv_destroy", missing);
    bind(h, bound.recvCapture, "NDIlib_recv_capture_v2", missing);
    bind(h, bound.recvFreeVideo, "NDIlib_recv_free_video_v2", missing);
    bind(h, bound.recvFreeAudio, "NDIlib_recv_free_audio_v2", missing);
    bind(h, bound.recvFreeMetadata, "NDIlib_recv_free_metadata", missing);
    bind(h, bound.recvConnections, "NDIlib_recv_get_no_connections", missing);
    bind(h, bound.recvPerformance, "NDIlib_recv_get_performance", missing);
    if (!missing.empty()) {
        writeError(error, size, "The NDI runtime is missing " + missing + ".");
        return 0;
    }
    if (!bound.initialize()) {
        // Most often a processor the runtime doesn't support.
        writeError(error, size, "The NDI runtime could not start on this computer.");
        return 0;
    }
    runtime = bound;
    library = std::move(handle);
    loaded.store(true, std::memory_order_release);
    return 1;
}

int vela_ndi_is_loaded(void) { return loaded.load(std::memory_order_acquire) ? 1 : 0; }

const char* vela_ndi_version(void) {
    if (!vela_ndi_is_loaded()) return nullptr;
    return runtime.version();
}

vela_ndi_finder* vela_ndi_find_create(void) {
    if (!vela_ndi_is_loaded()) return nullptr;
    NDIlib_find_create_t settings{true, nullptr, nullptr};
    NDIlib_find_instance_t instance = runtime.findCreate(&settings);
    if (!instance) return nullptr;
    auto* finder = new vela_ndi_finder;
    finder->instance = instance;
    return finder;
}

void vela_ndi_find_destroy(vela_ndi_finder* finder) {
    if (!finder) return;
    runtime.findDestroy(finder->instance);
    delete finder;
}

int vela_ndi_find_sources(vela_ndi_finder* finder, std::uint32_t timeout_ms) {
    if (!finder) return 0;
    if (timeout_ms != 0) runtime.findWait(finder->instance, timeout_ms);
    finder->count = 0;
    finder->sources = runtime.findCurrent(finder->instance, &finder->count);
    if (!finder->sources) finder->count = 0;
    return static_cast<int>(finder->count);
}

const char* vela_ndi_find_name(vela_ndi_finder* finder, int index) {
    if (!finder || index < 0 || static_cast<std::uint32_t>(index) >= finder->count) return nullptr;
    return finder->sources[index].p_ndi_name;
}

const char* vela_ndi_find_url(vela_ndi_finder* finder, int index) {
    if (!finder || index < 0 || static_cast<std::uint32_t>(index) >= finder->count) return nullptr;
    return finder->sources[index].p_url_address;
}

vela_ndi_sender* vela_ndi_send_create(const char* name) {
    if (!vela_ndi_is_loaded() || !name || !*name) return nullptr;
    NDIlib_send_create_t settings{name, nullptr, false, false};
    NDIlib_send_instance_t instance = runtime.sendCreate(&settings);
    if (!instance) return nullptr;
    auto* sender = new vela_ndi_sender;
    sender->instance = instance;
    return sender;
}

void vela_ndi_send_destroy(vela_ndi_sender* sender) {
    if (!sender) return;
    runtime.sendDestroy(sender->instance);
    delete sender;
}

const char* vela_ndi_send_name(vela_ndi_sender* sender) {
    if (!sender) return nullptr;
    const NDIlib_source_t* source = runtime.sendSourceName(sender->instance);
    return source ? source->p_ndi_name : nullptr;
}

const char* vela_ndi_send_url(vela_ndi_sender* sender) {
    if (!sender) return nullptr;
    const NDIlib_source_t* source = runtime.sendSourceName(sender->instance);
    return source ? source->p_url_address : nullptr;
}

int vela_ndi_send_connections(vela_ndi_sender* sender) {
    if (!sender) return 0;
    return runtime.sendConnections(sender->instance, 0);
}

int vela_ndi_send_video(vela_ndi_sender* sender, const std::uint8_t* pixels, int width, int height, int stride,
                        int numerator, int denominator, int alpha) {
    if (!sender || !pixels || width <= 0 || height <= 0 || width % 2 != 0 || width > 8192 || height > 8192)
        return 0;
    if (stride < width * 4 || numerator < 1 || numerator > 120000 || denominator < 1 || denominator > 120000)
        return 0;
    const double rate = static_cast<double>(numerator) / denominator;
    if (rate < 1 || rate > 120 || alpha < 0 || alpha > 2) return 0;
    NDIlib_video_frame_v2_t frame{};
    frame.xres = width;
    frame.yres = height;
    frame.FourCC = alpha == 0 ? NDIlib_FourCC_video_type_BGRX : NDIlib_FourCC_video_type_BGRA;
    frame.frame_rate_N = numerator;
    frame.frame_rate_D = denominator;
    frame.picture_aspect_ratio = static_cast<float>(width) / static_cast<float>(height);
    frame.frame_format_type = NDIlib_frame_format_type_progressive;
    frame.timecode = NDIlib_send_timecode_synthesize;
    frame.line_stride_in_bytes = stride;
    frame.p_data = const_cast<std::uint8_t*>(pixels);
    if (alpha == 1) {
        const std::size_t bytes = static_cast<std::size_t>(width) * 4 * static_cast<std::size_t>(height);
        if (sender->scratch.size() < bytes) sender->scratch.resize(bytes);
        const auto& table = straightTable();
        for (int y = 0; y < height; ++y) {
            const std::uint8_t* in = pixels + static_cast<std::ptrdiff_t>(y) * stride;
            std::uint8_t* out = sender->scratch.data() + static_cast<std::size_t>(y) * width * 4;
            for (int x = 0; x < width; ++x, in += 4, out += 4) {
                const unsigned a = in[3];
                if (a == 255) {
                    std::memcpy(out, in, 4);
                    continue;
                }
                const std::uint8_t* row = table.data() + a * 256;
                out[0] = row[in[0]], out[1] = row[in[1]], out[2] = row[in[2]], out[3] = static_cast<std::uint8_t>(a);
            }
        }
        frame.p_data = sender->scratch.data();
        frame.line_stride_in_bytes = width * 4;
    }
    runtime.sendVideo(sender->instance, &frame);
    return 1;
}

int vela_ndi_send_audio(vela_ndi_sender* sender, const float* planar, int sampleRate, int channels,
                        int samplesPerChannel) {
    if (!sender || !planar || sampleRate <= 0 || channels <= 0 || samplesPerChannel <= 0) return 0;
    NDIlib_audio_frame_v2_t frame{};
    frame.sample_rate = sampleRate;
    frame.no_channels = channels;
    frame.no_samples = samplesPerChannel;
    frame.timecode = NDIlib_send_timecode_synthesize;
    frame.p_data = const_cast<float*>(planar);
    frame.channel_stride_in_bytes = samplesPerChannel * static_cast<int>(sizeof(float));
    runtime.sendAudio(sender->instance, &frame);
    return 1;
}

vela_ndi_receiver* vela_ndi_recv_create(const char* name, const char* url) {
    if (!vela_ndi_is_loaded() || !name || !*name) return nullptr;
    NDIlib_recv_create_v3_t settings{};
    settings.source_to_connect_to.p_ndi_name = name;
    settings.source_to_connect_to.p_url_address = url && *url ? url : nullptr;
    settings.color_format = NDIlib_recv_color_format_BGRX_BGRA;
    settings.bandwidth = NDIlib_recv_bandwidth_highest;
    settings.allow_video_fields = false;
    settings.p_ndi_recv_name = "Velarion";
    NDIlib_recv_instance_t instance = runtime.recvCreate(&settings);
    if (!instance) return nullptr;
    auto* receiver = new vela_ndi_receiver;
    receiver->instance = instance;
    return receiver;
}

void vela_ndi_recv_destroy(vela_ndi_receiver* receiver) {
    if (!receiver) return;
    runtime.recvDestroy(receiver->instance);
    delete receiver;
}

int vela_ndi_recv_capture(vela_ndi_receiver* receiver, vela_ndi_capture* capture, std::uint32_t timeout_ms) {
    if (!receiver || !capture) return vela_ndi_capture_none;
    std::memset(capture, 0, sizeof *capture);
    NDIlib_metadata_frame_t metadata{};
    const NDIlib_frame_type_e kind =
        runtime.recvCapture(receiver->instance, &receiver->video, &receiver->audio, &metadata, timeout_ms);
    switch (kind) {
    case NDIlib_frame_type_video: {
        const NDIlib_video_frame_v2_t& video = receiver->video;
        capture->kind = vela_ndi_capture_video;
        capture->holdsVideo = 1;
        capture->pixels = video.p_data;
        capture->width = video.xres;
        capture->height = video.yres;
        capture->stride = video.line_stride_in_bytes;
        capture->pixelFormat = video.FourCC == NDIlib_FourCC_video_type_BGRA   ? vela_ndi_pixels_bgra
                               : video.FourCC == NDIlib_FourCC_video_type_BGRX ? vela_ndi_pixels_bgrx
                                                                               : vela_ndi_pixels_other;
        capture->rateNumerator = video.frame_rate_N;
        capture->rateDenominator = video.frame_rate_D;
        capture->timecode = video.timecode;
        return capture->kind;
    }
    case NDIlib_frame_type_audio: {
        const NDIlib_audio_frame_v2_t& audio = receiver->audio;
        capture->kind = vela_ndi_capture_audio;
        capture->holdsAudio = 1;
        capture->samples = audio.p_data;
        capture->sampleRate = audio.sample_rate;
        capture->channels = audio.no_channels;
        capture->samplesPerChannel = audio.no_samples;
        capture->channelStrideBytes = audio.channel_stride_in_bytes;
        capture->timecode = audio.timecode;
        return capture->kind;
    }
    case NDIlib_frame_type_metadata:
        runtime.recvFreeMetadata(receiver->instance, &metadata);
        return vela_ndi_capture_none;
    case NDIlib_frame_type_error:
        capture->kind = vela_ndi_capture_disconnected;
        return capture->kind;
    default:
        return vela_ndi_capture_none;
    }
}

void vela_ndi_recv_release(vela_ndi_receiver* receiver, vela_ndi_capture* capture) {
    if (!receiver || !capture) return;
    if (capture->holdsVideo) runtime.recvFreeVideo(receiver->instance, &receiver->video);
    if (capture->holdsAudio) runtime.recvFreeAudio(receiver->instance, &receiver->audio);
    capture->holdsVideo = capture->holdsAudio = 0;
}

int vela_ndi_recv_connections(vela_ndi_receiver* receiver) {
    return receiver ? runtime.recvConnections(receiver->instance) : 0;
}

std::int64_t vela_ndi_recv_dropped_video(vela_ndi_receiver* receiver) {
    if (!receiver) return 0;
    NDIlib_recv_performance_t total{}, dropped{};
    runtime.recvPerformance(receiver->instance, &total, &dropped);
    return dropped.video_frames;
}

void vela_ndi_copy_premultiplied(std::uint8_t* target, int targetStride, const std::uint8_t* source,
                                 int sourceStride, int width, int height, int sourceIsBGRX) {
    for (int y = 0; y < height; ++y) {
        const std::uint8_t* in = source + static_cast<std::ptrdiff_t>(y) * sourceStride;
        std::uint8_t* out = target + static_cast<std::ptrdiff_t>(y) * targetStride;
        if (sourceIsBGRX) {
            for (int x = 0; x < width; ++x, in += 4, out += 4) {
                out[0] = in[0], out[1] = in[1], out[2] = in[2], out[3] = 255;
            }
            continue;
        }
        for (int x = 0; x < width; ++x, in += 4, out += 4) {
            const unsigned a = in[3];
            for (int c = 0; c < 3; ++c) out[c] = static_cast<std::uint8_t>((in[c] * a + 127) / 255);
            out[3] = static_cast<std::uint8_t>(a);
        }
    }
}

} // extern "C"
