#include "Platform/NDI/NDIReceiver.h"

#include "LiveModel/Shared.h"
#include "Platform/NDI/CNDIBridge.h"
#include "Platform/NDI/NDILibrary.h"

#include <chrono>
#include <cmath>
#include <deque>
#include <mutex>
#include <thread>

namespace velarion {

namespace {

struct ReceiverClose {
    void operator()(vela_ndi_receiver* receiver) const { vela_ndi_recv_destroy(receiver); }
};
using ReceiverHandle = std::unique_ptr<vela_ndi_receiver, ReceiverClose>;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t captureTimeoutMs = 50;
constexpr double healthSeconds = 0.25;
constexpr double neverArrivedSeconds = 3;

} // namespace

struct NDIReceiver::Worker {
    mutable std::mutex lock;
    ReceiverHandle receiver;
    std::vector<std::shared_ptr<StillPixels>> pool; // worker only
    int poolWidth = 0, poolHeight = 0;
    Clock::time_point lastHealthCheck = Clock::now();
    Clock::time_point started = Clock::now();
    bool receivedAnything = false;
    bool hasVideo = false;
    bool closed = false;
    NDIReceiverStatus snapshot;
    std::optional<NDIReceivedVideo> latestVideo;
    bool latestTaken = true;
    std::deque<NDIAudioFrame> audioFrames;
    double audioSeconds = 0;

