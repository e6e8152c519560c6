// Telling the operator's hand edits on a lyric slide from what the generator
// drew, and carrying them over onto newly generated lyrics.

#include "LiveModel/SongRedraw.h"

#include <unordered_map>

namespace velarion {

namespace {

template <class T> T followed(const T& current, const T& baseline, const T& generated) {
    return current == baseline ? generated : current;
}

// The slide's boxes against the generated ones: a box is matched to its
// baseline by id, and to the new generated box at the baseline's place. A box
// the operator added stays; one the operator removed isn't brought back; one
// the generator no longer draws goes unless the operator changed it; a box
// the generator draws now for the first time is added.
std::vector<TextBox> mergedBoxes(const std::vector<TextBox>& current,
                                 const std::vector<TextBox>& baseline,
                                 const std::vector<TextBox>& generated) {
    std::unordered_map<Uuid, std::size_t> baselineIndex;
    for (std::size_t i = 0; i < baseline.size(); ++i)
        baselineIndex.emplace(baseline[i].id, i);
    std::vector<TextBox> merged;
    for (const TextBox& box : current) {
        const auto found = baselineIndex.find(box.id);
        if (found == baselineIndex.end()) {
            merged.push_back(box);
            continue;
        }
        const std::size_t index = found->second;
        if (index < generated.size()) {
            merged.push_back(mergingDefaults(box, baseline[index], generated[index]));
        } else if (box != baseline[index]) {
            merged.push_back(box);
        }
    }
    for (std::size_t i = baseline.size(); i < generated.size(); ++i)
        merged.push_back(generated[i]);
    return merged;
}

} // namespace

TextBox mergingDefaults(const TextBox& box, const TextBox& from, const TextBox& to) {
    TextBox merged;
    merged.id = followed(box.id, from.id, to.id);
    merged.text = followed(box.text, from.text, to.text);
    merged.x = followed(box.x, from.x, to.x);
    merged.y = followed(box.y, from.y, to.y);
    merged.width = followed(box.width, from.width, to.width);
    merged.height = followed(box.height, from.height, to.height);
    merged.font = followed(box.font, from.font, to.font);
    merged.size = followed(box.size, from.size, to.size);
    merged.bold = followed(box.bold, from.bold, to.bold);
    merged.color = followed(box.color, from.color, to.color);
    merged.align = followed(box.align, from.align, to.align);
    merged.bullets = followed(box.bullets, from.bullets, to.bullets);
    return merged;
}

bool hasManualLyricEdits(const MadeSlide& slide) {
    if (!slide.lyricSource)
        return true;
    const LyricSlideBaseline& baseline = slide.lyricSource->baseline;
    if (slide.color != baseline.color || slide.isClear.value_or(false) != baseline.isClear ||
        slide.notes != baseline.notes || slide.sectionName != baseline.sectionName) {
        return true;
    }
    if (slide.imageID || !slide.title.empty() || !slide.text.empty() || slide.importedPage ||
        (slide.sectionNames && !slide.sectionNames->empty())) {
        return true;
    }
    // Only a slide of the older form, without boxes, needs its layout's.
    return slide.boxes ? *slide.boxes != baseline.boxes : slide.effectiveBoxes() != baseline.boxes;
}

MadeSlide mergingLyrics(const MadeSlide& slide, const MadeSlide& generated) {
    const bool edited = hasManualLyricEdits(slide);
    // The new slide takes the old one's id, and its generated boxes the ids
    // that id gives them: a slide whose lyrics and look didn't change comes
    // out equal to the old one and keeps its page.
    MadeSlide from = generated;
    keyGeneratedSlide(from, slide.id);
    // What the generator never sets (layout, picture, texts of the older
    // layouts, imported page, group names) stays the operator's.
    MadeSlide merged = edited ? slide : from;
    if (edited && slide.lyricSource) {
        const LyricSlideBaseline& baseline = slide.lyricSource->baseline;
        merged.color = followed(slide.color, baseline.color, from.color);
        merged.isClear =
            slide.isClear.value_or(false) == baseline.isClear ? from.isClear : slide.isClear;
        merged.notes = followed(slide.notes, baseline.notes, from.notes);
        merged.sectionName = followed(slide.sectionName, baseline.sectionName, from.sectionName);
        merged.boxes = mergedBoxes(slide.effectiveBoxes(), baseline.boxes, from.effectiveBoxes());
    }
    if (edited)
        merged.lyricSource = from.lyricSource;
    merged.id = slide.id;
    if (merged.lyricSource)
        merged.lyricSource->id = slide.id;
    return merged;
}

} // namespace velarion
