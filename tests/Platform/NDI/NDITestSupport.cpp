#include "NDITestSupport.h"

#include "Platform/NDI/CNDIBridge.h"
#include "Platform/NDI/NDIFeedSender.h"
#include "Platform/NDI/NDILibrary.h"

#include <chrono>
#include <thread>
#include <unistd.h>

namespace velarion::testing {

std::string fakeRuntimeDir(const std::string& variant) { return std::string(VELARION_FAKE_NDI_DIR) + "/" + variant; }

std::uint64_t pictureHash(const std::uint8_t* bgra, int width, int height, int stride) {
    std::uint64_t hash = 1469598103934665603ull;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width * 4; ++x) hash = (hash ^ bgra[y * stride + x]) * 1099511628211ull;
    return hash;
}

namespace {
void say(int output, const std::string& line) {
    const std::string text = line + "\n";
    if (::write(output, text.data(), text.size()) < 0) _exit(3);
}
} // namespace

std::unique_ptr<ChildProcess> startReceiverProcess(const std::string& sourceName) {
    return std::make_unique<ChildProcess>([sourceName](int output) -> int {
        if (!NDILibrary::status().isAvailable) return say(output, "no runtime"), 1;
        vela_ndi_receiver* receiver = vela_ndi_recv_create(sourceName.c_str(), nullptr);
        std::string last;
        while (true) {
            vela_ndi_capture capture{};
            const int kind = vela_ndi_recv_capture(receiver, &capture, 100);
            if (kind == vela_ndi_capture_video) {
                const std::string line = "video " + std::to_string(capture.width) + " " + std::to_string(capture.height) +
                                         " " + (capture.pixelFormat == vela_ndi_pixels_bgrx ? "BGRX" : "BGRA") + " " +
                                         std::to_string(capture.rateNumerator) + "/" +
                                         std::to_string(capture.rateDenominator) + " " +
                                         std::to_string(pictureHash(capture.pixels, capture.width, capture.height,
                                                                    capture.stride));
                if (line != last) say(output, last = line);
            } else if (kind == vela_ndi_capture_audio) {
                say(output, "audio " + std::to_string(capture.sampleRate) + " " + std::to_string(capture.channels) +
                                " " + std::to_string(capture.samples[0]) + " " +
                                std::to_string(capture.samples[capture.channelStrideBytes / 4]));
            } else if (kind == vela_ndi_capture_disconnected) {
                say(output, "gone");
                last.clear();
            }
            vela_ndi_recv_release(receiver, &capture);
        }
    });
}

std::unique_ptr<ChildProcess> startSenderProcess(const std::string& name, int width, int height, int blue) {
    return std::make_unique<ChildProcess>([=](int output) -> int {
        NetworkFeed feed;
        feed.name = name;
        feed.width = width, feed.height = height;
        feed.alphaMode = NDIAlphaMode::premultiplied;
        NDIFeedSender sender(feed);
        say(output, "sending " + sender.source().name);
        auto picture = std::make_shared<FeedPicture>();
        picture->width = width, picture->height = height;
        picture->bgra.resize(static_cast<std::size_t>(width * height * 4));
        for (std::size_t i = 0; i < picture->bgra.size(); i += 4)
            picture->bgra[i] = static_cast<std::uint8_t>(blue), picture->bgra[i + 3] = 255;
        NDIAudioFrame sound;
        sound.sampleRate = 48000, sound.channels = 2, sound.samplesPerChannel = 480;
        sound.samples.assign(960, 0.5f);
        while (true) {
            sender.send(picture);
            sender.sendAudio(sound);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    });
}

} // namespace velarion::testing
