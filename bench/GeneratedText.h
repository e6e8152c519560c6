#pragma once
// Text for generated shows: titles, names, notes and lyrics that read like an
// operator's, with some non-ASCII words (accents, Greek, Cyrillic, Hebrew,
// CJK, emoji) and the characters JSON must escape (quotes, line breaks).

#include "SeededRandom.h"

#include <string>

namespace velarion::bench {

// A capitalised title of `minWords` to `maxWords` words; now and then with a
// non-ASCII word.
std::string titleText(SeededRandom& random, int minWords, int maxWords);
// A sentence or two of operator notes, sometimes with a quotation.
std::string noteText(SeededRandom& random);
// A person's name, as credits and speakers appear.
std::string personName(SeededRandom& random);
// One sung line of a lyric.
std::string lyricLine(SeededRandom& random);
// A song as an operator pastes it, the same every run: credits, then 120
// lyric lines under headings (intro, four verses, pre-chorus, chorus,
// bridge, tag), with repeats and slide breaks.
std::string songLyrics();
// A name safe to use as a file name part.
std::string fileStem(SeededRandom& random);

} // namespace velarion::bench
