#include "GeneratedText.h"

#include <array>
#include <string_view>

namespace velarion::bench {

namespace {

constexpr std::array<std::string_view, 48> words = {
    "grace",  "light",   "morning", "river",   "mountain", "hope",    "song",    "heart",
    "sing",   "praise",  "glory",   "faith",   "love",     "peace",   "joy",     "holy",
    "king",   "name",    "rise",    "shine",   "forever",  "mercy",   "wonder",  "spirit",
    "strong", "home",    "open",    "door",    "hands",    "sky",     "welcome", "together",
    "bread",  "water",   "harvest", "evening", "stars",    "journey", "shepherd", "field",
    "garden", "silence", "bright",  "voices", "city",     "table",   "kindness", "road"};

// Real words of other scripts, so that text is valid UTF-8 of every width.
constexpr std::array<std::string_view, 14> foreignWords = {
    "Café",   "Grüße",  "Señor",    "Ἀλληλούια", "Kyrie eléison", "主の祈り", "찬양",
    "Добро",  "שָׁלוֹם", "Ökumene", "Ave María", "Fête",         "🎵",       "Łódź"};

constexpr std::array<std::string_view, 16> givenNames = {
    "Anna", "José", "Zoë",   "Søren", "Łukasz", "Miriam", "Chidi", "Hannah",
    "Mei",  "Jörg", "Aroha", "David", "Ingrid", "Tomás",  "Yuki",  "Grace"};

constexpr std::array<std::string_view, 12> familyNames = {
    "Lindqvist", "Okafor", "Müller", "García", "Nakamura", "O'Brien",
    "Kowalski",  "Dubois", "Ngata",  "Jensen", "Castro",   "Brennan"};

template <std::size_t N>
std::string_view pickFrom(SeededRandom& random, const std::array<std::string_view, N>& list) {
    return list[random.below(N)];
}

void capitalise(std::string& text) {
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') {
        text[0] = static_cast<char>(text[0] - 'a' + 'A');
    }
}

std::string wordRun(SeededRandom& random, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        if (i > 0) text += ' ';
        text += pickFrom(random, words);
    }
    return text;
}

} // namespace

std::string titleText(SeededRandom& random, int minWords, int maxWords) {
    std::string text = wordRun(random, random.between(minWords, maxWords));
    capitalise(text);
    if (random.chance(0.1)) {
        text += " – ";
        text += pickFrom(random, foreignWords);
    }
    return text;
}

std::string noteText(SeededRandom& random) {
    std::string text = wordRun(random, random.between(4, 14));
    capitalise(text);
    text += '.';
    if (random.chance(0.25)) {
        text += " Cue on \"";
        text += wordRun(random, random.between(1, 3));
        text += "\".";
    }
    if (random.chance(0.15)) {
        text += '\n';
        text += pickFrom(random, foreignWords);
        text += '!';
    }
    return text;
}

std::string personName(SeededRandom& random) {
    // Two statements: the operands of + are unsequenced, and the order of the
    // draws must not depend on the compiler.
    std::string name(pickFrom(random, givenNames));
    name += ' ';
    name += pickFrom(random, familyNames);
    return name;
}

std::string lyricLine(SeededRandom& random) {
    std::string text = wordRun(random, random.between(4, 8));
    capitalise(text);
    if (random.chance(0.05)) {
        text += ", ";
        text += pickFrom(random, foreignWords);
    }
    return text;
}

std::string fileStem(SeededRandom& random) {
    std::string text = wordRun(random, random.between(1, 3));
    capitalise(text);
    if (random.chance(0.05)) {
        text += ' ';
        text += pickFrom(random, foreignWords);
    }
    text += ' ';
    text += std::to_string(random.between(1, 999));
    return text;
}

namespace {

struct Part {
    const char* heading;
    int lines; // 0: the heading alone, a repeat
};

// 120 lyric lines: intro 8, four verses of 16, pre-chorus 8, chorus 16,
// bridge 16, tag 8.
constexpr Part songParts[] = {
    {"Intro", 8},      {"Verse 1", 16}, {"Pre-Chorus", 8}, {"Chorus", 16}, {"Verse 2", 16},
    {"Pre-Chorus", 0}, {"Chorus", 0},   {"Verse 3", 16},   {"Chorus", 0},  {"Bridge", 16},
    {"Chorus", 0},     {"Verse 4", 16}, {"Chorus", 0},     {"Tag", 8}};

} // namespace

std::string songLyrics() {
    SeededRandom random(7);
    std::string text = "Title: " + titleText(random, 2, 4) + "\n";
    text += "Author: " + personName(random) + "\n";
    text += "Copyright: © 2024 Lantern Songs\n";
    text += "CCLI Song # 7654321\n\n";
    for (const Part& part : songParts) {
        text += '[';
        text += part.heading;
        text += "]\n";
        for (int line = 0; line < part.lines; ++line) {
            // A slide break halfway through the longer parts.
            if (part.lines > 8 && line == part.lines / 2)
                text += '\n';
            text += lyricLine(random) + "\n";
        }
        text += '\n';
    }
    return text;
}

} // namespace velarion::bench
