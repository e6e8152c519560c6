#pragma once
// What the NDI tests share: the stand-in runtime's folders, a receiver in
// another process that reports what it gets line by line, and picture hashes.

#include "ChildProcess.h"
#include "LiveEngine/ports/NetworkFeeds.h"

#include <memory>
#include <string>

namespace velarion::testing {

std::string fakeRuntimeDir(const std::string& variant); // "whole" or "incomplete"
std::uint64_t pictureHash(const std::uint8_t* bgra, int width, int height, int stride);

// A forked process that receives `sourceName` through the bridge and prints
// "video W H FORMAT N/D HASH" whenever the picture changes, "audio RATE
// CHANNELS LEFT RIGHT" for each sound frame and "gone" when the source
// disconnects. Start it before any thread of the test.
std::unique_ptr<ChildProcess> startReceiverProcess(const std::string& sourceName);

// A forked process sending a 32x18 picture of `blue` at 30 fps under `name`
// with a 1 kHz-free steady sound of `level`, until killed.
std::unique_ptr<ChildProcess> startSenderProcess(const std::string& name, int width, int height, int blue);

} // namespace velarion::testing
