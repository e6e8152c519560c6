#pragma once
// QtSlidePictures: the engine's SlidePictures port on SlideMaker. The engine
// asks it for lyric part pictures, each drawn as the deck's page would be.
//
// Contract.
// - `pageName` is SlideMaker::pageName.
// - `render` draws over the slide's own library picture (`imageID`) or,
//   without one, the deck's backdrop when that is a library picture; a
//   colour, a built-in loop or a picture that can't be read gives none, and
//   the slide's colour shows. Clear slides ignore both, as pages do.
// - `findMedia` turns a library id into the file to read; it is set by the
//   owner (the application, from the open show and its package) and called
//   during `render` only.
// - Threads: the main thread (text drawing). Holds nothing but the lookup.

#include "LiveEngine/ports/SlidePictures.h"

#include <filesystem>
#include <functional>
#include <optional>

namespace velarion {

class QtSlidePictures final : public SlidePictures {
public:
    using FindMedia = std::function<std::optional<std::filesystem::path>(const Uuid& mediaID)>;

    explicit QtSlidePictures(FindMedia findMedia) : findMedia_(std::move(findMedia)) {}

    std::string pageName(const Uuid& deckID, const MadeSlide& slide) override;
    std::optional<StillImage> render(const MadeSlide& slide,
                                     const std::optional<Backdrop>& background) override;

private:
    FindMedia findMedia_;
};

} // namespace velarion
