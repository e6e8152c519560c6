#pragma once
// The four named layer sets an operator picks for a screen, a look or a feed,
// and the words that describe any set of layers. Presets are stored (and
// named by the agent) by case name.
//
// Thread: pure functions over plain values; any thread.

#include "LiveModel/EnumNames.h"
#include "LiveModel/LayerKind.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velarion {

enum class ScreenPreset { everything, clean, overlay, backdrop };
VELARION_ENUM_NAMES(ScreenPreset, "everything", "clean", "overlay", "backdrop");

// The operator's words for a preset: "Everything but lower thirds" …
std::string_view displayName(ScreenPreset preset);

namespace screenPreset {

// The preset's layers, in layer order.
std::vector<LayerKind> layers(ScreenPreset preset);
// The preset showing exactly this set of layers (order and repeats aside);
// none for any other set.
std::optional<ScreenPreset> fromLayers(const std::vector<LayerKind>& layers);
// The preset's words, or for a custom set the layers' names in layer order,
// joined by ", ".
std::string summary(const std::vector<LayerKind>& layers);

} // namespace screenPreset

} // namespace velarion