    void run();
    void video(const vela_ndi_capture& capture);
    void audio(const vela_ndi_capture& capture);
    void updateHealth();
    std::shared_ptr<StillPixels> buffer(int width, int height);
};

NDIReceiver::NDIReceiver(NDISource source) : source_(std::move(source)) {
    if (source_.name.empty()) throw NDIError(NDIError::Case::invalidSource, {});
    const NDIRuntimeStatus runtime = NDILibrary::status();
    if (!runtime.isAvailable) throw NDIError(NDIError::Case::unavailable, runtime.message);
    ReceiverHandle receiver(vela_ndi_recv_create(source_.name.c_str(), source_.url ? source_.url->c_str() : nullptr));
    if (!receiver) throw NDIError(NDIError::Case::creationFailed, creationWords);
    worker_ = std::make_shared<Worker>();
    worker_->receiver = std::move(receiver);
    std::thread([worker = worker_] { worker->run(); }).detach();
}

NDIReceiver::~NDIReceiver() { close(); }

void NDIReceiver::close() {
    std::lock_guard guard(worker_->lock);
    worker_->closed = true;
    worker_->snapshot.phase = NDIConnectionPhase::stopped;
}

NDIReceiverStatus NDIReceiver::status() const {
    std::lock_guard guard(worker_->lock);
    return worker_->snapshot;
}

std::optional<NDIReceivedVideo> NDIReceiver::latestVideo() const {
    std::lock_guard guard(worker_->lock);
    worker_->latestTaken = true;
    return worker_->latestVideo;
}

std::vector<NDIAudioFrame> NDIReceiver::takeAudio() {
    std::lock_guard guard(worker_->lock);
    std::vector<NDIAudioFrame> taken(std::make_move_iterator(worker_->audioFrames.begin()),
                                     std::make_move_iterator(worker_->audioFrames.end()));
    worker_->audioFrames.clear();
    worker_->audioSeconds = 0;
    return taken;
}

void NDIReceiver::Worker::run() {
    while (true) {
        {
            std::lock_guard guard(lock);
            if (closed) break;
        }
        vela_ndi_capture capture{};
        const int kind = vela_ndi_recv_capture(receiver.get(), &capture, captureTimeoutMs);
        if (kind == vela_ndi_capture_video) video(capture);
        else if (kind == vela_ndi_capture_audio) audio(capture);
        else if (kind == vela_ndi_capture_disconnected) {
            std::lock_guard guard(lock);
            if (!closed) snapshot.phase = NDIConnectionPhase::disconnected, snapshot.message = disconnectedWords;
        }
        vela_ndi_recv_release(receiver.get(), &capture);
        updateHealth();
    }
    receiver.reset();
}

std::shared_ptr<StillPixels> NDIReceiver::Worker::buffer(int width, int height) {
    if (width != poolWidth || height != poolHeight) {
        pool.clear();
        poolWidth = width, poolHeight = height;
    }
    for (const auto& pixels : pool)
        if (isSoleOwner(pixels)) return pixels;
    auto pixels = std::make_shared<StillPixels>();
    pixels->width = width, pixels->height = height;
    pixels->bgra.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    if (pool.size() < 4) pool.push_back(pixels);
    return pixels;
}

void NDIReceiver::Worker::video(const vela_ndi_capture& capture) {
    const bool usable = capture.pixels && capture.width > 0 && capture.height > 0 && capture.width <= 16384 &&
                        capture.height <= 16384 && capture.stride >= capture.width * 4;
    const char* problem = !usable ? sizeWords : capture.pixelFormat == vela_ndi_pixels_other ? formatWords : nullptr;
    if (problem) {
        std::lock_guard guard(lock);
        snapshot.message = problem;
        return;
    }
    std::shared_ptr<StillPixels> pixels = buffer(capture.width, capture.height);
    vela_ndi_copy_premultiplied(pixels->bgra.data(), capture.width * 4, capture.pixels, capture.stride, capture.width,
                                capture.height, capture.pixelFormat == vela_ndi_pixels_bgrx);
    std::lock_guard guard(lock);
    if (closed) return;
    if (!latestTaken) ++snapshot.droppedVideoFrames;
    const std::uint64_t sequence = latestVideo ? latestVideo->sequence + 1 : 1;
    latestVideo = NDIReceivedVideo{std::move(pixels), sequence, capture.timecode};
    latestTaken = false;
    receivedAnything = hasVideo = true;
    ++snapshot.videoFrames;
    snapshot.width = capture.width, snapshot.height = capture.height;
    if (capture.rateDenominator > 0)
        snapshot.framesPerSecond = static_cast<double>(capture.rateNumerator) / capture.rateDenominator;
    snapshot.phase = NDIConnectionPhase::connected;
    snapshot.message = videoAndAudioWords;
}

void NDIReceiver::Worker::audio(const vela_ndi_capture& capture) {
    if (capture.sampleRate < 1 || capture.sampleRate > 384000 || capture.channels < 1 || capture.channels > 64 ||
        capture.samplesPerChannel <= 0 || !capture.samples ||
        capture.channelStrideBytes < capture.samplesPerChannel * static_cast<int>(sizeof(float)))
        return;
    NDIAudioFrame frame;
    frame.sampleRate = capture.sampleRate;
    frame.channels = capture.channels;
    frame.samplesPerChannel = capture.samplesPerChannel;
    frame.timecode = capture.timecode;
    frame.samples.resize(static_cast<std::size_t>(capture.channels) * static_cast<std::size_t>(capture.samplesPerChannel));
    for (int c = 0; c < capture.channels; ++c) {
        const float* in = reinterpret_cast<const float*>(reinterpret_cast<const std::uint8_t*>(capture.samples) +
                                                         static_cast<std::ptrdiff_t>(c) * capture.channelStrideBytes);
        float* out = frame.samples.data() + static_cast<std::size_t>(c) * capture.samplesPerChannel;
        for (int i = 0; i < capture.samplesPerChannel; ++i) out[i] = std::isfinite(in[i]) ? in[i] * levelScale : 0.0f;
    }
    std::lock_guard guard(lock);
    if (closed) return;
    audioSeconds += frame.durationSeconds();
    audioFrames.push_back(std::move(frame));
    while (audioSeconds > audioSecondsLimit && !audioFrames.empty()) {
        audioSeconds -= audioFrames.front().durationSeconds();
        audioFrames.pop_front();
        ++snapshot.droppedAudioFrames;
    }
    ++snapshot.audioFrames;
    snapshot.audioChannels = capture.channels, snapshot.audioSampleRate = capture.sampleRate;
    receivedAnything = true;
    if (snapshot.phase != NDIConnectionPhase::connected) {
        snapshot.phase = NDIConnectionPhase::connected;
        snapshot.message = hasVideo ? videoAndAudioWords : audioOnlyWords;
    }
}

void NDIReceiver::Worker::updateHealth() {
    const auto now = Clock::now();
    if (std::chrono::duration<double>(now - lastHealthCheck).count() < healthSeconds) return;
    lastHealthCheck = now;
    const int connections = vela_ndi_recv_connections(receiver.get());
    const std::int64_t dropped = vela_ndi_recv_dropped_video(receiver.get());
    std::lock_guard guard(lock);
    if (closed) return;
    snapshot.droppedVideoFrames = std::max(snapshot.droppedVideoFrames, dropped);
    const bool waitedLong = std::chrono::duration<double>(now - started).count() > neverArrivedSeconds;
    if (connections == 0 && (receivedAnything || waitedLong)) {
        snapshot.phase = NDIConnectionPhase::disconnected;
        snapshot.message = unavailableWords;
        audioFrames.clear();
        audioSeconds = 0;
    }
}

} // namespace velarion
