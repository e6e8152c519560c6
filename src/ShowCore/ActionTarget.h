#pragma once
// Where an action acts. Plain values; any thread.

#include "Identity/Uuid.h"

#include <variant>

namespace velarion::showcore {

namespace target {
struct Destination {
    Uuid id;
    bool operator==(const Destination&) const = default;
};
struct AudioBus {
    Uuid id;
    bool operator==(const AudioBus&) const = default;
};
struct VisualLayer {
    Uuid destinationID;
    Uuid layerID;
    bool operator==(const VisualLayer&) const = default;
};
struct ProviderPlayer {
    Uuid id;
    bool operator==(const ProviderPlayer&) const = default;
};
struct Timer {
    Uuid id;
    bool operator==(const Timer&) const = default;
};
struct Control {
    Uuid id;
    bool operator==(const Control&) const = default;
};
struct None {
    bool operator==(const None&) const = default;
};
} // namespace target

using ActionTarget = std::variant<target::Destination, target::AudioBus, target::VisualLayer,
                                  target::ProviderPlayer, target::Timer, target::Control, target::None>;

} // namespace velarion::showcore
