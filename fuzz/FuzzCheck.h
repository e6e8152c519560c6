#pragma once
// What every fuzz target shares. A broken promise aborts, so libFuzzer keeps
// the input that broke it; each target is a program of its own, so these
// live outside any namespace.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

inline void require(bool condition) {
    if (!condition) std::abort();
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}
