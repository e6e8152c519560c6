#pragma once
// The pictures an operator can put on one screen to check it: colour bars, a
// grid, plain white, plain black. Stored by case name; drawn elsewhere.
//
// Thread: a plain value; any thread.

#include "LiveModel/EnumNames.h"

namespace velarion {

enum class OutputTestPattern { colorBars, grid, white, black };
VELARION_ENUM_NAMES(OutputTestPattern, "colorBars", "grid", "white", "black");

} // namespace velarion
