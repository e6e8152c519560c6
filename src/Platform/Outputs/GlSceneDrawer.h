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
// - A video that gives its decoder's planes (SceneVideoSource::
//   latestVideoFrame) is uploaded plane by plane, only when its frame has
//   changed, and converted to RGB in the fragment shader with the matrix the
//   CPU conversion uses; other videos are uploaded as BGRA.
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
        unsigned ids[3] = {};
        int planeCount = 0;
        int width = 0;
        int height = 0;
        // The still or frame it was made from, held so that its address
        // can't come back as another frame's.
        std::shared_ptr<const void> source;
        VideoColorimetry colorimetry; // planes only
        bool used = false;
    };
    struct Program {
        unsigned id = 0;
        int centre = -1, transform = -1, viewport = -1, color = -1;
        int toRed = -1, toGreen = -1, toBlue = -1, interleaved = -1;
    };
    bool prepare();
    Program link(const char* fragmentSource);
    Texture* textureFor(const SceneID& key, const std::shared_ptr<const StillPixels>& pixels);
    Texture* texturesFor(const SceneID& key, const std::shared_ptr<const VideoFrame>& frame);
    void use(const Program& program, int widthPixels, int heightPixels);
    void freeTexture(Texture& texture);

    QOpenGLExtraFunctions gl_;
    bool ready_ = false;
    unsigned program_ = 0; // `picture_.id`, or 0 when the driver refused it
    Program picture_;
    Program planes_;
    unsigned vertexBuffer_ = 0;
    unsigned vertexArray_ = 0;
    unsigned whiteTexture_ = 0;
    std::unordered_map<SceneID, Texture> textures_; // by still id, or surface id for video
};

} // namespace velarion
