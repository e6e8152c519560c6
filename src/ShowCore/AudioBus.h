#pragma once
// The show's sound buses and the rules by which one ducks another. Gains are
// linear factors. Plain values; any thread.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"
#include "ShowCore/DurationValue.h"

#include <optional>
#include <string>

namespace velarion::showcore {

enum class AudioBusRole { programMusic, programSpeech, preview, user };
SHOWCORE_CASE_NAMES(AudioBusRole, "programMusic", "programSpeech", "preview", "user");

struct AudioBusDefinition {
    Uuid id;
    std::string name;
    AudioBusRole role = AudioBusRole::user;
    double gain = 1;
    bool isMuted = false;
    std::optional<std::string> outputPersistentIdentity;
    bool operator==(const AudioBusDefinition&) const = default;
};

struct AudioDuckingRule {
    Uuid id;
    Uuid triggerBusID;
    Uuid affectedBusID;
    double reductionDecibels = 12;
    DurationValue attack;
    DurationValue release;
    bool isEnabled = true;
    bool operator==(const AudioDuckingRule&) const = default;
};

} // namespace velarion::showcore
