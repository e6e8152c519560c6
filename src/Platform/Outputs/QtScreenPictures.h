#pragma once
// QtScreenPictures: the output manager's own pictures drawn by
// OutputPictures (Qt raster): the Stage Display, identification, patterns.
// Contract: as ScreenPictures; main thread. The calendar and the slide
// reader outlive it.

#include "LiveEngine/ports/ScreenPictures.h"
#include "Platform/Pictures/OutputPictures.h"

namespace velarion {

class QtScreenPictures final : public ScreenPictures {
public:
    explicit QtScreenPictures(const Calendar& calendar) : calendar_(calendar) {}

    std::optional<StillImage> stage(const StagePictureInputs& inputs) override;
    std::optional<StillImage> identify(const std::string& name, ScreenRole role) override;
    std::optional<StillImage> pattern(OutputTestPattern pattern) override;

private:
    const Calendar& calendar_;
    OutputPictures::StageSlidePictures slides_;
};

} // namespace velarion
