#pragma once
// SlidePictures: draws made slides for the live engine, which needs them when
// a screen shows fewer lyric lines than a slide holds and gets a picture of
// just its part.
//
// Contract.
// - `pageName` is the stable name of a slide's picture in a deck: the same
//   deck and slide content always give the same name, so a cache keyed by
//   it never shows a stale picture.
// - `render` draws the slide on the 1920 by 1080 canvas over the deck's
//   background and gives a still with a fresh id, or none when drawing
//   failed; it never throws.
// - Threads: main thread. Drawing takes milliseconds; the engine caches.
// - Lifetime: holds no callbacks; must outlive every call into it.

#include "LiveModel/DeckInfo.h"
#include "ShowStage/StillImage.h"

#include <optional>
#include <string>

namespace velarion {

class SlidePictures {
public:
    virtual ~SlidePictures() = default;

    virtual std::string pageName(const Uuid& deckID, const MadeSlide& slide) = 0;
    virtual std::optional<StillImage> render(const MadeSlide& slide,
                                             const std::optional<Backdrop>& background) = 0;
};

} // namespace velarion
