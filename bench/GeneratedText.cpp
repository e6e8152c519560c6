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

} // namespace velarion::bench
