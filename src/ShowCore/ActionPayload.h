#pragma once
// What an action does, one record per kind of action. Levels and gains are
// linear factors; pan runs from -1 (left) to 1 (right). Plain values; any
// thread.

#include "Identity/Uuid.h"
#include "ShowCore/CaseNames.h"
#include "ShowCore/DurationValue.h"
#include "ShowCore/ProviderReference.h"
#include "ShowCore/ShowURL.h"
#include "ShowCore/VisualPlacement.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace velarion::showcore {

enum class TextAlignment { leading, center, trailing };
SHOWCORE_CASE_NAMES(TextAlignment, "leading", "center", "trailing");

enum class FadeCurve { linear, easeIn, easeOut, sCurve };
SHOWCORE_CASE_NAMES(FadeCurve, "linear", "easeIn", "easeOut", "sCurve");

struct VideoPayload {
    Uuid assetID;
    DurationValue startOffset;
    std::optional<DurationValue> endOffset;
    bool loops = false;
    bool isMuted = false;
    double gain = 1;
    DurationValue fadeIn;
    DurationValue fadeOut;
    VisualPlacement placement;
    std::optional<Uuid> transitionID;
    bool holdAtEnd = false;
    bool operator==(const VideoPayload&) const = default;
};

struct ImagePayload {
    Uuid assetID;
    VisualPlacement placement;
    std::optional<Uuid> transitionID;
    bool operator==(const ImagePayload&) const = default;
};

struct TextPayload {
    std::string text;
    std::string fontName;
    double fontSize = 48;
    std::string foregroundHex = "#FFFFFF";
    std::optional<std::string> backgroundHex;
    TextAlignment alignment = TextAlignment::center;
    VisualPlacement placement;
    std::optional<Uuid> transitionID;
    bool operator==(const TextPayload&) const = default;
};

struct LocalAudioPayload {
    std::optional<Uuid> assetID;
    ShowURL sourceURL;
    DurationValue startOffset;
    std::optional<DurationValue> endOffset;
    double gain = 1;
    double pan = 0;
    std::optional<Uuid> busID;
    DurationValue fadeIn;
    DurationValue fadeOut;
    bool loops = false;
    std::optional<DurationValue> loopStartOffset;
    std::optional<DurationValue> loopEndOffset;
    bool operator==(const LocalAudioPayload&) const = default;
};

struct PresentationSlidePayload {
    Uuid presentationID;
    Uuid slideID;
    bool operator==(const PresentationSlidePayload&) const = default;
};

struct ProviderAudioPayload {
    Uuid providerReferenceID;
    ProviderPlaybackWindow playbackWindow;
    std::optional<Uuid> fallbackLinkID;
    bool requiresVerifiedFallbackForShow = false;
    bool operator==(const ProviderAudioPayload&) const = default;
};

struct LookActionPayload {
    Uuid lookID;
    bool operator==(const LookActionPayload&) const = default;
};

struct StopCuePayload {
    Uuid targetCueID;
    DurationValue fade;
    bool operator==(const StopCuePayload&) const = default;
};

struct FadeCuePayload {
    Uuid targetCueID;
    double level = 0;
    DurationValue duration;
    std::optional<FadeCurve> curve;
    bool operator==(const FadeCuePayload&) const = default;
};

struct OSCOutPayload {
    std::string host;
    std::uint16_t port = 0;
    std::string path;
    std::optional<double> value;
    bool operator==(const OSCOutPayload&) const = default;
};

namespace timerOperation {
struct Adjust {
    double seconds = 0; // may be negative: takes time off
    bool operator==(const Adjust&) const = default;
};
struct Set {
    DurationValue seconds;
    bool operator==(const Set&) const = default;
};
struct Start {
    bool operator==(const Start&) const = default;
};
struct Pause {
    bool operator==(const Pause&) const = default;
};
struct Resume {
    bool operator==(const Resume&) const = default;
};
struct Reset {
    bool operator==(const Reset&) const = default;
};
struct Complete {
    bool operator==(const Complete&) const = default;
};
} // namespace timerOperation

using ShowTimerOperation =
    std::variant<timerOperation::Adjust, timerOperation::Set, timerOperation::Start, timerOperation::Pause,
                 timerOperation::Resume, timerOperation::Reset, timerOperation::Complete>;

struct TimerActionPayload {
    Uuid timerID;
    ShowTimerOperation operation = timerOperation::Start{};
    bool operator==(const TimerActionPayload&) const = default;
};

namespace payload {
struct Wait {
    DurationValue duration;
    bool operator==(const Wait&) const = default;
};
struct InternalCommand {
    std::string message;
    bool operator==(const InternalCommand&) const = default;
};
} // namespace payload

using ActionPayload =
    std::variant<payload::Wait, payload::InternalCommand, LocalAudioPayload, PresentationSlidePayload,
                 ProviderAudioPayload, TimerActionPayload, VideoPayload, ImagePayload, TextPayload,
                 LookActionPayload, StopCuePayload, FadeCuePayload, OSCOutPayload>;

} // namespace velarion::showcore
