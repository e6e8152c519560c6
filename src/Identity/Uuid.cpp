#include "Identity/Uuid.h"
#include "Identity/DerivedUuid.h"

#include <mutex>
#include <random>

namespace velarion {

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool isDashPosition(std::size_t i) { return i == 8 || i == 13 || i == 18 || i == 23; }

} // namespace

namespace {

std::uint64_t mixed(std::uint64_t value) {
    value += 0x9E3779B97F4A7C15ull;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ull;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBull;
    return value ^ (value >> 31);
}

} // namespace

Uuid derivedUuid(const Uuid& base, std::uint64_t place) {
    std::uint64_t high = 0, low = 0;
    for (int i = 0; i < 8; ++i) {
        high = (high << 8) | base.bytes[i];
        low = (low << 8) | base.bytes[i + 8];
    }
    const std::uint64_t first = mixed(high ^ mixed(low ^ mixed(place)));
    const std::uint64_t second = mixed(low ^ mixed(first ^ place));
    Uuid id;
    for (int i = 0; i < 8; ++i) {
        id.bytes[i] = static_cast<std::uint8_t>(first >> (56 - 8 * i));
        id.bytes[i + 8] = static_cast<std::uint8_t>(second >> (56 - 8 * i));
    }
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x80);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

Uuid Uuid::random() {
    // One generator for the process, seeded once from the system's entropy.
    static std::mutex lock;
    static std::mt19937_64 engine{[] {
        std::random_device device;
        std::seed_seq seed{device(), device(), device(), device(), device(), device()};
        return std::mt19937_64{seed};
    }()};
    std::uint64_t high, low;
    {
        std::lock_guard guard(lock);
        high = engine();
        low = engine();
    }
    Uuid id;
    for (int i = 0; i < 8; ++i) {
        id.bytes[i] = static_cast<std::uint8_t>(high >> (56 - 8 * i));
        id.bytes[i + 8] = static_cast<std::uint8_t>(low >> (56 - 8 * i));
    }
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x40);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != 36) return std::nullopt;
    Uuid id;
    std::size_t byte = 0;
    for (std::size_t i = 0; i < 36;) {
        if (isDashPosition(i)) {
            if (text[i] != '-') return std::nullopt;
            ++i;
            continue;
        }
        int high = hexValue(text[i]);
        int low = hexValue(text[i + 1]);
        if (high < 0 || low < 0) return std::nullopt;
        id.bytes[byte++] = static_cast<std::uint8_t>(high * 16 + low);
        i += 2;
    }
    return id;
}

std::string Uuid::text() const {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(36);
    for (std::size_t i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) out.push_back('-');
        out.push_back(digits[bytes[i] >> 4]);
        out.push_back(digits[bytes[i] & 0x0F]);
    }
    return out;
}

} // namespace velarion
