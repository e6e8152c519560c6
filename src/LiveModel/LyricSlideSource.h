#pragma once
// Where a generated lyric slide came from, and how it looked when generated,
// so that a redraw can tell the operator's hand edits from the generator's.

#include "LiveModel/TextBox.h"
#include "Identity/Uuid.h"

#include <optional>
#include <string>
#include <vector>

namespace velarion {

struct LyricSlideBaseline {
    int color = 0;
    bool isClear = false;
    std::string notes;
    std::optional<std::string> sectionName;
    std::vector<TextBox> boxes;
    friend bool operator==(const LyricSlideBaseline&, const LyricSlideBaseline&) = default;
};

struct LyricSlideSource {
    Uuid id; // the generated slide's identity
    Uuid sectionID;
    int occurrence = 0; // earlier sung appearances of the section
    int page = 0;       // slide within this appearance
    LyricSlideBaseline baseline;
    friend bool operator==(const LyricSlideSource&, const LyricSlideSource&) = default;
};

} // namespace velarion
