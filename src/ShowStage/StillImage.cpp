#include "ShowStage/StillImage.h"

#include <cstddef>

namespace velarion {

std::optional<StillImage> StillImage::fromBGRA(int width, int height,
                                               std::vector<std::uint8_t> bgra) {
    return withID(Uuid::random(), width, height, std::move(bgra));
}

std::optional<StillImage> StillImage::withID(SceneID id, int width, int height,
                                             std::vector<std::uint8_t> bgra) {
    if (width <= 0 || height <= 0) return std::nullopt;
    // In size_t so a huge width times height cannot overflow an int.
    const auto expected = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
    if (bgra.size() != expected) return std::nullopt;
    auto pixels = std::make_shared<const StillPixels>(StillPixels{width, height, std::move(bgra)});
    return StillImage(id, std::move(pixels));
}

StillImage StillImage::freshCopy() const { return StillImage(Uuid::random(), pixels_); }

} // namespace velarion
