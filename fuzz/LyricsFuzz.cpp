// Feeds arbitrary text to the lyrics parser, the way an operator's paste or
// an agent's add_song reaches it. Parsing never refuses, so every input goes
// on through the song's text, its slides and a redraw. A crash, a sanitizer
// report, a hang, a blown memory limit or a broken invariant is a bug.
//
// The look and lines per slide come from the input's length, so the kept
// seeds stay plain lyric files.

#include "FuzzCheck.h"
#include "LiveModel/AsciiCase.h"
#include "LiveModel/Song.h"
#include "LiveModel/SongRedraw.h"

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace velarion;

// What is sung, without ids: parsing a song's text may number or merge
// sections differently only where their names match in any case and their
// words are the same.
std::vector<std::pair<std::string, std::string>> sungWords(const Song& song) {
    std::vector<std::pair<std::string, std::string>> sung;
    for (const SongSection* section : song.sungSections()) {
        sung.emplace_back(asciiLowercased(section->name), section->text);
    }
    return sung;
}

std::size_t expectedSlideCount(const Song& song) {
    std::size_t count = 0;
    for (const SongSection* section : song.sungSections()) {
        count += section->slides(song.linesPerSlide).size();
    }
    return count;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = textOf(data, size);
    const auto look = static_cast<LyricLook>(size % 3);
    const int linesPerSlide = static_cast<int>(size / 3 % 11) - 1; // -1 ... 9, to be limited

    const Song song = Song::parsing(text, look, linesPerSlide);
    require(song.linesPerSlide >= Song::minLinesPerSlide &&
            song.linesPerSlide <= Song::maxLinesPerSlide);
    require(song.sungSections().size() == song.order.size());
    for (const SongSection& section : song.sections) {
        require(!section.name.empty() && !section.text.empty());
    }

    const std::vector<MadeSlide> slides = song.madeSlides();
    require(slides.size() == expectedSlideCount(song));
    for (const MadeSlide& slide : slides) {
        require(slide.lyricSource && slide.lyricSource->id == slide.id);
        require(!hasManualLyricEdits(slide));
        require(!song.lyricLines(slide).empty());
    }

    // The text parses back into what is sung, with the same credits.
    const Song again = Song::parsing(song.text(), look, linesPerSlide);
    require(sungWords(again) == sungWords(song));
    require(again.credits() == song.credits());

    // A redraw onto the reparsed song keeps every slide, none being edited.
    MediaItem item;
    item.kind = MediaKind::deck;
    item.song = song;
    item.deck = DeckInfo{};
    item.deck->made = slides;
    const MediaItem redrawn = updatingSong(item, again);
    require(redrawn.deck->made->size() == expectedSlideCount(again));

    // Codes may hold any character a name begins with, so reading the order
    // back needs only to be safe.
    Song reordered = song;
    reordered.setOrder(song.orderText());
    return 0;
}
