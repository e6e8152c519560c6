#include "Live/ShowSession.h"

namespace velarion {

void ShowSession::opened(const std::filesystem::path& package) {
    preferences_.set(preferenceKeys::openShow, package.string());
}

void ShowSession::closed() {
    preferences_.remove(preferenceKeys::openShow.name);
}

std::optional<std::filesystem::path> ShowSession::takeShowToRecover() {
    const auto stored = preferences_.stored(preferenceKeys::openShow);
    closed();
    if (!stored || stored->empty()) return std::nullopt;
    std::error_code error;
    if (!std::filesystem::exists(*stored, error)) return std::nullopt;
    return std::filesystem::path(*stored);
}

} // namespace velarion
