#pragma once
// SceneVideoSource: what the renderer may ask a video surface, without
// knowing the player behind it.
//
// Contract.
// - Any thread: an output window's renderer and drawer ask on its render
//   thread at every frame, the main loop's renderers on the main thread.
//   A source answers without waiting for its decoder.
// - Ownership: the player side owns its surfaces; the renderer only keeps the
//   shared pointer it was handed by the last `apply`, so a surface stays alive
//   while a layer shows it.
// - `SceneSurfaces` maps a surface id (SceneVideoContent::surfaceID) to its
//   source; it is passed to SceneRenderer::apply with each scene. A surface
//   missing from it shows nothing until a later apply finds it.

#include "ShowStage/SceneID.h"
#include "ShowStage/StillImage.h"
#include "ShowStage/VideoFrame.h"

#include <memory>
#include <unordered_map>

namespace velarion {

class SceneVideoSource {
public:
    virtual ~SceneVideoSource() = default;

    // True once the surface holds a frame worth showing (the first decoded
    // frame has arrived); before that a layer showing it would be black.
    virtual bool hasFrameToShow() const = 0;

    // The newest decoded frame (BGRA, premultiplied, as a still), or null
    // before the first. It never waits for a decoder. A new frame is a new
    // buffer: while a caller holds a frame, the source never writes into it,
    // so a back end may tell frames apart by address.
    // A source that decodes into planes answers it with the planes' BGRA,
    // converted once per frame when a CPU reader first asks.
    virtual std::shared_ptr<const StillPixels> latestFrame() const { return nullptr; }

    // The newest frame as the decoder's planes, for a back end that converts
    // on the GPU; null from a source whose frames are BGRA only (then
    // `latestFrame` is the picture). The same frame stays the same object.
    virtual std::shared_ptr<const VideoFrame> latestVideoFrame() const { return nullptr; }
};

using SceneSurfaces = std::unordered_map<SceneID, std::shared_ptr<const SceneVideoSource>>;

} // namespace velarion
