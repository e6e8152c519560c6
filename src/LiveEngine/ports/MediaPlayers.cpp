#include "LiveEngine/ports/MediaPlayers.h"

namespace velarion {

bool MediaPlayers::fileExists(const std::filesystem::path& path) const {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

} // namespace velarion
