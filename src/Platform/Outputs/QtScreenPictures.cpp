#include "Platform/Outputs/QtScreenPictures.h"

#include "Platform/Pictures/Canvas.h"

namespace velarion {

std::optional<StillImage> QtScreenPictures::stage(const StagePictureInputs& inputs) {
    const OutputPictures::StageInputs stageInputs{inputs.confidence, inputs.timer, inputs.nextCueName,
                                                  inputs.wallSeconds};
    return toStill(OutputPictures::stage(stageInputs, calendar_,
                                         [this](const std::string& path) { return slides_(path); }));
}

std::optional<StillImage> QtScreenPictures::identify(const std::string& name, ScreenRole role) {
    return toStill(OutputPictures::identify(name, role));
}

std::optional<StillImage> QtScreenPictures::pattern(OutputTestPattern pattern) {
    return toStill(OutputPictures::pattern(pattern));
}

} // namespace velarion
