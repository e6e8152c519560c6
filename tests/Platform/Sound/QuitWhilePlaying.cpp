// A program that leaves main while a sound plays and another fades out, so
// that the GStreamer workers are taken down in static teardown with
// pipelines still running. Run by the sound tests; says "playing" first.

#include "Platform/Sound/GstMediaPlayers.h"

#include <chrono>
#include <cstdio>
#include <thread>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    velarion::GstMediaPlayers players{nullptr, {}, velarion::GstSoundOptions{.sinkProvidesClock = false}};
    auto playing = players.openSound(argv[1]);
    auto fading = players.openSound(argv[1]);
    if (!playing || !fading) return 3;
    playing->play();
    fading->play();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    fading->setVolume(0, 5); // let go mid-fade: retired, still heard
    fading.reset();
    std::puts("playing");
    std::fflush(stdout);
    return 0; // `playing` stops as main ends; the fading one is still due
}
