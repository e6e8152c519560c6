#pragma once
// EngineState: the one published view of a running show. Every observer (the
// console, the Stage Display, MIDI feedback, the agent) reads it and nothing
// else. A plain value with full equality; the engine stores a new one only
// when it differs, so ten ticks a second with nothing changing redraw
// nothing. Monotonic times are the Scheduler's now(); dates are wall-clock
// seconds since the Unix epoch.

#include "Identity/Uuid.h"
#include "LiveEngine/OutputHealth.h"
#include "LiveEngine/StageInfo.h"
#include "LiveModel/EnumNames.h"
#include "LiveModel/Shared.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace velarion {

struct CueGroupPlaybackState {
    Uuid groupID;
    std::string name;
    Uuid cueID; // the step's driving cue
    int step = 1;
    int stepCount = 0;
    bool repeats = false;
    bool waitingForGO = false;
    friend bool operator==(const CueGroupPlaybackState&, const CueGroupPlaybackState&) = default;
};

struct RunningCue {
    Uuid id; // the run
    Uuid cueID;
    std::string name;
    std::string kindLabel;
    double elapsedSeconds = 0;
    std::optional<double> durationSeconds;
    bool isPaused = false;
    bool isOnScreen = false;
    std::string detail;
    bool canSeek = false;
    friend bool operator==(const RunningCue&, const RunningCue&) = default;
};

struct NowPlayingMusic {
    enum class Source { file, spotify, music };
    Source source = Source::file;
    std::string title;
    std::string artist;
    double positionSeconds = 0;
    double durationSeconds = 0;
    bool isPlaying = false;
    bool isPlaylist = false;
    bool isSimulated = false;
    friend bool operator==(const NowPlayingMusic&, const NowPlayingMusic&) = default;
};
VELARION_ENUM_NAMES(NowPlayingMusic::Source, "file", "spotify", "music");

struct HistoryEntry {
    enum class Kind { fired, stopped, mode, clear, panic, holding, message, warning, edit, agent };
    Uuid id;
    double time = 0; // wall-clock seconds
    Kind kind = Kind::mode;
    std::string text;
    friend bool operator==(const HistoryEntry&, const HistoryEntry&) = default;
};
VELARION_ENUM_NAMES(HistoryEntry::Kind, "fired", "stopped", "mode", "clear", "panic", "holding",
                    "message", "warning", "edit", "agent");

struct PanicIdle {
    friend bool operator==(const PanicIdle&, const PanicIdle&) = default;
};
struct PanicFading {
    double until = 0; // monotonic seconds
    friend bool operator==(const PanicFading&, const PanicFading&) = default;
};
using PanicState = std::variant<PanicIdle, PanicFading>;

struct EngineState {
    std::optional<CueGroupPlaybackState> cueGroup;
    std::optional<Uuid> nextCueID; // none: the end of the show
    std::optional<Uuid> lastFiredCueID;
    // Every cue fired since the show was loaded, sorted, no repeats. Shared
    // because it grows through a whole show and is copied into every state.
    Shared<std::vector<Uuid>> firedCueIDs;
    std::vector<RunningCue> running; // in starting order
    std::optional<TimerState> timer;
    std::optional<NowPlayingMusic> music;
    std::optional<std::string> stageMessage;
    std::optional<std::string> audienceMessage;
    bool isHeld = false;
    bool holdingOn = false;
    PanicState panic = PanicIdle{};
    double masterLevel = 1;
    bool isMuted = false;
    bool isTalkingOver = false;
    std::optional<int> scheduleDeltaMinutes; // late positive, early negative
    std::vector<OutputHealth> outputs;
    Shared<std::vector<HistoryEntry>> history; // the newest entries, oldest first
    ConfidenceState confidence;
    std::optional<Uuid> activeDeckCueID;
    std::optional<int> activeSlide;
    bool isDeckBackgroundOnly = false;
    std::optional<Uuid> programRunID;
    bool programCoveredByHolding = false;
    std::optional<std::string> programOutputID;
    std::string programOutputName;
    std::optional<std::string> programOutputSelection;
    std::vector<Uuid> heldCueIDs;

    bool wasFired(const Uuid& cueID) const;
    friend bool operator==(const EngineState&, const EngineState&) = default;
};

} // namespace velarion
