#include "ShowStage/SceneID.h"

#include <mutex>
#include <random>

namespace velarion {

SceneID SceneID::fresh() {
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
    SceneID id;
    for (int i = 0; i < 8; ++i) {
        id.bytes[i] = static_cast<std::uint8_t>(high >> (56 - 8 * i));
        id.bytes[i + 8] = static_cast<std::uint8_t>(low >> (56 - 8 * i));
    }
    id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0F) | 0x40);
    id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3F) | 0x80);
    return id;
}

} // namespace velarion
