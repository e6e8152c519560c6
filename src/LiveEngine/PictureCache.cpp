#include "LiveEngine/PictureCache.h"

namespace velarion {

std::optional<StillImage> PictureCache::find(const std::string& path) {
    auto found = byPath_.find(path);
    if (found == byPath_.end()) return std::nullopt;
    entries_.splice(entries_.begin(), entries_, found->second);
    return found->second->second;
}

void PictureCache::insert(const std::string& path, const StillImage& picture) {
    erase(path);
    const std::size_t size = bytesOf(picture);
    if (size > limitBytes_) return;
    while (!entries_.empty() && bytes_ + size > limitBytes_) {
        const std::string oldest = entries_.back().first;
        erase(oldest);
    }
    entries_.emplace_front(path, picture);
    byPath_[path] = entries_.begin();
    bytes_ += size;
}

void PictureCache::erase(const std::string& path) {
    auto found = byPath_.find(path);
    if (found == byPath_.end()) return;
    bytes_ -= bytesOf(found->second->second);
    entries_.erase(found->second);
    byPath_.erase(found);
}

} // namespace velarion
