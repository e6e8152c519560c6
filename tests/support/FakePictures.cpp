#include "FakePictures.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>

namespace velarion::testing {

namespace {

std::uint8_t channel(double value) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
}

// Cards are 16 by 9 so a test can tell them from loaded pictures by size.
constexpr int cardWidthPixels = 16;
constexpr int cardHeightPixels = 9;

} // namespace

StillImage solidStill(int width, int height, SceneColor color) {
    const double alpha = std::clamp(color.alpha, 0.0, 1.0);
    const std::uint8_t pixel[4] = {channel(color.blue * alpha), channel(color.green * alpha),
                                   channel(color.red * alpha), channel(alpha)};
    std::vector<std::uint8_t> bgra(static_cast<std::size_t>(std::max(width, 0)) *
                                   static_cast<std::size_t>(std::max(height, 0)) * 4);
    for (std::size_t i = 0; i < bgra.size(); ++i) bgra[i] = pixel[i % 4];
    auto still = StillImage::fromBGRA(width, height, std::move(bgra));
    if (!still) throw std::invalid_argument("solidStill needs a width and a height above 0");
    return *still;
}

std::optional<StillImage> FakeImageLoader::load(const std::string& path) {
    if (failingPaths.contains(path)) return std::nullopt;
    return solidStill(widthPixels, heightPixels, color);
}

std::optional<StillImage> FakeTextCards::banner(const std::string& text) {
    return draw({"banner", {text}});
}

std::optional<StillImage> FakeTextCards::lowerThird(const std::string& title,
                                                    const std::string& subtitle) {
    return draw({"lowerThird", {title, subtitle}});
}

std::optional<StillImage> FakeTextCards::countdown(const std::string& label,
                                                   const std::string& value) {
    return draw({"countdown", {label, value}});
}

std::optional<StillImage> FakeTextCards::countdownFull(const std::string& label,
                                                       const std::string& value,
                                                       const std::optional<StillImage>& logo) {
    TextCardCall call{"countdownFull", {label, value}};
    if (logo) call.logoID = logo->id();
    return draw(std::move(call));
}

std::optional<StillImage> FakeTextCards::holding(const std::string& title,
                                                 const std::string& subtitle) {
    return draw({"holding", {title, subtitle}});
}

std::optional<StillImage> FakeTextCards::draw(TextCardCall call) {
    calls.push_back(std::move(call));
    if (failing) return std::nullopt;
    // Holding slides are drawn on black; every other card is transparent.
    const SceneColor fill = calls.back().card == "holding" ? SceneColor::black()
                                                           : SceneColor{1, 1, 1, 0.5};
    return solidStill(cardWidthPixels, cardHeightPixels, fill);
}

} // namespace velarion::testing

namespace velarion::testing {

std::string FakeSlidePictures::pageName(const Uuid& deckID, const MadeSlide& slide) {
    std::string text = slide.text;
    if (slide.boxes)
        for (const TextBox& box : *slide.boxes) text += "|" + box.text;
    return deckID.text() + ":" + text;
}

std::optional<StillImage> FakeSlidePictures::render(const MadeSlide& slide,
                                                    const std::optional<Backdrop>&) {
    rendered.push_back(pageName(Uuid{}, slide).substr(Uuid{}.text().size() + 1));
    if (failing) return std::nullopt;
    return solidStill(4, 4, SceneColor{1, 1, 1, 1});
}

} // namespace velarion::testing
