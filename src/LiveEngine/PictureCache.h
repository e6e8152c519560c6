#pragma once
// PictureCache: decoded pictures by file path, bounded by their pixel bytes,
// the least recently used going first. A picture on screen stays alive
// through the scene that shows it, so eviction only drops the cache's hold.
//
// Contract: a plain value on the main thread. A picture larger than the
// whole bound is handed back but not kept.

#include "ShowStage/StillImage.h"

#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

namespace velarion {

class PictureCache {
public:
    // 256 MiB: about 32 full-HD pages of 8 MB each, so stepping back and forth
    // through a deck or between a show's usual pictures doesn't load again.
    static constexpr std::size_t defaultLimitBytes = std::size_t{256} << 20;

    explicit PictureCache(std::size_t limitBytes = defaultLimitBytes) : limitBytes_(limitBytes) {}

    // The picture, now the most recently used; none when not held.
    std::optional<StillImage> find(const std::string& path);
    void insert(const std::string& path, const StillImage& picture);
    void erase(const std::string& path);

    std::size_t bytes() const { return bytes_; }
    std::size_t size() const { return byPath_.size(); }

private:
    using Entries = std::list<std::pair<std::string, StillImage>>; // most recent first
    static std::size_t bytesOf(const StillImage& picture) { return picture.bgra().size(); }

    std::size_t limitBytes_;
    std::size_t bytes_ = 0;
    Entries entries_;
    std::unordered_map<std::string, Entries::iterator> byPath_;
};

} // namespace velarion
