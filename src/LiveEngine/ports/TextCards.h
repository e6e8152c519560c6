#pragma once
// TextCards: draws the engine's text pictures, each on a 1920 by 1080 canvas
// meant to be shown full frame with `fit` scaling: the audience message band,
// a lower third, the corner and full-screen countdowns, and the holding slide.
//
// Contract.
// - Each call draws one card from its arguments alone and gives a still with
//   a fresh id, or none when drawing failed; it never throws. Cards are
//   transparent except where drawn, apart from `holding`, which is black.
// - An empty `subtitle` or `label` means there is none: the card is laid out
//   without it. `value` is the time text exactly as it should read.
// - Ownership: the returned still owns its pixels; `logo` is only read during
//   the call.
// - Threads: main thread. Drawing takes milliseconds, which is why the engine
//   draws a timer card only when its text changes.
// - Lifetime: the drawer must outlive every call into it; it holds no
//   callbacks, so destroying it between calls is always safe.
//
// Implementations: the platform's raster drawing, and FakeTextCards in tests.

#include "ShowStage/StillImage.h"

#include <optional>
#include <string>

namespace velarion {

class TextCards {
public:
    virtual ~TextCards() = default;

    virtual std::optional<StillImage> banner(const std::string& text) = 0;
    virtual std::optional<StillImage> lowerThird(const std::string& title,
                                                 const std::string& subtitle) = 0;
    virtual std::optional<StillImage> countdown(const std::string& label,
                                                const std::string& value) = 0;
    virtual std::optional<StillImage> countdownFull(const std::string& label,
                                                    const std::string& value,
                                                    const std::optional<StillImage>& logo) = 0;
    virtual std::optional<StillImage> holding(const std::string& title,
                                              const std::string& subtitle) = 0;
};

} // namespace velarion
