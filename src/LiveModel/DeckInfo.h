#pragma once
// A deck: imported pages, or slides made inside Velarion.

#include "LiveModel/EnumNames.h"
#include "LiveModel/LyricSlideSource.h"
#include "LiveModel/TextBox.h"
#include "LiveModel/TimerMode.h"
#include "Identity/Uuid.h"

#include <optional>
#include <string>
#include <string_view>
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

    // The names of the groups starting here, from either form of the field.
    std::vector<std::string> effectiveSectionNames() const;
    // `boxes`, or the layout's fixed boxes holding `title` and `text`.
    std::vector<TextBox> effectiveBoxes() const;
    // A copy showing only `lyrics` where the slide's sung lines stand: in
    // its generated lyric box when it has boxes, else as its text. Screens
    // that show fewer lines than the slide get one part each this way.
    MadeSlide showingLyricPart(const std::string& lyrics) const;

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

    // Turns imported pages into made slides standing for them; false when the
    // deck already has a made list.
    bool prepareForEditing();
    // True when a page isn't a rendered made slide: such decks, from older
    // shows, are redrawn when the show opens.
    bool hasLegacyNativePages() const;
    // The slide an open editor shows after the deck changed from `from`: the
    // one it showed if it is still there, else the one now at its place.
    std::optional<Uuid> editorSelection(std::optional<Uuid> preserving, const DeckInfo& from) const;
    // The first slide of the next group after slide `from` whose name starts
    // with the key's letter, wrapping to the first; a key that is a group's
    // whole name finds that group.
    std::optional<int> slide(std::string_view forSectionKey, int from) const;
    // How many slides would hide the deck's background.
    int backgroundCoveringPageCount() const;

    friend bool operator==(const DeckInfo&, const DeckInfo&) = default;
};

} // namespace velarion
