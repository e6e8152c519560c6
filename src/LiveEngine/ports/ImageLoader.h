#pragma once
// ImageLoader: turns a picture file (PNG, JPEG and whatever else the platform
// decodes) into a still the engine can put in a scene.
//
// Contract.
// - `load` reads and decodes the file at `path` and gives a still with a
//   fresh id, its pixels already converted to the scene's BGRA form. A file
//   that is missing, unreadable or not a picture gives none; it never throws.
//   Keeping decoded pictures for reuse is the caller's business, so that the
//   same file loaded twice is two different pictures unless the caller reuses
//   the first.
// - Ownership: the returned still owns its pixels; the loader keeps nothing.
// - Threads: main thread, or one worker thread at a time per loader; a result
//   may be handed to any thread.
// - Lifetime: the loader must outlive every call into it; it holds no
//   callbacks, so destroying it between calls is always safe.
//
// Implementations: the platform's picture decoder, and FakeImageLoader in
// tests.

#include "ShowStage/StillImage.h"

#include <optional>
#include <string>

namespace velarion {

class ImageLoader {
public:
    virtual ~ImageLoader() = default;

    virtual std::optional<StillImage> load(const std::string& path) = 0;
};

} // namespace velarion
