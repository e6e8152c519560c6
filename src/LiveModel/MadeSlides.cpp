// Operations of decks and their made slides: the forms older files store,
// turning imported pages into editable slides, what an editor or a section key
// lands on, and the deck background.

#include "LiveModel/DeckInfo.h"
#include "LiveModel/MediaItem.h"
#include "LiveModel/SlideTemplate.h"

#include <algorithm>
#include <cmath>

namespace velarion {

namespace {

// NaN counts as the lower bound, so a damaged value still lands on the slide.
double clampedValue(double value, double low, double high) {
    if (std::isnan(value))
        return low;
    return std::clamp(value, low, high);
}

// The code point starting at `at`, moving `at` past it. A malformed byte
// stands for itself, so any text can be compared.
char32_t nextCodePoint(std::string_view text, std::size_t& at) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at);
    std::size_t length = lead < 0x80           ? 1
                         : (lead >> 5) == 0x6  ? 2
                         : (lead >> 4) == 0xE  ? 3
                         : (lead >> 3) == 0x1E ? 4
                                               : 0;
    if (length == 0 || at + length > text.size()) {
        ++at;
        return lead;
    }
    char32_t point = length == 1 ? lead : lead & (0x7F >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0) != 0x80) {
            ++at;
            return lead;
        }
        point = (point << 6) | (byte(at + i) & 0x3F);
    }
    at += length;
    return point;
}

// Lower case for the scripts section names are written in here: Latin with
// its accented letters, Greek and Cyrillic capitals.
char32_t lowered(char32_t c) {
    if (c >= U'A' && c <= U'Z')
        return c + 32;
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7)
        return c + 32;
    if (c >= 0x100 && c <= 0x137 && c != 0x130 && c % 2 == 0)
        return c + 1;
    if (c >= 0x139 && c <= 0x148 && c % 2 == 1)
        return c + 1;
    if (c >= 0x14A && c <= 0x177 && c % 2 == 0)
        return c + 1;
    if (c == 0x178)
        return 0xFF;
    if (c >= 0x179 && c <= 0x17E && c % 2 == 1)
        return c + 1;
    if (c >= 0x391 && c <= 0x3A9 && c != 0x3A2)
        return c + 32;
    if (c >= 0x400 && c <= 0x40F)
        return c + 80;
    if (c >= 0x410 && c <= 0x42F)
        return c + 32;
    return c;
}

std::u32string foldedText(std::string_view text) {
    std::u32string folded;
    for (std::size_t at = 0; at < text.size();)
        folded.push_back(lowered(nextCodePoint(text, at)));
    return folded;
}

char32_t foldedFirst(std::string_view text) {
    std::size_t at = 0;
    return lowered(nextCodePoint(text, at));
}

// Among the start slides of the matching groups: the first one after `from`,
// else the first one of all.
std::optional<int> nextStart(std::vector<int> starts, int from) {
    if (starts.empty())
        return std::nullopt;
    std::sort(starts.begin(), starts.end());
    const auto after = std::upper_bound(starts.begin(), starts.end(), from);
    return after != starts.end() ? *after : starts.front();
}

bool carriesPicture(const MadeSlide& slide) {
    return slide.imageID || slide.importedPage;
}

bool coversBackground(const MadeSlide& slide) {
    return !slide.isClear.value_or(false) && !carriesPicture(slide);
}

} // namespace

TextBox TextBox::clamped() const {
    TextBox box = *this;
    box.width = clampedValue(width, 0.05, 1);
    box.height = clampedValue(height, 0.04, 1);
    box.x = clampedValue(x, 0, 1 - box.width);
    box.y = clampedValue(y, 0, 1 - box.height);
    box.size = clampedValue(size, 8, 400);
    return box;
}

std::vector<std::string> MadeSlide::effectiveSectionNames() const {
    if (sectionNames)
        return *sectionNames;
    if (sectionName)
        return {*sectionName};
    return {};
}

MadeSlide MadeSlide::showingLyricPart(const std::string& lyrics) const {
    MadeSlide part = *this;
    if (!part.boxes) {
        part.text = lyrics;
        return part;
    }
    if (!lyricSource || lyricSource->baseline.boxes.empty()) return part;
    const Uuid& lyricID = lyricSource->baseline.boxes.front().id;
    for (TextBox& box : *part.boxes)
        if (box.id == lyricID) box.text = lyrics;
    return part;
}

