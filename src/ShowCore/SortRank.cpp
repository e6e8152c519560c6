#include "ShowCore/SortRank.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace velarion::showcore {

namespace {

constexpr std::string_view digits = "0123456789abcdefghijklmnopqrstuvwxyz";
constexpr int base = 36;

int digitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'z') return c - 'a' + 10;
    return -1;
}

void stripTrailingZeros(std::string& key) {
    while (!key.empty() && key.back() == '0') key.pop_back();
}

// `key` read at `length` digits (padded with zeros), plus or minus one unit
// in its last place, skipping results that end in "0": a key keeps the
// length it was stepped at, and with it the room for the next step. None
// when that leaves the range of keys.
std::optional<std::string> stepped(const std::string& key, std::size_t length, int direction) {
    std::string out = key;
    out.resize(length, '0');
    do {
        std::size_t i = length;
        while (true) {
            if (i-- == 0) return std::nullopt;
            const int value = digitValue(out[i]) + direction;
            if (value >= 0 && value < base) {
                out[i] = digits[static_cast<std::size_t>(value)];
                break;
            }
            out[i] = direction > 0 ? '0' : 'z'; // carry or borrow into the next place
        }
    } while (out.back() == '0');
    return out;
}

// The classic fallback: the base-36 midpoint, which always exists between
// well-formed keys. Rarely reached; see the header for the usual route.
std::string midpoint(const std::string& low, const std::optional<std::string>& high) {
    std::string out;
    bool bounded = high.has_value();
    for (std::size_t i = 0;; ++i) {
        const int a = i < low.size() ? digitValue(low[i]) : 0;
        const int b = bounded && i < high->size() ? digitValue((*high)[i]) : base;
        if (a == b) {
            out.push_back(digits[static_cast<std::size_t>(a)]);
            continue;
        }
        if (b - a > 1) {
            out.push_back(digits[static_cast<std::size_t>((a + b) / 2)]);
            return out;
        }
        if (bounded && i + 1 < high->size()) {
            out.push_back((*high)[i]); // high cut short here is below high
            return out;
        }
        out.push_back(digits[static_cast<std::size_t>(a)]);
        bounded = false;
    }
}

} // namespace

bool SortRank::isValidKey(const std::string& key) {
    if (key.empty() || key.back() == '0') return false;
    return std::all_of(key.begin(), key.end(), [](char c) { return digitValue(c) >= 0; });
}

SortRank SortRank::initial() { return SortRank{"i"}; }

std::vector<SortRank> SortRank::spread(std::size_t count) {
    if (count > 100'000'000) throw std::invalid_argument("SortRank::spread: too many keys");
    std::uint64_t room = base;
    std::size_t length = 1;
    while (room <= count) {
        room *= base;
        ++length;
    }
    const std::uint64_t slots = count + 1;
    std::vector<SortRank> out;
    out.reserve(count);
    for (std::uint64_t i = 1; i <= count; ++i) {
        std::uint64_t n = i * (room / slots) + i * (room % slots) / slots;
        std::string key(length, '0');
        for (std::size_t place = length; place-- > 0; n /= base) key[place] = digits[n % base];
        stripTrailingZeros(key);
        out.push_back(SortRank{std::move(key)});
    }
    return out;
}

SortRank SortRank::between(const std::optional<SortRank>& low, const std::optional<SortRank>& high) {
    if ((low && !low->isValid()) || (high && !high->isValid())) {
        throw std::invalid_argument("SortRank::between: a neighbour's key is malformed");
    }
    if (!low && !high) return initial();
    if (low && high && !(*low < *high)) {
        throw std::invalid_argument("SortRank::between: the neighbours are out of order");
    }
    std::size_t shared = 0;
    if (low && high) {
        const auto& a = low->value;
        const auto& b = high->value;
        while (shared < a.size() && shared < b.size() && a[shared] == b[shared]) ++shared;
    }
    auto fits = [&](const std::optional<std::string>& key) {
        return key && (!low || low->value < *key) && (!high || *key < high->value);
    };
    struct Attempt {
        const std::string* from;
        int direction;
    };
    std::vector<Attempt> order;
    const bool preferLow = low && (!high || low->value.size() > high->value.size());
    if (preferLow) order.push_back({&low->value, +1});
    if (high) order.push_back({&high->value, -1});
    if (low && !preferLow) order.push_back({&low->value, +1});

    for (int widen = 0; widen < 2; ++widen) {
        for (const Attempt& attempt : order) {
            const std::size_t size = attempt.from->size();
            const std::size_t length =
                widen == 0 ? size : size + std::max<std::size_t>(1, size - std::min(size, shared));
            auto key = stepped(*attempt.from, length, attempt.direction);
            if (fits(key)) return SortRank{std::move(*key)};
        }
    }
    std::optional<std::string> top;
    if (high) top = high->value;
    return SortRank{midpoint(low ? low->value : std::string(), top)};
}

} // namespace velarion::showcore
