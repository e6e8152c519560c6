#pragma once
// A still picture in a scene: an identity and an immutable pixel buffer.
//
// Pixels are BGRA, 8 bits a channel, premultiplied alpha, rows top to bottom,
// no padding (a row is width * 4 bytes). The buffer is shared, never copied
// and never changed after construction, so a StillImage is cheap to copy and
// its pixels may be read from any thread.
//
// Two stills are equal exactly when their ids are equal; the pixels are not
// compared. A fresh still of the same picture is a different picture, which
// is what lets a renderer skip uploading an unchanged one by id alone.

#include "ShowStage/SceneID.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace velarion {

struct StillPixels {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bgra;
};

class StillImage {
public:
    // A still with a fresh id. None when either side is not above 0 or the
    // buffer is not exactly width * height * 4 bytes.
    static std::optional<StillImage> fromBGRA(int width, int height,
                                              std::vector<std::uint8_t> bgra);
    // The same with a given id: for a picture the caller already knows, such
    // as a cached card shown again.
    static std::optional<StillImage> withID(SceneID id, int width, int height,
                                            std::vector<std::uint8_t> bgra);
    // A fresh id for pixels that are already shared, without copying them.
    StillImage freshCopy() const;

    const SceneID& id() const { return id_; }
    int width() const { return pixels_->width; }
    int height() const { return pixels_->height; }
    std::span<const std::uint8_t> bgra() const { return pixels_->bgra; }
    // For a back end that keeps the buffer alive beyond this value.
    const std::shared_ptr<const StillPixels>& pixels() const { return pixels_; }

    friend bool operator==(const StillImage& a, const StillImage& b) { return a.id_ == b.id_; }

private:
    StillImage(SceneID id, std::shared_ptr<const StillPixels> pixels)
        : id_(id), pixels_(std::move(pixels)) {}

    SceneID id_;
    std::shared_ptr<const StillPixels> pixels_; // never null
};

} // namespace velarion