std::vector<TextBox> MadeSlide::effectiveBoxes() const {
    if (boxes)
        return *boxes;
    // An empty title stays empty here: an older slide never showed a
    // template's placeholder words.
    return slideTemplate::fixedBoxes(slideTemplate::forLayout(layout), title, text, id);
}

bool DeckInfo::prepareForEditing() {
    if (made)
        return false;
    std::vector<MadeSlide> slides;
    slides.reserve(pages.size());
    for (std::size_t i = 0; i < pages.size(); ++i) {
        MadeSlide slide;
        slide.id = Uuid::random();
        // No fixed boxes: the page's own picture is the whole slide.
        slide.layout = MadeSlide::Layout::solid;
        slide.importedPage = pages[i];
        if (i < notes.size())
            slide.notes = notes[i];
        std::vector<std::string> names;
        for (const DeckGroup& group : groups) {
            if (group.firstSlide >= 0 && static_cast<std::size_t>(group.firstSlide) == i) {
                names.push_back(group.name);
            }
        }
        if (!names.empty())
            slide.sectionNames = std::move(names);
        slides.push_back(std::move(slide));
    }
    made = std::move(slides);
    return true;
}

bool DeckInfo::hasLegacyNativePages() const {
    if (!made)
        return false;
    for (std::size_t i = 0; i < pages.size(); ++i) {
        if (i >= made->size())
            return true;
        const std::string& page = pages[i];
        if (!page.starts_with("Slides/") && (*made)[i].importedPage != page)
            return true;
    }
    return false;
}

std::optional<Uuid> DeckInfo::editorSelection(std::optional<Uuid> preserving,
                                              const DeckInfo& from) const {
    if (!made || made->empty())
        return std::nullopt;
    const std::vector<MadeSlide>& slides = *made;
    if (preserving) {
        const auto sameID = [&](const MadeSlide& slide) { return slide.id == *preserving; };
        if (std::any_of(slides.begin(), slides.end(), sameID))
            return preserving;
        if (from.made) {
            const auto old = std::find_if(from.made->begin(), from.made->end(), sameID);
            if (old != from.made->end()) {
                const auto index = static_cast<std::size_t>(old - from.made->begin());
                return slides[std::min(index, slides.size() - 1)].id;
            }
        }
    }
    // Nothing to follow: an open editor still shows a slide.
    return slides.front().id;
}

std::optional<int> DeckInfo::slide(std::string_view forSectionKey, int from) const {
    if (forSectionKey.empty())
        return std::nullopt;
    const std::u32string wholeKey = foldedText(forSectionKey);
    const char32_t letter = wholeKey.front();
    std::vector<int> byName, byLetter;
    for (const DeckGroup& group : groups) {
        if (group.name.empty())
            continue;
        if (foldedFirst(group.name) == letter)
            byLetter.push_back(group.firstSlide);
        if (wholeKey.size() > 1 && foldedText(group.name) == wholeKey) {
            byName.push_back(group.firstSlide);
        }
    }
    return byName.empty() ? nextStart(std::move(byLetter), from)
                          : nextStart(std::move(byName), from);
}

int DeckInfo::backgroundCoveringPageCount() const {
    if (!background || std::holds_alternative<backdrop::None>(*background) || !made)
        return 0;
    return static_cast<int>(std::count_if(made->begin(), made->end(), coversBackground));
}

// The presentation background is the built-in Drift loop. Made slides that
// would hide it turn clear, so that the new deck shows it behind its text
// rather than a wall of flat colour; slides with a picture of their own keep it.
MediaItem MediaItem::applyingPresentationBackground() const {
    MediaItem item = *this;
    if (!item.deck)
        return item;
    item.deck->background = backdrop::BuiltIn{BuiltInBackdrop::drift};
    if (item.deck->made) {
        for (MadeSlide& slide : *item.deck->made) {
            if (coversBackground(slide))
                slide.isClear = true;
        }
    }
    return item;
}

} // namespace velarion
