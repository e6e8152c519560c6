#pragma once
// Picture sources for tests: an image loader and a card drawer that give
// small solid pictures at once, remember every call, and fail when told to.

#include "LiveEngine/ports/ImageLoader.h"
#include "LiveEngine/ports/TextCards.h"
#include "ShowStage/SceneColor.h"

#include <set>
#include <string>
#include <vector>

namespace velarion::testing {

// A still of one colour, premultiplied as scenes expect.
StillImage solidStill(int width, int height, SceneColor color);

class FakeImageLoader final : public ImageLoader {
public:
    std::optional<StillImage> load(const std::string& path) override;

    // Paths that load as nothing, as a missing or broken file would.
    std::set<std::string> failingPaths;
    // The size and colour of every picture that loads.
    int widthPixels = 4;
    int heightPixels = 4;
    SceneColor color{0.2, 0.4, 0.6, 1};
};

struct TextCardCall {
    std::string card; // "banner", "lowerThird", "countdown", "countdownFull", "holding"
    std::vector<std::string> texts; // the arguments in order
    std::optional<SceneID> logoID;  // countdownFull only

    friend bool operator==(const TextCardCall&, const TextCardCall&) = default;
};

class FakeTextCards final : public TextCards {
public:
    std::optional<StillImage> banner(const std::string& text) override;
    std::optional<StillImage> lowerThird(const std::string& title,
                                         const std::string& subtitle) override;
    std::optional<StillImage> countdown(const std::string& label,
                                        const std::string& value) override;
    std::optional<StillImage> countdownFull(const std::string& label, const std::string& value,
                                            const std::optional<StillImage>& logo) override;
    std::optional<StillImage> holding(const std::string& title,
                                      const std::string& subtitle) override;

    // Every card then draws nothing, as when drawing fails.
    bool failing = false;
    std::vector<TextCardCall> calls;

private:
    std::optional<StillImage> draw(TextCardCall call);
};

} // namespace velarion::testing

#include "LiveEngine/ports/SlidePictures.h"

namespace velarion::testing {

// Slides drawn as small solid pictures; the page name is the slide's text,
// so tests can see which lyric part a screen was given.
class FakeSlidePictures final : public SlidePictures {
public:
    std::string pageName(const Uuid& deckID, const MadeSlide& slide) override;
    std::optional<StillImage> render(const MadeSlide& slide,
                                     const std::optional<Backdrop>& background) override;

    bool failing = false;
    // The lyric text of every slide drawn, in order.
    std::vector<std::string> rendered;
};

} // namespace velarion::testing
