#pragma once
// CpuSceneMirror: a SceneSink that keeps its own layer tree of the program
// scenes it is given and draws any moment of it with the CPU compositor: the
// program preview, a snapshot, a picture for a test.
//
// Contract: main thread, like the manager that feeds it; `draw` may be
// called at any time and gives the picture at `atSeconds` on the
// Scheduler's clock, dissolves included. Register it with
// ScreenOutputManager::addMirror and keep the shared pointer.

#include "LiveEngine/ports/SceneSink.h"
#include "Platform/Outputs/CpuCompositor.h"
#include "ShowStage/SceneRenderer.h"

namespace velarion {

class CpuSceneMirror final : public SceneSink {
public:
    CpuSceneMirror(int widthPixels, int heightPixels) : renderer_(widthPixels, heightPixels) {}

    void sceneChanged(const OutputScene& scene, const SceneSurfaces& surfaces, double nowSeconds) override {
        renderer_.apply(scene, surfaces, nowSeconds);
        renderer_.collectFinished(nowSeconds);
        ++scenes_;
    }

    RasterImage draw(double atSeconds, const VideoFrameLookup& videoFrames = {}) const {
        RasterImage image(static_cast<int>(renderer_.widthPixels()), static_cast<int>(renderer_.heightPixels()));
        CpuCompositor::draw(renderer_.drawList(atSeconds), image, videoFrames);
        return image;
    }
    // The draw list alone, to draw on another thread (CpuCompositor::draw).
    SceneFrame frame(double atSeconds) const { return renderer_.drawList(atSeconds); }
    int widthPixels() const { return static_cast<int>(renderer_.widthPixels()); }
    int heightPixels() const { return static_cast<int>(renderer_.heightPixels()); }
    int scenesReceived() const { return scenes_; }

private:
    SceneRenderer renderer_;
    int scenes_ = 0;
};

} // namespace velarion
