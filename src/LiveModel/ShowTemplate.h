#pragma once
// The starting shows of a new document. Templates are stored (and named by
// the agent) by case name, which is also their `id`; `name` and `summary` are
// what the operator reads when choosing one.
//
// Thread: pure functions over plain values; any thread. `make` draws new
// UUIDs.

#include "LiveModel/EnumNames.h"
#include "LiveModel/Show.h"

#include <string_view>

namespace velarion {

enum class ShowTemplate { blank, presentation, conference, panel, awards };
VELARION_ENUM_NAMES(ShowTemplate, "blank", "presentation", "conference", "panel", "awards");

namespace showTemplate {

inline std::string_view id(ShowTemplate showTemplate) {
    return toString(showTemplate);
}
std::string_view name(ShowTemplate showTemplate);
std::string_view summary(ShowTemplate showTemplate);

// A new show with the template's sections, cues and made decks, all with
// new UUIDs. The title is trimmed; an empty one becomes "Untitled show".
Show make(ShowTemplate showTemplate, std::string_view title);

} // namespace showTemplate

} // namespace velarion
