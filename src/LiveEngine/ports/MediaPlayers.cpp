#include "LiveEngine/ports/MediaPlayers.h"

namespace velarion {

bool MediaPlayers::fileExists(const std::filesystem::path& path) const {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

std::shared_ptr<NetworkInput> MediaPlayers::makeNetworkInput(const SceneID& id, const NDISource& source) const {
    if (source.name.empty()) throw NDIError(NDIError::Case::invalidSource, {});
    if (!networkInputs_) throw NDIError(NDIError::Case::unavailable, noNetworkInputs);
    return networkInputs_(id, source);
}

} // namespace velarion
