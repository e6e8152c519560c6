#pragma once
// OutputPictures: the pictures the outputs show of their own accord: the
// Stage Display's picture for the speaker, the identification picture of a
// screen, and the test patterns.
//
// Contract.
// - Each call draws from its arguments alone and gives a premultiplied
//   canvas; `toStill` (Canvas.h) makes it a scene picture.
// - The Stage Display picture reads the slide pages it shows through
//   `slidePicture`; StageSlidePictures keeps the few it needs decoded, so a
//   redraw each second doesn't decode the same pages again.
// - Threads: the main thread (text drawing). StageSlidePictures belongs to
//   its owner's thread.

#include "LiveEngine/StageInfo.h"
#include "LiveModel/Calendar.h"
#include "LiveModel/OutputSetup.h"
#include "LiveModel/OutputTestPattern.h"

#include <QImage>

#include <functional>
#include <list>
#include <optional>
#include <string>
#include <utility>

namespace velarion::OutputPictures {

inline constexpr int stageWidthPixels = 1280;
inline constexpr int stageHeightPixels = 720;
inline constexpr int identifyWidthPixels = 1920;
inline constexpr int identifyHeightPixels = 1080;
inline constexpr int patternWidthPixels = 1280;
inline constexpr int patternHeightPixels = 720;

// A slide page by the file path the confidence state gives.
using SlidePicture = std::function<std::optional<QImage>(const std::string& path)>;

struct StageInputs {
    ConfidenceState confidence;
    std::optional<TimerState> timer;
    std::optional<std::string> nextCueName;
    double wallSeconds = 0; // Unix seconds
};

// What the picture gives most room: slides while a deck shows a slide, else
// the timer while one runs, else the wall clock and what comes next.
SpeakerLayout speakerLayout(const ConfidenceState& confidence, const std::optional<TimerState>& timer);

// "7:05:09 PM": the local time of day with seconds.
std::string wallClockText(double wallSeconds, const Calendar& calendar);

QImage stage(const StageInputs& inputs, const Calendar& calendar, const SlidePicture& slidePicture);

// The screen's name and role on a strong colour of the role.
QImage identify(const std::string& name, ScreenRole role);

QImage pattern(OutputTestPattern pattern);

// The last few slide pages read, scaled to the size the stage shows them.
class StageSlidePictures {
public:
    static constexpr std::size_t capacity = 4;
    std::optional<QImage> operator()(const std::string& path);

private:
    std::list<std::pair<std::string, std::optional<QImage>>> recent_; // newest first
};

} // namespace velarion::OutputPictures
