#pragma once
// A song's lyrics as the operator pasted them: sections, sung order, credits,
// and the lyric slides made from them.
//
// A Song is a plain value. Parsing never fails: any text gives a song, at
// worst one with no sections. The song is the source of its deck's slides;
// redrawing them while keeping hand edits lives in SongRedraw.h.
// Thread: pure functions over plain values; any thread. New slides and
// sections take fresh random identifiers.

#include "LiveModel/DeckInfo.h"
#include "LiveModel/EnumNames.h"
#include "LiveModel/LyricSlideSource.h"
#include "LiveModel/TextBox.h"
#include "Identity/Uuid.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace velarion {

enum class LyricLook { overBackground, lowerThird, onBlack };
VELARION_ENUM_NAMES(LyricLook, "overBackground", "lowerThird", "onBlack");

// The box the lyrics stand in, and the smaller one for the credits, in the
// look's place on the slide; each with a new id.
TextBox lyricBox(LyricLook look, std::string text);
TextBox creditsBox(LyricLook look, std::string text);

struct SongSection {
    Uuid id;
    std::string name;
    std::string text; // lines joined by '\n'; blank lines are slide breaks

    // One text per slide: the text split at blank lines, each paragraph
    // divided as `Song::parts` divides lines. `linesPerSlide` is limited to
    // 1 ... 8.
    std::vector<std::string> slides(int linesPerSlide) const;

    friend bool operator==(const SongSection&, const SongSection&) = default;
};

struct Song {
    static constexpr int minLinesPerSlide = 1;
    static constexpr int maxLinesPerSlide = 8;

    std::string title;
    std::string author;
    std::string copyright;
    std::string ccli;
    std::vector<SongSection> sections; // each distinct part once
    std::vector<Uuid> order;           // section ids in sung order
    LyricLook look = LyricLook::overBackground;
    int linesPerSlide = 2;
    bool showsCredits = true;

    // A song from pasted lyrics: detail lines ("Title: …", "CCLI Song # …")
    // anywhere, headings ("[Bridge]", "Verse 2:"), and without headings
    // blocks divided by blank lines, a block sung twice being the chorus.
    static Song parsing(std::string_view text, LyricLook look, int linesPerSlide);

    // Divides lines into the fewest parts of at most `limit` lines (at least
    // 1), as evenly as a section's slides: the part count is the lines over
    // the limit rounded up, each part holds the lines over the part count
    // rounded up and the last what is left, so 5 lines at 4 give 3 and 2.
    // No lines give no parts. Live decks cut a slide into parts with it for
    // screens that show fewer lines.
    static std::vector<std::vector<std::string>> parts(const std::vector<std::string>& of,
                                                       int limit);

    // Text that parses back into this song's sections and order.
    std::string text() const;
    // The section of each `order` entry, skipping entries with no section;
    // the pointers are into `sections` and live as long as it is unchanged.
    std::vector<const SongSection*> sungSections() const;
    // The first section with that id, or null.
    const SongSection* section(const Uuid& id) const;
    // Title · author · © copyright · CCLI Song # number, of those present.
    std::string credits() const;
    // A short code per section, unique in the song: V1, C, PC, B2 …
    std::unordered_map<Uuid, std::string> codes() const;
    // The codes of `order` joined by one blank: "V1 C V2 C".
    std::string orderText() const;
    // Sets `order` from codes or names without blanks, in any case, divided
    // by blanks, commas or line breaks. Returns the words it didn't know,
    // which are left out.
    std::vector<std::string> setOrder(std::string_view fromText);

    // The song's slides in sung order, each carrying its lyric source with
    // the baseline it was drawn with.
    std::vector<MadeSlide> madeSlides() const;
    // A bare lyric slide of this song's look showing `showing`, new id.
    MadeSlide slide(std::string showing) const;
    // The lines of a lyric slide's lyric box as it stands, hand edits
    // included; for a slide of the older form without boxes, the lines the
    // song gives its source. None for a slide without a lyric source or whose
    // lyric box was removed.
    std::vector<std::string> lyricLines(const MadeSlide& of) const;

    // This song with the ids of `from`'s sections where a section carries
    // on: the same id, else the same name in any case, else the same text;
    // each old id is used once and `order` follows. Keeps slide sources valid
    // through a rewrite of the lyrics.
    Song preservingSectionIDs(const Song& from) const;

    friend bool operator==(const Song&, const Song&) = default;
};

} // namespace velarion
