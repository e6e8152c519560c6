#pragma once
// Where a picture sits on a destination. Coordinates and sizes are fractions
// of the destination; crop insets are fractions of the picture. Plain
// values; any thread.

#include "ShowCore/CaseNames.h"

#include <optional>

namespace velarion::showcore {

enum class VisualScalingMode { fit, fill, stretch, original };
SHOWCORE_CASE_NAMES(VisualScalingMode, "fit", "fill", "stretch", "original");

struct VisualCrop {
    double top = 0;
    double leading = 0;
    double bottom = 0;
    double trailing = 0;
    bool operator==(const VisualCrop&) const = default;
};

struct VisualPlacement {
    double x = 0;
    double y = 0;
    double width = 1;
    double height = 1;
    VisualScalingMode scaling = VisualScalingMode::fit;
    VisualCrop crop;
    double opacity = 1;
    std::optional<double> rotationDegrees;
    bool operator==(const VisualPlacement&) const = default;
};

} // namespace velarion::showcore
