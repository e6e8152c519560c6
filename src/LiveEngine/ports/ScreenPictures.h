#pragma once
// ScreenPictures: the pictures the output manager shows of its own accord:
// the Stage Display, a screen's identification and the test patterns.
//
// Contract: main thread (text drawing). Each call draws from its arguments
// alone and answers a fresh still, or none when it can't be drawn.

#include "LiveEngine/StageInfo.h"
#include "LiveModel/OutputSetup.h"
#include "LiveModel/OutputTestPattern.h"
#include "ShowStage/StillImage.h"

#include <optional>
#include <string>

namespace velarion {

struct StagePictureInputs {
    ConfidenceState confidence;
    std::optional<TimerState> timer;
    std::optional<std::string> nextCueName;
    double wallSeconds = 0;
};

class ScreenPictures {
public:
    virtual ~ScreenPictures() = default;
    virtual std::optional<StillImage> stage(const StagePictureInputs& inputs) = 0;
    virtual std::optional<StillImage> identify(const std::string& name, ScreenRole role) = 0;
    virtual std::optional<StillImage> pattern(OutputTestPattern pattern) = 0;
};

} // namespace velarion
