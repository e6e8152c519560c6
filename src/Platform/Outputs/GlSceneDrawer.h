#pragma once
// GlSceneDrawer: executes a SceneFrame with OpenGL into the current
// framebuffer, with the geometry of LayerGeometry.h and the sampling of the
// CPU compositor (bilinear, edges clamped, premultiplied source over).
//
// Contract.
// - Every call is made with the same OpenGL context current, on the thread
//   that owns it; `release` before that context goes.
// - Stills are uploaded once and kept while frames keep drawing them;
//   textures of stills no frame drew are freed after the next frame.
// - Threads: the render thread of one window; no locking inside.

#include "Platform/Outputs/CpuCompositor.h"

#include <QOpenGLExtraFunctions>

#include <cstdint>
#include <memory>
#include <unordered_map>

namespace velarion {

class GlSceneDrawer {
public:
    void draw(const SceneFrame& frame, int widthPixels, int heightPixels, const VideoFrameLookup& videoFrames = {});
    void release();
    // The driver refused the shaders: nothing can be drawn with this context.
    bool failed() const { return ready_ && program_ == 0; }

private:
    struct Texture {
        unsigned id = 0;
        int width = 0;
        int height = 0;
        // The buffer it was made from, held so that its address can't come
        // back as another frame's.
        std::shared_ptr<const StillPixels> pixels;
        bool used = false;
    };
    bool prepare();
    Texture* textureFor(const SceneID& key, const std::shared_ptr<const StillPixels>& pixels);

    QOpenGLExtraFunctions gl_;
    bool ready_ = false;
    unsigned program_ = 0;
    unsigned vertexBuffer_ = 0;
    unsigned vertexArray_ = 0;
    unsigned whiteTexture_ = 0;
    int uniformCentre_ = -1, uniformTransform_ = -1, uniformViewport_ = -1, uniformColor_ = -1;
    std::unordered_map<SceneID, Texture> textures_; // by still id, or surface id for video
};

} // namespace velarion
