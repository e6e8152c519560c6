#pragma once
// EngineCommand: every wish of the console, keys, MIDI and the agent, as a
// value. LiveEngine::perform is the only way in.

#include "Identity/Uuid.h"
#include "LiveModel/CueKind.h"

#include <optional>
#include <string>
#include <variant>

namespace velarion::command {

struct Fire { Uuid cueID; };
struct SetNext { std::optional<Uuid> cueID; };
struct Stop { Uuid runID; };
struct Pause { Uuid runID; };
struct Resume { Uuid runID; };
struct Seek { Uuid runID; double seconds = 0; };
struct Clear { ClearTarget target = ClearTarget::everything; double fadeSeconds = 0; };
struct SetHolding { bool on = false; };
struct GoToSlide { int index = 0; };
struct GoToDeckSlide { Uuid cueID; int index = 0; };
struct ShowDeckBackground { Uuid cueID; };
struct SetMasterLevel { double level = 1; };
struct SetMuted { bool muted = false; };
struct SetTalkOver { bool on = false; };
struct AdjustTimer { double seconds = 0; };
struct SendMessage { std::string text; MessageTarget target = MessageTarget::stage; };
struct ClearMessage { MessageTarget target = MessageTarget::stage; };
struct SelectProgramOutput { std::optional<std::string> destination; };
struct Go {};
struct PauseAll {};
struct ResumeAll {};
struct ToggleHold {};
struct Panic {};
struct NextSlide {};
struct PreviousSlide {};
struct ToggleTimerPause {};
struct ResetTimer {};
struct SkipTrack {};

} // namespace velarion::command

namespace velarion {

using EngineCommand =
    std::variant<command::Fire, command::SetNext, command::Stop, command::Pause, command::Resume,
                 command::Seek, command::Clear, command::SetHolding, command::GoToSlide,
                 command::GoToDeckSlide, command::ShowDeckBackground, command::SetMasterLevel,
                 command::SetMuted, command::SetTalkOver, command::AdjustTimer,
                 command::SendMessage, command::ClearMessage, command::SelectProgramOutput,
                 command::Go, command::PauseAll, command::ResumeAll, command::ToggleHold,
                 command::Panic, command::NextSlide, command::PreviousSlide,
                 command::ToggleTimerPause, command::ResetTimer, command::SkipTrack>;

} // namespace velarion
