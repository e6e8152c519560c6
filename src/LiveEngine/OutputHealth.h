#pragma once
// The health of one screen or feed, as the operator and the ready check see
// it. A plain value with full equality.

#include "LiveModel/EnumNames.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velarion {

struct NDISenderStatus {
    bool isSending = false;
    std::uint64_t connections = 0;
    std::uint64_t videoFrames = 0;
    std::uint64_t audioFrames = 0;
    std::uint64_t droppedVideoFrames = 0;
    std::uint64_t droppedAudioFrames = 0;
    float framesPerSecond = 0;
    std::optional<std::string> lastError;
    friend bool operator==(const NDISenderStatus&, const NDISenderStatus&) = default;
};

struct OutputHealth {
    enum class Role { audience, confidence, feed };

    Role role = Role::audience;
    std::string name;
    bool isConnected = false;
    std::optional<std::string> destinationID;
    std::optional<NDISenderStatus> sender;
    bool isPlaceholder = false;
    std::optional<std::string> detail;
    friend bool operator==(const OutputHealth&, const OutputHealth&) = default;
};
VELARION_ENUM_NAMES(OutputHealth::Role, "audience", "confidence", "feed");

} // namespace velarion
