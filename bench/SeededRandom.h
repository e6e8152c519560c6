#pragma once
// A small seeded random source for generated test and benchmark data.
// SplitMix64 with its own range helpers rather than <random>'s distributions,
// whose output differs between standard libraries: a seed must give the same
// show under g++ and clang, so kept fuzz seeds and benchmark figures agree.
// For the same reason callers draw in separate statements or braced lists:
// the operands of + and a call's arguments are evaluated in no fixed order.

#include "Identity/Uuid.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

namespace velarion::bench {

class SeededRandom {
public:
    explicit SeededRandom(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }

    // Uniform in [0, bound); the tiny modulo bias doesn't matter here.
    std::size_t below(std::size_t bound) {
        if (bound == 0) throw std::invalid_argument("SeededRandom::below needs a positive bound");
        return static_cast<std::size_t>(next() % bound);
    }

    // Uniform in [low, high], both inclusive.
    int between(int low, int high) {
        return low + static_cast<int>(below(static_cast<std::size_t>(high - low) + 1));
    }

    bool chance(double probability) { return unit() < probability; }

    // Uniform in [0, 1).
    double unit() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }

    // Uniform in [low, high], rounded to a multiple of `step`, as an operator
    // would type it (0.25 s, 1.5 s).
    double amount(double low, double high, double step) {
        return std::round((low + unit() * (high - low)) / step) * step;
    }

    // A version 4 identifier made from this sequence.
    Uuid uuid() {
        Uuid id;
        for (int half = 0; half < 2; ++half) {
            const std::uint64_t bits = next();
            for (int i = 0; i < 8; ++i) {
                id.bytes[half * 8 + i] = static_cast<std::uint8_t>(bits >> (56 - 8 * i));
            }
        }
        id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x40);
        id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
        return id;
    }

    template <class T> const T& pick(const std::vector<T>& values) {
        return values[below(values.size())];
    }

private:
    std::uint64_t state_;
};

} // namespace velarion::bench
