#pragma once
// One private sound server for every test of the program, real GStreamer
// players on it, and a folder of generated sound files.

#include "GeneratedSound.h"
#include "PrivateSoundServer.h"
#include "SoundAnalysis.h"
#include "TempFolder.h"

#include "Platform/Sound/GstMediaPlayers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

namespace velarion::testing {

class SoundServerFixture : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (!server()) server() = PrivateSoundServer::start(whyNot());
    }
    void SetUp() override {
        if (server()) return;
        if (std::getenv("VELARION_REQUIRE_SOUND_SERVER") != nullptr)
            FAIL() << "The private sound server must run on this machine: " << whyNot();
        GTEST_SKIP() << "No sound server could start here: " << whyNot();
    }

    static std::unique_ptr<PrivateSoundServer>& server() {
        static std::unique_ptr<PrivateSoundServer> running;
        return running;
    }
    static std::string& whyNot() {
        static std::string reason;
        return reason;
    }

    std::filesystem::path sine(const std::string& name, const Sine& sine) {
        const auto path = folder / name;
        writeSineWav(path, sine);
        return path;
    }
    static void wait(double seconds) {
        std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    }

    TempFolder folder{"velarion-sound"};
    // Null sinks stall a clock they provide, so the pipelines keep their own.
    GstMediaPlayers players{nullptr, [](const SceneID&, const std::filesystem::path&) { return nullptr; },
                            GstSoundOptions{.sinkProvidesClock = false}};
};

} // namespace velarion::testing
