#pragma once
// A 128-bit identifier for layers, pictures and video surfaces in a scene.
// Laid out like the show document's Uuid (same 16 bytes), so the engine can
// carry one over by copying bytes while this library stays free of the
// document. A plain value; any thread.

#include <array>
#include <compare>
#include <cstdint>
#include <functional>

namespace velarion {

struct SceneID {
    std::array<std::uint8_t, 16> bytes{};

    // A fresh random (version 4) identifier; thread-safe.
    static SceneID fresh();

    friend bool operator==(const SceneID&, const SceneID&) = default;
    friend auto operator<=>(const SceneID&, const SceneID&) = default;
};

} // namespace velarion

template <> struct std::hash<velarion::SceneID> {
    std::size_t operator()(const velarion::SceneID& id) const noexcept {
        std::uint64_t a = 0, b = 0;
        for (int i = 0; i < 8; ++i) {
            a = (a << 8) | id.bytes[i];
            b = (b << 8) | id.bytes[i + 8];
        }
        return std::hash<std::uint64_t>{}(a ^ (b * 0x9E3779B97F4A7C15ull));
    }
};
