#include "LiveModel/ScreenPreset.h"

#include <algorithm>

namespace velarion {

namespace {

std::vector<LayerKind> asSet(std::vector<LayerKind> layers) {
    std::sort(layers.begin(), layers.end());
    layers.erase(std::unique(layers.begin(), layers.end()), layers.end());
    return layers;
}

} // namespace

std::string_view displayName(ScreenPreset preset) {
    constexpr std::string_view names[] = {"Everything", "Everything but lower thirds",
                                          "Lower thirds and messages only",
                                          "Background and video only"};
    return names[static_cast<int>(preset)];
}

std::vector<LayerKind> screenPreset::layers(ScreenPreset preset) {
    using L = LayerKind;
    switch (preset) {
    case ScreenPreset::everything:
        return {L::background, L::media, L::slides, L::graphics, L::holding, L::messages};
    case ScreenPreset::clean:
        return {L::background, L::media, L::slides, L::holding};
    case ScreenPreset::overlay:
        return {L::graphics, L::messages};
    case ScreenPreset::backdrop:
        return {L::background, L::media, L::holding};
    }
    return {};
}

std::optional<ScreenPreset> screenPreset::fromLayers(const std::vector<LayerKind>& layers) {
    const std::vector<LayerKind> set = asSet(layers);
    for (std::size_t i = 0; i < enumCount<ScreenPreset>(); ++i) {
        const auto preset = static_cast<ScreenPreset>(i);
        if (screenPreset::layers(preset) == set)
            return preset;
    }
    return std::nullopt;
}

std::string screenPreset::summary(const std::vector<LayerKind>& layers) {
    if (const auto preset = fromLayers(layers))
        return std::string(displayName(*preset));
    std::string text;
    for (LayerKind layer : asSet(layers)) {
        if (!text.empty())
            text += ", ";
        text += displayName(layer);
    }
    return text;
}

} // namespace velarion
