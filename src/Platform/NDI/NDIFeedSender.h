#pragma once
// NDIFeedSender: a FeedSender over the NDI runtime. A worker thread of its
// own sends what is pending: at most one picture (the newest; a replaced one
// counts as dropped) and at most 16 sound frames or a quarter of a second.
//
// Contract: as FeedSender. Construction checks the feed and makes the
// runtime's sender, throwing NDIError with the operator's words. The worker
// holds no lock while it calls the runtime. Destruction closes the sender if
// `close` wasn't called; the runtime's sender is destroyed on the worker.

#include "LiveEngine/ports/NetworkFeeds.h"

#include <memory>

namespace velarion {

class NDIFeedSender final : public FeedSender {
public:
    static constexpr const char* formatWords =
        "Choose a picture size from 16 to 8192 pixels with an even width, and 1 to 120 fps.";
    static constexpr const char* nameWords = "Give this NDI feed a name before sending it.";
    static constexpr const char* takenWords =
        "NDI could not create this output. Another sender may already be using its name.";
    static constexpr const char* notBGRAWords = "NDI requires a BGRA picture.";
    static constexpr const char* refusedWords = "NDI could not send this picture size or format.";
    static constexpr const char* badAudioWords = "NDI audio has an invalid format or an oversized packet.";
    static constexpr std::size_t audioFramesLimit = 16;
    static constexpr double audioSecondsLimit = 0.25;

    explicit NDIFeedSender(const NetworkFeed& feed);
    ~NDIFeedSender() override;
    NDIFeedSender(const NDIFeedSender&) = delete;
    NDIFeedSender& operator=(const NDIFeedSender&) = delete;

    NDISource source() const override { return source_; }
    NDISenderStatus status() const override;
    void send(std::shared_ptr<const FeedPicture> picture) override;
    void sendAudio(NDIAudioFrame frame) override;
    void close(std::function<void()> completion) override;

private:
    struct Worker;
    NDISource source_;
    std::shared_ptr<Worker> worker_;
};

} // namespace velarion
