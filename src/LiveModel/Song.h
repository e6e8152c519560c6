#pragma once
// A song's lyrics as the operator pasted them: sections, sung order, credits.

#include "LiveModel/EnumNames.h"
#include "LiveModel/Uuid.h"

#include <string>
#include <vector>

namespace velarion {

enum class LyricLook { overBackground, lowerThird, onBlack };
VELARION_ENUM_NAMES(LyricLook, "overBackground", "lowerThird", "onBlack");

struct SongSection {
    Uuid id;
    std::string name;
    std::string text; // lines joined by '\n'; blank lines are slide breaks
    friend bool operator==(const SongSection&, const SongSection&) = default;
};

struct Song {
    std::string title;
    std::string author;
    std::string copyright;
    std::string ccli;
    std::vector<SongSection> sections; // each distinct part once
    std::vector<Uuid> order;           // section ids in sung order
    LyricLook look = LyricLook::overBackground;
    int linesPerSlide = 2;
    bool showsCredits = true;

    friend bool operator==(const Song&, const Song&) = default;
};

} // namespace velarion
