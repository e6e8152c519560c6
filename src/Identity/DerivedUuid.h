#pragma once
// Name-based identifiers: always the same for the same base and place, and
// unlike any other base's or place's (a well-mixed 128-bit hash, marked as
// version 8). For ids that must not change when a thing is made again from
// the same parts. A plain function; any thread.

#include "Identity/Uuid.h"

#include <cstdint>

namespace velarion {

Uuid derivedUuid(const Uuid& base, std::uint64_t place);

} // namespace velarion
