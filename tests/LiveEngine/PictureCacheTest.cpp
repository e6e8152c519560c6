// The engine's picture cache keeps to its byte bound, least recently used first.

#include "LiveEngine/PictureCache.h"

#include <gtest/gtest.h>

namespace velarion::testing {
namespace {

StillImage pixels(int width) {
    return *StillImage::fromBGRA(width, 1, std::vector<std::uint8_t>(static_cast<std::size_t>(width) * 4));
}

TEST(PictureCache, DropsTheLeastRecentlyUsedToStayWithinItsBytes) {
    PictureCache cache(100); // bytes
    cache.insert("a", pixels(10));
    cache.insert("b", pixels(10));
    ASSERT_TRUE(cache.find("a")); // a is now the more recent
    cache.insert("c", pixels(10));
    EXPECT_TRUE(cache.find("a"));
    EXPECT_FALSE(cache.find("b"));
    EXPECT_TRUE(cache.find("c"));
    EXPECT_EQ(cache.bytes(), 80u);
    cache.insert("a", pixels(5)); // replaced, not counted twice
    EXPECT_EQ(cache.bytes(), 60u);
    cache.insert("huge", pixels(26));
    EXPECT_FALSE(cache.find("huge")) << "larger than the whole bound";
    EXPECT_EQ(cache.size(), 2u);
}

} // namespace
} // namespace velarion::testing
