// Screen presets: which layer sets they stand for, and the words that
// describe a preset or a custom set.

#include "LiveModel/ScreenPreset.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

using L = LayerKind;

TEST(ScreenPreset, RecognisesEachPresetWhateverTheOrder) {
    EXPECT_EQ(screenPreset::fromLayers(
                  {L::messages, L::holding, L::graphics, L::slides, L::media, L::background}),
              ScreenPreset::everything);
    EXPECT_EQ(screenPreset::fromLayers({L::messages, L::graphics, L::messages}),
              ScreenPreset::overlay);
    for (std::size_t i = 0; i < enumCount<ScreenPreset>(); ++i) {
        const auto preset = static_cast<ScreenPreset>(i);
        EXPECT_EQ(screenPreset::fromLayers(screenPreset::layers(preset)), preset);
    }
    EXPECT_EQ(screenPreset::fromLayers({L::slides}), std::nullopt);
    EXPECT_EQ(screenPreset::fromLayers({L::background, L::media, L::slides}), std::nullopt);
    EXPECT_EQ(screenPreset::fromLayers({}), std::nullopt);
}

} // namespace
} // namespace velarion
