#include "GeneratedVideo.h"

#include <cstdlib>
#include <fstream>
#include <vector>

namespace velarion::testing {

namespace {

constexpr int codeBits = 8;

bool launch(const std::string& pipeline) {
    return std::system(("gst-launch-1.0 -q " + pipeline + " >/dev/null").c_str()) == 0;
}

std::string quoted(const std::filesystem::path& path) { return "location=\"" + path.string() + "\""; }

} // namespace

bool writeCodedVideo(const std::filesystem::path& path, const CodedVideo& video) {
    const auto raw = std::filesystem::path(path).replace_extension(".bgra");
    {
        std::ofstream out(raw, std::ios::binary);
        std::vector<char> frame(static_cast<std::size_t>(video.width) * static_cast<std::size_t>(video.height) * 4);
        const int block = video.width / codeBits;
        for (int number = 0; number < video.frames; ++number) {
            for (int y = 0; y < video.height; ++y)
                for (int x = 0; x < video.width; ++x) {
                    const bool set = ((number >> std::min(x / block, codeBits - 1)) & 1) != 0;
                    char* pixel = &frame[(static_cast<std::size_t>(y) * video.width + x) * 4];
                    pixel[0] = pixel[1] = pixel[2] = static_cast<char>(set ? 255 : 0);
                    pixel[3] = static_cast<char>(255);
                }
            out.write(frame.data(), static_cast<std::streamsize>(frame.size()));
        }
    }
    const bool mkv = video.container == "mkv";
    const double seconds = static_cast<double>(video.frames) / video.framesPerSecond;
    std::string pipeline = "filesrc " + quoted(raw) + " ! rawvideoparse format=bgra width=" +
                           std::to_string(video.width) + " height=" + std::to_string(video.height) +
                           " framerate=" + std::to_string(video.framesPerSecond) +
                           "/1 ! videoconvert ! video/x-raw,format=I420 ! x264enc speed-preset=ultrafast pass=quant quantizer=12 key-int-max=" +
                           std::to_string(video.framesPerSecond / 2) + " ! h264parse ! " +
                           (mkv ? "matroskamux" : "mp4mux") + " name=mux ! filesink " + quoted(path);
    if (video.soundAmplitude > 0) {
        const int buffers = static_cast<int>(seconds * 100);
        pipeline += " audiotestsrc freq=441 samplesperbuffer=441 num-buffers=" + std::to_string(buffers) +
                    " volume=" + std::to_string(video.soundAmplitude) +
                    " ! audio/x-raw,format=S16LE,rate=44100,channels=2" + (mkv ? "" : " ! avenc_aac") + " ! mux.";
    }
    const bool written = launch(pipeline);
    std::filesystem::remove(raw);
    return written;
}

int frameCode(const StillPixels& picture) {
    if (picture.width < codeBits || picture.height < 1) return -1;
    const int block = picture.width / codeBits;
    const int y = picture.height / 2;
    int number = 0;
    for (int bit = 0; bit < codeBits; ++bit) {
        const int x = bit * block + block / 2;
        const std::uint8_t green = picture.bgra[(static_cast<std::size_t>(y) * picture.width + x) * 4 + 1];
        if (green > 128) number |= 1 << bit;
    }
    return number;
}

} // namespace velarion::testing
