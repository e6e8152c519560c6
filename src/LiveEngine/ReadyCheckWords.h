#pragma once
// Small helpers the Ready check's parts share for building their lines.
// Private to the check's sources.

#include "LiveEngine/ReadyItem.h"

#include <cstdint>
#include <string>

namespace velarion::readyWords {

inline constexpr const char* editCueLabel = "Edit cue";

// "1 receiver", "3 receivers".
inline std::string counted(std::uint64_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

inline ReadyItem withFix(ReadyItem item, ReadyFix fix, std::string label) {
    item.fix = std::move(fix);
    item.fixLabel = std::move(label);
    return item;
}

inline void addFix(ReadyItem& item, ReadyFix fix, std::string label) {
    item.fix = std::move(fix);
    item.fixLabel = std::move(label);
}

} // namespace velarion::readyWords
