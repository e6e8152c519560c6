#pragma once
// Redrawing a song deck's slides after its song changed, keeping what the
// operator did by hand on single slides.
//
// Each generated slide carries a LyricSlideSource: the section, the how-many-
// th appearance of it and the page within it, plus a baseline of the slide as
// generated. A redraw pairs old and new slides by section, appearance and
// page; a field that still equals its baseline follows the new lyrics, a
// field the operator changed keeps the operator's value. Slides the operator
// added stay in their place behind the slide before them.
//
// These are operations of MediaItem, MadeSlide and TextBox, written as free
// functions taking the value first. Thread: pure functions over plain values;
// any thread. Slides drawn new take fresh random ids.

#include "LiveModel/DeckInfo.h"
#include "LiveModel/MediaItem.h"
#include "LiveModel/Song.h"
#include "LiveModel/TextBox.h"

#include <vector>

namespace velarion {

// The item with `song` as its song and its deck's made slides drawn anew from
// it, hand edits kept. An item without a deck gets a deck of made slides.
MediaItem updatingSong(const MediaItem& item, const Song& song);

// Gives a song deck's generated slides their sources: an older file keeps
// them in the deck's `lyricSources`, apart from the slides, which the editor
// and a redraw can't follow through moved or added slides. Each source goes
// onto the slide of its id and the deck-level list is dropped. Returns
// whether anything changed.
bool prepareSongSlidesForEditing(MediaItem& item);

// The new deck's slides: `with`, the freshly generated slides, each paired
// with the item's old slide of the same section, appearance and page and
// merged with it (taking its id); old slides without a pair stay in place
// when they carry hand edits and go otherwise.
std::vector<MadeSlide> reconcileGenerated(const MediaItem& item, std::vector<MadeSlide> with);

// The old generated `slide` carrying the lyrics of its newly generated pair
// `from`: `from` itself with the old id when the slide has no hand edits,
// otherwise the slide with every field the operator left alone following
// `from`. The result has the slide's id and `from`'s source.
MadeSlide mergingLyrics(const MadeSlide& slide, const MadeSlide& from);

// Gives a generated slide the id `slideID`, and each of its boxes (and of its
// lyric baseline's) an id derived from `slideID` and the box's place, so
// that drawing the same song again gives equal slides, and equal slides
// keep their page pictures.
void keyGeneratedSlide(MadeSlide& slide, const Uuid& slideID);

// True when the operator changed the slide since it was generated, or when
// it has no source to tell by.
bool hasManualLyricEdits(const MadeSlide& slide);

// `box` with each field that still equals the old generated box `from` taken
// from the new generated box `to`; fields the operator changed stay.
TextBox mergingDefaults(const TextBox& box, const TextBox& from, const TextBox& to);

} // namespace velarion
