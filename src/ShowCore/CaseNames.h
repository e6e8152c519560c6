#pragma once
// Case names of the show graph's plain enumerations, as stored in JSON.
// Each enumeration specialises `caseNames<E>` with its names in case order;
// `toString` and `parseCase` then work for it.

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace velarion::showcore {

template <class E> inline constexpr auto caseNames = nullptr;

template <class E> constexpr std::string_view toString(E value) {
    return caseNames<E>[static_cast<std::size_t>(value)];
}

template <class E> constexpr std::optional<E> parseCase(std::string_view text) {
    for (std::size_t i = 0; i < caseNames<E>.size(); ++i) {
        if (caseNames<E>[i] == text) return static_cast<E>(i);
    }
    return std::nullopt;
}

} // namespace velarion::showcore

#define SHOWCORE_CASE_NAMES(E, ...)                                                                \
    template <>                                                                                    \
    inline constexpr auto caseNames<E> = std::to_array<std::string_view>({__VA_ARGS__})
