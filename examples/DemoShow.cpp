// Builds the demo show: a package that exercises what Velarion does, with
// sound made here and a short video made by the caller (GStreamer), so the
// repository holds no media. The slides are drawn when the show is opened.
// Usage: velarion-demo-show OUT.velarion [--video CLIP.mp4]

#include "DemoShowBuilder.h"

#include <cstdio>
#include <exception>
#include <optional>
#include <string>

using namespace velarion;

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OUT.velarion [--video CLIP.mp4]\n", argv[0]);
        return 2;
    }
    const std::filesystem::path out = argv[1];
    std::optional<std::filesystem::path> clip;
    if (argc == 4 && std::string(argv[2]) == "--video") clip = argv[3];
    try {
        buildDemoShow(out, clip);
        std::printf("%s\n", out.c_str());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "The demo show couldn't be made: %s\n", error.what());
        return 1;
    }
    return 0;
}
