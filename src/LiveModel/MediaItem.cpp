#include "LiveModel/MediaItem.h"

namespace velarion {

bool MediaItem::isMachineName(std::string_view text) { return Uuid::parse(text).has_value(); }

std::string MediaItem::readableName(std::string_view name, MediaKind kind) {
    return std::string(isMachineName(name) ? displayName(kind) : name);
}

} // namespace velarion
