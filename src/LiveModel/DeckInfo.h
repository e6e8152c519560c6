#pragma once
// A deck: imported pages, or slides made inside Velarion.

#include "LiveModel/EnumNames.h"
#include "LiveModel/LyricSlideSource.h"
#include "LiveModel/TextBox.h"
#include "LiveModel/TimerMode.h"
#include "LiveModel/Uuid.h"

#include <optional>
#include <string>
#include <vector>

namespace velarion {

enum class MadeSlideLayout { title, titleAndText, statement, solid };
VELARION_ENUM_NAMES(MadeSlideLayout, "title", "titleAndText", "statement", "solid");

struct MadeSlide {
    using Layout = MadeSlideLayout;

    Uuid id;
    Layout layout = Layout::title;
    std::string title;
    std::string text;
    int color = 0; // 0xRRGGBB
    std::optional<Uuid> imageID;
    std::string notes;
    std::optional<std::vector<TextBox>> boxes;
    std::optional<bool> isClear;
    std::optional<std::string> sectionName;
    std::optional<std::string> importedPage;
    std::optional<std::vector<std::string>> sectionNames;
    std::optional<LyricSlideSource> lyricSource;

    friend bool operator==(const MadeSlide&, const MadeSlide&) = default;
};

struct DeckGroup {
    std::string name;
    int firstSlide = 0;
    friend bool operator==(const DeckGroup&, const DeckGroup&) = default;
};

struct DeckInfo {
    std::vector<std::string> pages; // stored names of page pictures
    std::vector<std::string> notes; // by slide index
    std::vector<DeckGroup> groups;
    std::string source; // a file name, or "Velarion" for made slides
    std::optional<std::vector<MadeSlide>> made;
    std::optional<std::vector<LyricSlideSource>> lyricSources;
    std::optional<Backdrop> background;

    friend bool operator==(const DeckInfo&, const DeckInfo&) = default;
};

} // namespace velarion
