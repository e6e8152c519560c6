#pragma once
// SceneSink: something that wants each program scene, such as a preview in
// the console or a mirror drawn by the CPU compositor.
//
// Contract: main thread; called after every change of the program picture
// with the scene, its video sources and the moment on the Scheduler's clock.
// The manager holds sinks weakly: a sink that goes is simply dropped.

#include "ShowStage/OutputScene.h"
#include "ShowStage/SceneVideoSource.h"

namespace velarion {

class SceneSink {
public:
    virtual ~SceneSink() = default;
    virtual void sceneChanged(const OutputScene& scene, const SceneSurfaces& surfaces, double nowSeconds) = 0;
};

} // namespace velarion
