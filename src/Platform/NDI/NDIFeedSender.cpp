#include "Platform/NDI/NDIFeedSender.h"

#include "Platform/NDI/CNDIBridge.h"
#include "Platform/NDI/NDILibrary.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace velarion {

namespace {

struct SenderClose {
    void operator()(vela_ndi_sender* sender) const { vela_ndi_send_destroy(sender); }
};
using SenderHandle = std::unique_ptr<vela_ndi_sender, SenderClose>;

std::string trimmed(const std::string& text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

} // namespace

struct NDIFeedSender::Worker {
    std::mutex lock;
    std::condition_variable wake;
    VideoFrameRate frameRate;
    int alphaMode = 0;
    SenderHandle sender;
    std::shared_ptr<const FeedPicture> pendingVideo;
    std::deque<NDIAudioFrame> pendingAudio;
    double pendingAudioSeconds = 0;
    bool closed = false;
    std::function<void()> completion;
    NDISenderStatus snapshot;
    std::chrono::steady_clock::time_point rateSampleTime = std::chrono::steady_clock::now();
    std::uint64_t rateSampleFrames = 0;

    void run();
    bool sendPicture(const FeedPicture& picture, std::optional<std::string>& error);
};

NDIFeedSender::NDIFeedSender(const NetworkFeed& feed) {
    if (!feed.hasValidFormat()) throw NDIError(NDIError::Case::creationFailed, formatWords);
    const std::string name = trimmed(feed.name);
    if (name.empty()) throw NDIError(NDIError::Case::creationFailed, nameWords);
    const NDIRuntimeStatus runtime = NDILibrary::status();
    if (!runtime.isAvailable) throw NDIError(NDIError::Case::unavailable, runtime.message);
    SenderHandle sender(vela_ndi_send_create(name.c_str()));
    if (!sender) throw NDIError(NDIError::Case::creationFailed, takenWords);
    const char* reported = vela_ndi_send_name(sender.get());
    source_.name = reported && *reported ? reported : name;
    if (const char* url = vela_ndi_send_url(sender.get()); url && *url) source_.url = url;

    worker_ = std::make_shared<Worker>();
    worker_->frameRate = feed.frameRate;
    worker_->alphaMode = static_cast<int>(feed.alphaMode);
    worker_->sender = std::move(sender);
    worker_->snapshot.isSending = true;
    std::thread([worker = worker_] { worker->run(); }).detach();
}

NDIFeedSender::~NDIFeedSender() { close({}); }

NDISenderStatus NDIFeedSender::status() const {
    std::lock_guard guard(worker_->lock);
    return worker_->snapshot;
}

void NDIFeedSender::send(std::shared_ptr<const FeedPicture> picture) {
    {
        std::lock_guard guard(worker_->lock);
        if (worker_->closed) return;
        if (worker_->pendingVideo) ++worker_->snapshot.droppedVideoFrames;
        worker_->pendingVideo = std::move(picture);
    }
    worker_->wake.notify_one();
}

void NDIFeedSender::sendAudio(NDIAudioFrame frame) {
    {
        std::lock_guard guard(worker_->lock);
        if (worker_->closed) return;
        if (!frame.isWellFormed() || frame.durationSeconds() > audioSecondsLimit) {
            worker_->snapshot.lastError = badAudioWords;
            return;
        }
        auto& queue = worker_->pendingAudio;
        while (!queue.empty() && (queue.size() >= audioFramesLimit ||
                                  worker_->pendingAudioSeconds + frame.durationSeconds() > audioSecondsLimit)) {
            worker_->pendingAudioSeconds -= queue.front().durationSeconds();
            queue.pop_front();
            ++worker_->snapshot.droppedAudioFrames;
        }
        worker_->pendingAudioSeconds += frame.durationSeconds();
        queue.push_back(std::move(frame));
    }
    worker_->wake.notify_one();
}

void NDIFeedSender::close(std::function<void()> completion) {
    {
        std::lock_guard guard(worker_->lock);
        if (worker_->closed) return;
        worker_->closed = true;
        worker_->snapshot.isSending = false;
        worker_->completion = std::move(completion);
    }
    worker_->wake.notify_one();
}

bool NDIFeedSender::Worker::sendPicture(const FeedPicture& picture, std::optional<std::string>& error) {
    const auto expected = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height) * 4;
    if (picture.width <= 0 || picture.height <= 0 || picture.bgra.size() != expected) {
        error = notBGRAWords;
        return false;
    }
    if (!vela_ndi_send_video(sender.get(), picture.bgra.data(), picture.width, picture.height, picture.width * 4,
                             frameRate.numerator, frameRate.denominator, alphaMode)) {
        error = refusedWords;
        return false;
    }
    return true;
}

void NDIFeedSender::Worker::run() {
    std::unique_lock guard(lock);
    while (true) {
        wake.wait(guard, [this] { return closed || pendingVideo || !pendingAudio.empty(); });
        if (closed) break;
        std::shared_ptr<const FeedPicture> video = std::move(pendingVideo);
        pendingVideo.reset();
        std::deque<NDIAudioFrame> audio = std::move(pendingAudio);
        pendingAudio.clear();
        pendingAudioSeconds = 0;
        guard.unlock();

        std::optional<std::string> error;
        const bool sentVideo = video && sendPicture(*video, error);
        std::uint64_t sentAudio = 0;
        for (const NDIAudioFrame& frame : audio)
            sentAudio += static_cast<std::uint64_t>(vela_ndi_send_audio(sender.get(), frame.samples.data(),
                                                                        frame.sampleRate, frame.channels,
                                                                        frame.samplesPerChannel));
        const int connections = vela_ndi_send_connections(sender.get());

        guard.lock();
        if (sentVideo) ++snapshot.videoFrames;
        snapshot.audioFrames += sentAudio;
        snapshot.connections = static_cast<std::uint64_t>(std::max(connections, 0));
        if (error) snapshot.lastError = error;
        const auto now = std::chrono::steady_clock::now();
        const double elapsed = std::chrono::duration<double>(now - rateSampleTime).count();
        if (elapsed >= 1) {
            snapshot.framesPerSecond = static_cast<float>((snapshot.videoFrames - rateSampleFrames) / elapsed);
            rateSampleFrames = snapshot.videoFrames;
            rateSampleTime = now;
        }
    }
    std::function<void()> done = std::move(completion);
    guard.unlock();
    sender.reset(); // frees the name in the runtime
    if (done) done();
}

} // namespace velarion
