#pragma once
// PictureFile: decodes a picture file (PNG, JPEG, WebP, TIFF, the first frame
// of a GIF, BMP) for showing: turned upright by its orientation tag, scaled
// down to fit 3840 by 2160 when larger (keeping its shape), premultiplied.
// QtImageLoader is the engine's ImageLoader port on it.
//
// Contract.
// - `readPicture` never throws. A failure carries one sentence for the
//   operator naming the file and what to do.
// - Threads: any thread, several at once (QImage only, no QPixmap and no
//   font database). A QtImageLoader holds nothing and may be shared.

#include "LiveEngine/ports/ImageLoader.h"

#include <QImage>

#include <filesystem>
#include <optional>
#include <string>

namespace velarion {

struct PictureRead {
    std::optional<QImage> picture; // premultiplied ARGB32 when present
    std::string failure;           // the sentence when absent
};

// The largest picture kept; bigger ones are scaled down on load.
inline constexpr int maxPictureWidthPixels = 3840;
inline constexpr int maxPictureHeightPixels = 2160;

PictureRead readPicture(const std::filesystem::path& path);

class QtImageLoader final : public ImageLoader {
public:
    std::optional<StillImage> load(const std::string& path) override;
};

} // namespace velarion
