#pragma once
// A 128-bit identifier, written as upper-case canonical text
// ("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"). A plain value; any thread.

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace velarion {

struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    // A fresh random (version 4) identifier.
    static Uuid random();
    // Accepts canonical text in either case; anything else gives no value.
    static std::optional<Uuid> parse(std::string_view text);
    // The all-zero identifier.
    static constexpr Uuid nil() { return Uuid{}; }

    std::string text() const;

    friend bool operator==(const Uuid&, const Uuid&) = default;
    friend auto operator<=>(const Uuid&, const Uuid&) = default;
};

} // namespace velarion

template <> struct std::hash<velarion::Uuid> {
    std::size_t operator()(const velarion::Uuid& id) const noexcept {
        std::uint64_t a = 0, b = 0;
        for (int i = 0; i < 8; ++i) {
            a = (a << 8) | id.bytes[i];
            b = (b << 8) | id.bytes[i + 8];
        }
        return std::hash<std::uint64_t>{}(a ^ (b * 0x9E3779B97F4A7C15ull));
    }
};
