#pragma once
// Lyrics laid out the ways operators paste them, and a song's shape without
// its ids, shared by the parser, text and slide tests. The hymns are in the
// public domain; the other lyrics are written for these tests.

#include "LiveModel/Song.h"

#include <string>
#include <utility>
#include <vector>

namespace velarion::songTesting {

// Numbered verses, no headings, no refrain.
inline const std::string numberedHymn = "1. Amazing grace! How sweet the sound\n"
                                        "That saved a wretch like me!\n"
                                        "I once was lost, but now am found;\n"
                                        "Was blind, but now I see.\n"
                                        "\n"
                                        "2. 'Twas grace that taught my heart to fear,\n"
                                        "And grace my fears relieved;\n"
                                        "How precious did that grace appear\n"
                                        "The hour I first believed.\n"
                                        "\n"
                                        "3. Through many dangers, toils and snares,\n"
                                        "I have already come;\n"
                                        "'Tis grace hath brought me safe thus far,\n"
                                        "And grace will lead me home.\n";

// A hymn whose refrain is printed after every verse, without headings.
inline const std::string refrainHymn = "Blessed assurance, Jesus is mine!\n"
                                       "O what a foretaste of glory divine!\n"
                                       "\n"
                                       "This is my story, this is my song,\n"
                                       "Praising my Savior all the day long.\n"
                                       "\n"
                                       "Perfect submission, perfect delight,\n"
                                       "Visions of rapture now burst on my sight.\n"
                                       "\n"
                                       "This is my story, this is my song,\n"
                                       "Praising my Savior all the day long.\n";

// Bracket headings, with the chorus repeated by its heading alone.
inline const std::string bracketSong = "Title: Harbour Lights\n"
                                       "Author: Dana Reyes\n"
                                       "\n"
                                       "[Verse 1]\n"
                                       "Morning breaks across the water\n"
                                       "Every wave a song to you\n"
                                       "\n"
                                       "[Chorus]\n"
                                       "Lift the lanterns, light the harbour\n"
                                       "We are coming home again\n"
                                       "\n"
                                       "[Verse 2]\n"
                                       "Evening falls on quiet streets\n"
                                       "Still the tide remembers you\n"
                                       "\n"
                                       "[Chorus]\n"
                                       "\n"
                                       "[Bridge]\n"
                                       "Hold on, hold on\n"
                                       "The night is nearly gone\n"
                                       "\n"
                                       "[Chorus]\n";

// Bare headings with colons, a pre-chorus and its repeat by heading alone,
// and the details at the bottom as song sheets print them.
inline const std::string preChorusSong = "Verse 1:\n"
                                         "Streetlights hum a sleepy tune\n"
                                         "Footsteps echo down the hall\n"
                                         "Pre-Chorus:\n"
                                         "And I know, I know\n"
                                         "Chorus:\n"
                                         "Open up the windows wide\n"
                                         "Let the whole world hear us sing\n"
                                         "Verse 2:\n"
                                         "Rain is tapping on the glass\n"
                                         "Candles flicker, shadows fall\n"
                                         "Pre-Chorus:\n"
                                         "Chorus:\n"
                                         "\n"
                                         "CCLI Song # 7654321\n"
                                         "©: 2021 Northfield Songs\n"
                                         "Writers = Sam Ortiz, Lee Park\n";

// Runs of blank lines before, inside and after sections.
inline const std::string blankRunSong = "\n\n\n"
                                        "[Verse 1]\n"
                                        "\n\n"
                                        "First line here\n"
                                        "Second line here\n"
                                        "\n\n\n\n"
                                        "Third line here\n"
                                        "\n\n"
                                        "[Chorus]\n"
                                        "Only the chorus line\n"
                                        "\n\n\n";

inline std::vector<std::pair<std::string, std::string>> allLayouts() {
    return {{"numberedHymn", numberedHymn},
            {"refrainHymn", refrainHymn},
            {"bracketSong", bracketSong},
            {"preChorusSong", preChorusSong},
            {"blankRunSong", blankRunSong}};
}

// The same text with other line ends.
inline std::string withLineEnds(const std::string& text, const std::string& lineEnd) {
    std::string converted;
    for (char c : text) {
        if (c == '\n') {
            converted += lineEnd;
        } else {
            converted += c;
        }
    }
    return converted;
}

// Sections as "Name: first line/second line", in order.
inline std::vector<std::string> sectionsOf(const Song& song) {
    std::vector<std::string> sections;
    for (const SongSection& section : song.sections) {
        std::string text = section.text;
        for (char& c : text) {
            if (c == '\n')
                c = '/';
        }
        sections.push_back(section.name + ": " + text);
    }
    return sections;
}

// The sung order as section names joined by blanks: "Verse 1 | Chorus".
inline std::string sungOf(const Song& song) {
    std::string sung;
    for (const SongSection* section : song.sungSections()) {
        if (!sung.empty())
            sung += " | ";
        sung += section->name;
    }
    return sung;
}

// The order as indices into `sections`, which tell apart sections of equal
// names; -1 for an id with no section.
inline std::vector<int> orderIndicesOf(const Song& song) {
    std::vector<int> indices;
    for (const Uuid& id : song.order) {
        int found = -1;
        for (std::size_t i = 0; i < song.sections.size(); ++i) {
            if (song.sections[i].id == id)
                found = static_cast<int>(i);
        }
        indices.push_back(found);
    }
    return indices;
}

inline Song parsed(const std::string& text, int linesPerSlide = 2,
                   LyricLook look = LyricLook::overBackground) {
    return Song::parsing(text, look, linesPerSlide);
}

} // namespace velarion::songTesting
