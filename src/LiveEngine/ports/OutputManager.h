#pragma once
// OutputManager: the screens and feeds side. The engine hands it one
// audience scene with routing tables after every change; it narrows the
// scene per screen, draws, and reports the health of every output.
//
// Contract.
// - Main thread only; `onHealthChange` is called on the main loop.
// - `apply` gets every layer of the audience scene (leaving layers in their
//   last scene included) and must see successive scenes in order, since a
//   layer that disappears dissolves out by its last description.
//   `routes` maps a layer to the destination keys it may appear on; a layer
//   without an entry appears everywhere. `lyricParts` maps a screen's lyric
//   line limit to the picture that replaces layer `lyricLayerID` there.
// - `configure` is called with the output setup at start and at each change.
// - `updateStage` gives what the Stage Display depends on; the manager
//   redraws only when that changed, at most once a second.
// - `closeAll` closes every window and feed; nothing is drawn after it.
// - Program output: the destination the operator's program view follows,
//   its readable name, and the operator's own pick when there is one.
//   `programLayerIDs` are the layers of the last scene that reach it.
// - The operator's screen tools: `identify` and `setTestPattern` answer a
//   refusal sentence when they can't act now (Safe Slide or Panic), else
//   none; `clearDiagnostics` ends both. Test windows open and close on
//   request; `showProgramPreview` opens a window of `programScene`. Mirrors
//   get the program scene after each change and are held weakly.
// - Ownership: given to the engine at construction and outlives it; the
//   health callback is cleared by the engine's shutdown.

#include "LiveEngine/DisplayInfo.h"
#include "LiveEngine/OutputHealth.h"
#include "LiveEngine/StageInfo.h"
#include "LiveEngine/ports/SceneSink.h"
#include "LiveEngine/ports/VideoSurface.h"
#include "LiveModel/LayerKind.h"
#include "LiveModel/OutputSetup.h"
#include "LiveModel/OutputTestPattern.h"
#include "ShowStage/OutputScene.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velarion {

using DestinationKeys = std::set<std::string>;
using LayerKinds = std::map<SceneID, LayerKind>;
using LayerRoutes = std::map<SceneID, DestinationKeys>;
using VideoSurfaces = std::map<SceneID, std::shared_ptr<VideoSurface>>;
using LyricPartPictures = std::map<int, StillImage>; // by lyric line limit

class OutputManager {
public:
    using HealthCallback = std::function<void(const std::vector<OutputHealth>&)>;

    virtual ~OutputManager() = default;

    virtual void apply(const OutputScene& scene, const LayerKinds& kinds,
                       const VideoSurfaces& surfaces, const LayerRoutes& routes,
                       const LyricPartPictures& lyricParts,
                       const std::optional<SceneID>& lyricLayerID) = 0;
    virtual void configure(const OutputSetup& setup) = 0;
    virtual void updateStage(const ConfidenceState& confidence,
                             const std::optional<TimerState>& timer,
                             const std::optional<std::string>& nextCueName,
                             double wallSeconds) = 0;
    virtual void clearDiagnostics() = 0;
    virtual void closeAll() = 0;

    virtual void setOnHealthChange(HealthCallback callback) = 0;
    virtual std::vector<OutputHealth> health() const = 0;

    virtual std::optional<std::string> programOutputID() const = 0;
    virtual std::string programOutputName() const = 0;
    virtual std::optional<std::string> programOutputSelection() const = 0;
    virtual void selectProgramOutput(const std::optional<std::string>& destination) = 0;
    virtual std::set<SceneID> programLayerIDs() const = 0;
    virtual OutputScene programScene() const = 0;

    virtual std::optional<std::string> identify(const std::string& screenID) = 0;
    virtual std::optional<std::string> setTestPattern(const std::string& screenID,
                                                      std::optional<OutputTestPattern> pattern) = 0;
    virtual void setTestWindowVisible(const std::string& screenID, bool visible) = 0;
    virtual bool testWindowIsVisible(const std::string& screenID) const = 0;
    virtual void showProgramPreview() = 0;
    virtual void addMirror(const std::weak_ptr<SceneSink>& sink) = 0;
    virtual void removeMirror(const std::shared_ptr<SceneSink>& sink) = 0;
    virtual std::vector<DisplayInfo> availableDisplays() const = 0;
};

} // namespace velarion
