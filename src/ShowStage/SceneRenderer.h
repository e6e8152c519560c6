#pragma once
// SceneRenderer: the retained layer tree of one output. It turns successive
// OutputScenes into placed, ordered layer records with their dissolves, and
// each moment of that tree into a SceneFrame that a drawing back end (an
// OpenGL window, the CPU compositor) executes. It draws nothing itself.
//
// Contract.
// - Time is the caller's: `apply` takes the moment of the change and
//   `drawList` the moment to show (the application passes its Scheduler's
//   now()). The renderer never reads a clock.
// - A layer id that stays from one scene to the next is the same record: it
//   moves, restacks or changes in place without a dissolve. A new id with a
//   dissolve fades in to its own opacity; a dropped id fades out over the
//   dissolve of its last description, whatever the new scene says, and can't
//   be brought back (the same id again is a new layer beside it).
// - Stacking: managed layers take their index in the scene as z. A fading
//   layer keeps the z it had and is drawn beneath managed layers of equal z
//   (older fades beneath newer ones), so a replacement dissolves over it.
// - Finished dissolves are dropped by `collectFinished`, never by drawing;
//   drawList is correct without it (a finished fade-out has opacity 0 and is
//   left out). The fade-out callback runs there, after the tree is updated,
//   once per faded layer; a cut removal is complete when `apply` returns.
// - Ownership: the renderer shares stills and video sources with the scenes
//   and frames; it owns nothing of the caller's.
// - Threads: main thread only; one renderer per output.

#include "ShowStage/OutputScene.h"
#include "ShowStage/SceneFrame.h"
#include "ShowStage/SceneManagedLayer.h"
#include "ShowStage/SceneMatrix4.h"
#include "ShowStage/SceneVideoSource.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

namespace velarion {

class SceneRenderer {
public:
    SceneRenderer(double widthPixels, double heightPixels);

    void apply(const OutputScene& scene, const SceneSurfaces& surfaces, double nowSeconds);

    // The root's new size; `layout` then re-places every layer for it.
    void resize(double widthPixels, double heightPixels);
    void layout();

    // The frame at `atSeconds`. Layers at opacity 0 and videos whose surface
    // is missing are left out. The second form refills `frame`, reusing its
    // storage, for a back end that draws many frames.
    SceneFrame drawList(double atSeconds) const;
    void drawList(double atSeconds, SceneFrame& frame) const;

    // Drops fades that have completed by `atSeconds`; see the contract.
    void collectFinished(double atSeconds);
    // True while some dissolve is still running at `atSeconds`: the back end
    // must draw again.
    bool isAnimating(double atSeconds) const;
    void setFadeOutFinished(std::function<void(SceneID)> callback);

    // A video layer whose surface has a frame to show; false for any other.
    bool isReadyForDisplay(const SceneID& layerID) const;
    const SceneManagedLayer* managedLayer(const SceneID& layerID) const;
    const std::vector<SceneFadingLayer>& fadingOutLayers() const { return fadingOut_; }
    const std::optional<OutputScene>& currentScene() const { return currentScene_; }
    const SceneColor& background() const { return background_; }
    double widthPixels() const { return widthPixels_; }
    double heightPixels() const { return heightPixels_; }

    // The square-to-quadrilateral mapping of `pin` for a layer of the given
    // size, acting about the layer's centre: the pin's (0, 0) is the layer's
    // corner at (-width/2, -height/2) relative to its centre, (1, 1) the one
    // at (width/2, height/2). Identity when the pin is degenerate (three
    // corners in a line) or the size is not above 0.
    static SceneMatrix4 pinTransform(const SceneCornerPin& pin, double width, double height);

private:
    // One entry of the back-to-front order: a managed layer, or a fading
    // one with its fade.
    struct DrawEntry {
        const SceneManagedLayer* layer = nullptr;
        const SceneOpacityRamp* fadeOut = nullptr;
        std::size_t sequence = 0; // fading layers first, oldest first
    };

    void removeLayer(const SceneID& id, double nowSeconds);
    void place(SceneManagedLayer& record, const SceneLayer& description) const;
    void update(SceneManagedLayer& record, const SceneLayer& description,
                const SceneSurfaces& surfaces);
    // After any change to the records' set or z; drawing then only walks it.
    void rebuildDrawOrder();

    double widthPixels_;
    double heightPixels_;
    SceneColor background_ = SceneColor::black();

    std::unordered_map<SceneID, SceneManagedLayer> managed_;
    std::unordered_map<SceneID, SceneID> stillIdentities_; // layer -> still shown
    std::unordered_map<SceneID, SceneLayer> lastDescriptions_;
    std::optional<OutputScene> currentScene_;
    std::vector<SceneFadingLayer> fadingOut_; // oldest first
    std::function<void(SceneID)> fadeOutFinished_;

    std::vector<DrawEntry> drawOrder_;
    std::vector<SceneID> wantedIDs_; // reused by apply, sorted
};

} // namespace velarion
