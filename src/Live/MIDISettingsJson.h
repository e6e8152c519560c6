#pragma once
// The MIDI settings as the preferences keep them:
//   {"isEnabled": true,
//    "bindings": [{"action": "go", "trigger": {"note": {"channel": 1, "note": 60}}}]}
// Reading is forgiving, as for every preference: a value of the wrong type
// reads as its default, and a binding that can't be read (an unknown
// action, a trigger out of range) is left out while the others are kept.

#include "LiveModel/MIDIControl.h"

#include <nlohmann/json.hpp>

namespace velarion {

nlohmann::json midiSettingsJson(const MIDISettings& settings);
MIDISettings midiSettingsFromJson(const nlohmann::json& json);

} // namespace velarion
