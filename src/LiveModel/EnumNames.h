#pragma once
// Case names of plain enumerations, as stored in JSON and shown in logs.
// Each enumeration specialises `enumNames<E>` with its names in case order;
// `toString` and `parseEnum` then work for it.

#include <array>
#include <optional>
#include <string_view>

namespace velarion {

template <class E> inline constexpr auto enumNames = nullptr;

template <class E> constexpr std::string_view toString(E value) {
    return enumNames<E>[static_cast<std::size_t>(value)];
}

template <class E> constexpr std::optional<E> parseEnum(std::string_view text) {
    for (std::size_t i = 0; i < enumNames<E>.size(); ++i) {
        if (enumNames<E>[i] == text) return static_cast<E>(i);
    }
    return std::nullopt;
}

template <class E> constexpr std::size_t enumCount() { return enumNames<E>.size(); }

} // namespace velarion

#define VELARION_ENUM_NAMES(E, ...)                                                                \
    template <>                                                                                    \
    inline constexpr auto enumNames<E> = std::to_array<std::string_view>({__VA_ARGS__})
