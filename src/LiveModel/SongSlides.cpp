// A song's lyric slides: how a section divides into slides, the boxes of the
// three looks, and the deck of slides drawn from the sung order.

#include "LiveModel/Song.h"
#include "LiveModel/SongRedraw.h"

#include "Identity/DerivedUuid.h"

#include <algorithm>

namespace velarion {

namespace {

constexpr int white = 0xFFFFFF;
constexpr int lightGrey = 0xD8D8D8;

TextBox lookBox(std::string text, double y, double height, double size, bool bold, int color) {
    TextBox box;
    box.id = Uuid::random();
    box.text = std::move(text);
    box.x = 0.06;
    box.y = y;
    box.width = 0.88;
    box.height = height;
    box.size = size;
    box.bold = bold;
    box.color = color;
    box.align = TextAlign::center;
    box.bullets = false;
    return box;
}

// Pieces of `text` between separators, empty ones left out.
std::vector<std::string> pieces(std::string_view text, std::string_view separator) {
    std::vector<std::string> found;
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t end = std::min(text.find(separator, start), text.size());
        if (end > start)
            found.emplace_back(text.substr(start, end - start));
        start = end + separator.size();
    }
    return found;
}

std::string joinedLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        if (!text.empty())
            text += '\n';
        text += line;
    }
    return text;
}

struct NotedSlide {
    const SongSection* section = nullptr;
    std::size_t appearance = 0; // index among the sung sections
    int occurrence = 0;
    int page = 0;
    const std::string* text = nullptr;
};

// What the operator reads on a slide: the next part's name when the next
// slide begins one, nothing while the part goes on.
std::string nextNote(const std::vector<NotedSlide>& noted, std::size_t index) {
    if (index + 1 == noted.size())
        return "End of song";
    const NotedSlide& next = noted[index + 1];
    if (next.appearance == noted[index].appearance)
        return {};
    return "Next: " + next.section->name;
}

} // namespace

TextBox lyricBox(LyricLook look, std::string text) {
    if (look == LyricLook::lowerThird)
        return lookBox(std::move(text), 0.7, 0.24, 60, true, white);
    return lookBox(std::move(text), 0.14, 0.72, 84, true, white);
}

TextBox creditsBox(LyricLook look, std::string text) {
    if (look == LyricLook::lowerThird) {
        return lookBox(std::move(text), 0.64, 0.05, 24, false, lightGrey);
    }
    return lookBox(std::move(text), 0.9, 0.06, 26, false, lightGrey);
}

void keyGeneratedSlide(MadeSlide& slide, const Uuid& slideID) {
    slide.id = slideID;
    if (slide.boxes) {
        for (std::size_t place = 0; place < slide.boxes->size(); ++place)
            (*slide.boxes)[place].id = derivedUuid(slideID, place);
    }
    if (slide.lyricSource) {
        slide.lyricSource->id = slideID;
        auto& baseline = slide.lyricSource->baseline.boxes;
        for (std::size_t place = 0; place < baseline.size(); ++place) baseline[place].id = derivedUuid(slideID, place);
    }
}

std::vector<std::vector<std::string>> Song::parts(const std::vector<std::string>& of, int limit) {
    std::vector<std::vector<std::string>> divided;
    if (of.empty())
        return divided;
    const std::size_t most = static_cast<std::size_t>(std::max(limit, 1));
    const std::size_t count = (of.size() + most - 1) / most;
    const std::size_t each = (of.size() + count - 1) / count;
    for (std::size_t start = 0; start < of.size(); start += each) {
        const auto first = of.begin() + static_cast<std::ptrdiff_t>(start);
        const auto last =
            of.begin() + static_cast<std::ptrdiff_t>(std::min(start + each, of.size()));
        divided.emplace_back(first, last);
    }
    return divided;
}

std::vector<std::string> SongSection::slides(int linesPerSlide) const {
    const int limit = std::clamp(linesPerSlide, Song::minLinesPerSlide, Song::maxLinesPerSlide);
    std::vector<std::string> texts;
    for (const std::string& paragraph : pieces(text, "\n\n")) {
        for (const auto& part : Song::parts(pieces(paragraph, "\n"), limit)) {
            texts.push_back(joinedLines(part));
        }
    }
    return texts;
}

MadeSlide Song::slide(std::string showing) const {
    MadeSlide made;
    made.id = Uuid::random();
    made.layout = MadeSlide::Layout::title;
    made.color = 0;
    // Lyrics stand over whatever plays behind them, except on black.
    if (look != LyricLook::onBlack)
        made.isClear = true;
    made.boxes = std::vector<TextBox>{lyricBox(look, std::move(showing))};
    return made;
}

std::vector<MadeSlide> Song::madeSlides() const {
    const std::vector<const SongSection*> sung = sungSections();
    // A section sung again divides the same way, so each is divided once.
    std::unordered_map<Uuid, std::vector<std::string>> slidesBySection;
    std::unordered_map<Uuid, int> appearances;
    std::vector<NotedSlide> noted;
    for (std::size_t appearance = 0; appearance < sung.size(); ++appearance) {
        const SongSection* section = sung[appearance];
        auto [texts, isNew] = slidesBySection.try_emplace(section->id);
        if (isNew)
            texts->second = section->slides(linesPerSlide);
        const int occurrence = appearances[section->id]++;
        for (std::size_t page = 0; page < texts->second.size(); ++page) {
            noted.push_back(
                {section, appearance, occurrence, static_cast<int>(page), &texts->second[page]});
        }
    }

    const std::string creditsText = showsCredits ? credits() : std::string();
    std::vector<MadeSlide> made;
    made.reserve(noted.size());
    for (std::size_t index = 0; index < noted.size(); ++index) {
        const NotedSlide& from = noted[index];
        MadeSlide slide = this->slide(*from.text);
        slide.sectionName = from.section->name;
        if (index == 0 && !creditsText.empty()) {
            slide.boxes->push_back(creditsBox(look, creditsText));
        }
        // Generated boxes take ids from the slide's id and their place, not
        // new random ones: an unchanged redraw then gives equal slides, the
        // same page names, and draws nothing.
        keyGeneratedSlide(slide, slide.id);
        slide.notes = nextNote(noted, index);
        LyricSlideBaseline baseline{slide.color, slide.isClear.value_or(false), slide.notes,
                                    slide.sectionName, *slide.boxes};
        slide.lyricSource = LyricSlideSource{slide.id, from.section->id, from.occurrence, from.page,
                                             std::move(baseline)};
        made.push_back(std::move(slide));
    }
    return made;
}

std::vector<std::string> Song::lyricLines(const MadeSlide& of) const {
    if (!of.lyricSource)
        return {};
    const LyricSlideSource& source = *of.lyricSource;
    if (of.boxes) {
        // The generated lyric box is the baseline's first; it keeps its id
        // through hand edits.
        if (source.baseline.boxes.empty())
            return {};
        const Uuid& lyricID = source.baseline.boxes.front().id;
        const auto box =
            std::find_if(of.boxes->begin(), of.boxes->end(),
                         [&](const TextBox& candidate) { return candidate.id == lyricID; });
        if (box == of.boxes->end())
            return {};
        return pieces(box->text, "\n");
    }
    const SongSection* section = this->section(source.sectionID);
    if (section == nullptr || source.page < 0)
        return {};
    const std::vector<std::string> texts = section->slides(linesPerSlide);
    if (static_cast<std::size_t>(source.page) >= texts.size())
        return {};
    return pieces(texts[static_cast<std::size_t>(source.page)], "\n");
}

} // namespace velarion
