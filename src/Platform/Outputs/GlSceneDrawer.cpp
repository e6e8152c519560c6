#include "Platform/Outputs/GlSceneDrawer.h"

#include "Platform/Outputs/LayerGeometry.h"

#include <QOpenGLContext>

#include <array>
#include <cstdio>

namespace velarion {

namespace {

// Positions are layer-local; the transform (with its perspective row) gives
// w, so texture coordinates are interpolated in perspective as the CPU
// compositor's inverse mapping has them.
constexpr const char* vertexSource = R"(#version 330 core
layout(location = 0) in vec2 position;
layout(location = 1) in vec2 texel;
uniform vec2 centre;
uniform mat4 transform;
uniform vec2 viewport;
out vec2 coordinate;
void main() {
    vec4 p = transform * vec4(position, 0.0, 1.0);
    vec2 placed = p.xy + centre * p.w;
    gl_Position = vec4(placed.x * 2.0 / viewport.x - p.w, placed.y * 2.0 / viewport.y - p.w, 0.0, p.w);
    coordinate = texel;
}
)";

constexpr const char* pictureSource = R"(#version 330 core
in vec2 coordinate;
uniform sampler2D picture;
uniform vec4 color;
out vec4 fragment;
void main() { fragment = texture(picture, coordinate) * color; }
)";

// Each plane sampled bilinearly at the pixel, then the colour matrix: what
// the CPU conversion computes, so the two back ends agree.
constexpr const char* planesSource = R"(#version 330 core
in vec2 coordinate;
uniform sampler2D lumaPlane;
uniform sampler2D firstChromaPlane;
uniform sampler2D secondChromaPlane;
uniform bool interleaved;
uniform vec4 toRed;
uniform vec4 toGreen;
uniform vec4 toBlue;
uniform vec4 color;
out vec4 fragment;
void main() {
    vec2 chroma = interleaved ? texture(firstChromaPlane, coordinate).rg
                              : vec2(texture(firstChromaPlane, coordinate).r, texture(secondChromaPlane, coordinate).r);
    vec4 ycc = vec4(texture(lumaPlane, coordinate).r, chroma, 1.0);
    vec3 rgb = clamp(vec3(dot(toRed, ycc), dot(toGreen, ycc), dot(toBlue, ycc)), 0.0, 1.0);
    fragment = vec4(rgb, 1.0) * color;
}
)";

} // namespace

GlSceneDrawer::Program GlSceneDrawer::link(const char* fragmentSource) {
    const auto compile = [&](unsigned kind, const char* source) {
        const unsigned shader = gl_.glCreateShader(kind);
        gl_.glShaderSource(shader, 1, &source, nullptr);
        gl_.glCompileShader(shader);
        int ok = 0;
        gl_.glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
        if (!ok) {
            char log[512] = {};
            gl_.glGetShaderInfoLog(shader, sizeof log, nullptr, log);
            std::fprintf(stderr, "velarion: output shader failed: %s\n", log);
        }
        return shader;
    };
    const unsigned vertex = compile(GL_VERTEX_SHADER, vertexSource);
    const unsigned fragment = compile(GL_FRAGMENT_SHADER, fragmentSource);
    Program program;
    program.id = gl_.glCreateProgram();
    gl_.glAttachShader(program.id, vertex);
    gl_.glAttachShader(program.id, fragment);
    gl_.glLinkProgram(program.id);
    gl_.glDeleteShader(vertex);
    gl_.glDeleteShader(fragment);
    int linked = 0;
    gl_.glGetProgramiv(program.id, GL_LINK_STATUS, &linked);
    if (!linked) {
        gl_.glDeleteProgram(program.id);
        return {};
    }
    const auto at = [&](const char* name) { return gl_.glGetUniformLocation(program.id, name); };
    program.centre = at("centre");
    program.transform = at("transform");
    program.viewport = at("viewport");
    program.color = at("color");
    program.toRed = at("toRed");
    program.toGreen = at("toGreen");
    program.toBlue = at("toBlue");
    program.interleaved = at("interleaved");
    gl_.glUseProgram(program.id);
    int unit = 0;
    for (const char* sampler : {"lumaPlane", "firstChromaPlane", "secondChromaPlane"})
        if (const int location = at(sampler); location >= 0) gl_.glUniform1i(location, unit++);
    return program;
}

bool GlSceneDrawer::prepare() {
    if (ready_) return program_ != 0;
    ready_ = true;
    gl_.initializeOpenGLFunctions();
    picture_ = link(pictureSource);
    planes_ = link(planesSource);
    if (picture_.id == 0 || planes_.id == 0) {
        if (picture_.id) gl_.glDeleteProgram(picture_.id);
        if (planes_.id) gl_.glDeleteProgram(planes_.id);
        picture_ = planes_ = {};
        return false;
    }
    program_ = picture_.id;
    gl_.glGenVertexArrays(1, &vertexArray_);
    gl_.glGenBuffers(1, &vertexBuffer_);
    gl_.glBindVertexArray(vertexArray_);
    gl_.glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer_);
    gl_.glBufferData(GL_ARRAY_BUFFER, 16 * sizeof(float), nullptr, GL_STREAM_DRAW);
    gl_.glEnableVertexAttribArray(0);
    gl_.glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 4 * sizeof(float), nullptr);
    gl_.glEnableVertexAttribArray(1);
    gl_.glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, 4 * sizeof(float),
                              reinterpret_cast<void*>(2 * sizeof(float)));
    const std::uint8_t white[4] = {255, 255, 255, 255};
    gl_.glGenTextures(1, &whiteTexture_);
    gl_.glBindTexture(GL_TEXTURE_2D, whiteTexture_);
    gl_.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 1, 1, 0, GL_BGRA, GL_UNSIGNED_BYTE, white);
    gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    return true;
}

void GlSceneDrawer::freeTexture(Texture& texture) {
    if (texture.planeCount > 0) gl_.glDeleteTextures(texture.planeCount, texture.ids);
    texture = Texture{};
}

GlSceneDrawer::Texture* GlSceneDrawer::textureFor(const SceneID& key,
                                                  const std::shared_ptr<const StillPixels>& pixels) {
    Texture& texture = textures_[key];
    texture.used = true;
    if (texture.planeCount == 1 && texture.source == pixels) return &texture;
    if (texture.planeCount != 1) {
        freeTexture(texture);
        texture.used = true;
        texture.planeCount = 1;
        gl_.glGenTextures(1, texture.ids);
    }
    gl_.glBindTexture(GL_TEXTURE_2D, texture.ids[0]);
    gl_.glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    gl_.glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    if (texture.source && texture.width == pixels->width && texture.height == pixels->height) {
        // A video's next frame: the storage stays, only the texels change.
        gl_.glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, pixels->width, pixels->height, GL_BGRA, GL_UNSIGNED_BYTE,
                            pixels->bgra.data());
    } else {
        gl_.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, pixels->width, pixels->height, 0, GL_BGRA,
                         GL_UNSIGNED_BYTE, pixels->bgra.data());
        gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    }
    texture.width = pixels->width;
    texture.height = pixels->height;
    texture.source = pixels;
    return &texture;
}

GlSceneDrawer::Texture* GlSceneDrawer::texturesFor(const SceneID& key, const std::shared_ptr<const VideoFrame>& frame) {
    Texture& texture = textures_[key];
    texture.used = true;
    if (texture.source == frame) return &texture; // the decoder has nothing newer
    const int count = frame->planeCount();
    const bool sameShape = texture.planeCount == count && texture.width == frame->width() &&
                           texture.height == frame->height();
    if (!sameShape) {
        freeTexture(texture);
        texture.used = true;
        texture.planeCount = count;
        gl_.glGenTextures(count, texture.ids);
    }
    gl_.glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    for (int i = 0; i < count; ++i) {
        const VideoPlane& plane = frame->plane(i);
        const bool pairs = i > 0 && frame->layout() == VideoPlaneLayout::nv12;
        const unsigned format = pairs ? GL_RG : GL_RED;
        gl_.glBindTexture(GL_TEXTURE_2D, texture.ids[i]);
        gl_.glPixelStorei(GL_UNPACK_ROW_LENGTH, plane.strideBytes / (pairs ? 2 : 1));
        if (sameShape) {
            gl_.glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, plane.width, plane.height, format, GL_UNSIGNED_BYTE,
                                plane.data);
            continue;
        }
        gl_.glTexImage2D(GL_TEXTURE_2D, 0, pairs ? GL_RG8 : GL_R8, plane.width, plane.height, 0, format,
                         GL_UNSIGNED_BYTE, plane.data);
        gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        gl_.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    }
    gl_.glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    gl_.glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    texture.width = frame->width();
    texture.height = frame->height();
    texture.source = frame;
    texture.colorimetry = frame->colorimetry();
    return &texture;
}

void GlSceneDrawer::use(const Program& program, int widthPixels, int heightPixels) {
    gl_.glUseProgram(program.id);
    gl_.glUniform2f(program.viewport, static_cast<float>(widthPixels), static_cast<float>(heightPixels));
}

void GlSceneDrawer::draw(const SceneFrame& frame, int widthPixels, int heightPixels,
                         const VideoFrameLookup& videoFrames) {
    if (!prepare()) return;
    gl_.glViewport(0, 0, widthPixels, heightPixels);
    const SceneColor& b = frame.background;
    gl_.glClearColor(static_cast<float>(b.red * b.alpha), static_cast<float>(b.green * b.alpha),
                     static_cast<float>(b.blue * b.alpha), static_cast<float>(b.alpha));
    gl_.glClear(GL_COLOR_BUFFER_BIT);
    gl_.glEnable(GL_BLEND);
    gl_.glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    gl_.glBindVertexArray(vertexArray_);
    gl_.glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer_);
    use(planes_, widthPixels, heightPixels);
    use(picture_, widthPixels, heightPixels);
    const Program* current = &picture_;
    gl_.glActiveTexture(GL_TEXTURE0);
    for (auto& [key, texture] : textures_) texture.used = false;

    for (const SceneDrawOperation& operation : frame.operations) {
        std::optional<LayerQuad> quad;
        std::array<float, 4> color{1, 1, 1, 1};
        const float opacity = operation.opacity;
        const Program* program = &picture_;
        const Texture* planeTexture = nullptr;
        if (const auto* fill = std::get_if<SceneColorContent>(&operation.content)) {
            quad = colorQuad(operation.rect);
            const SceneColor& c = fill->color;
            color = {static_cast<float>(c.red * c.alpha) * opacity, static_cast<float>(c.green * c.alpha) * opacity,
                     static_cast<float>(c.blue * c.alpha) * opacity, static_cast<float>(c.alpha) * opacity};
            gl_.glBindTexture(GL_TEXTURE_2D, whiteTexture_);
        } else {
            std::shared_ptr<const StillPixels> pixels;
            std::shared_ptr<const VideoFrame> planes;
            SceneID key;
            if (const auto* still = std::get_if<SceneStillContent>(&operation.content)) {
                pixels = still->image.pixels();
                key = still->image.id();
            } else if (const auto* video = std::get_if<SceneVideoContent>(&operation.content)) {
                if (videoFrames) pixels = videoFrames(video->surfaceID);
                else if (operation.surface && !(planes = operation.surface->latestVideoFrame()))
                    pixels = operation.surface->latestFrame();
                key = video->surfaceID;
            }
            if (planes) {
                quad = pictureQuad(operation.rect, operation.gravity, planes->width(), planes->height());
                if (!quad) continue;
                planeTexture = texturesFor(key, planes);
                for (int i = planeTexture->planeCount - 1; i >= 0; --i) {
                    gl_.glActiveTexture(GL_TEXTURE0 + static_cast<unsigned>(i));
                    gl_.glBindTexture(GL_TEXTURE_2D, planeTexture->ids[i]);
                }
                program = &planes_;
            } else {
                if (!pixels || pixels->width <= 0) continue;
                quad = pictureQuad(operation.rect, operation.gravity, pixels->width, pixels->height);
                if (!quad) continue;
                Texture* texture = textureFor(key, pixels);
                gl_.glBindTexture(GL_TEXTURE_2D, texture->ids[0]);
            }
            color = {opacity, opacity, opacity, opacity};
        }
        if (!quad) continue;
        if (program != current) {
            current = program;
            gl_.glUseProgram(current->id);
        }
        if (planeTexture != nullptr) {
            const auto m = yuvToRgbMatrix(planeTexture->colorimetry);
            gl_.glUniform4fv(planes_.toRed, 1, &m[0]);
            gl_.glUniform4fv(planes_.toGreen, 1, &m[4]);
            gl_.glUniform4fv(planes_.toBlue, 1, &m[8]);
            gl_.glUniform1i(planes_.interleaved, planeTexture->planeCount == 2 ? 1 : 0);
        }
        // GL's texture rows run bottom up from the first row given, which is
        // the picture's top: v as given is already GL's t.
        const float vertices[16] = {
            float(quad->left),  float(quad->bottom), float(quad->uLeft),  float(quad->vBottom),
            float(quad->right), float(quad->bottom), float(quad->uRight), float(quad->vBottom),
            float(quad->left),  float(quad->top),    float(quad->uLeft),  float(quad->vTop),
            float(quad->right), float(quad->top),    float(quad->uRight), float(quad->vTop),
        };
        gl_.glBufferSubData(GL_ARRAY_BUFFER, 0, sizeof vertices, vertices);
        std::array<float, 16> matrix;
        for (int i = 0; i < 16; ++i) matrix[i] = static_cast<float>(operation.transform.m[i]);
        gl_.glUniformMatrix4fv(current->transform, 1, GL_FALSE, matrix.data());
        gl_.glUniform2f(current->centre, static_cast<float>(operation.rect.left + operation.rect.width / 2),
                        static_cast<float>(operation.rect.bottom + operation.rect.height / 2));
        gl_.glUniform4f(current->color, color[0], color[1], color[2], color[3]);
        gl_.glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    }
    gl_.glActiveTexture(GL_TEXTURE0);
    // Pictures no longer drawn give their memory back.
    for (auto texture = textures_.begin(); texture != textures_.end();) {
        if (texture->second.used) {
            ++texture;
            continue;
        }
        freeTexture(texture->second);
        texture = textures_.erase(texture);
    }
}

void GlSceneDrawer::release() {
    if (!ready_ || QOpenGLContext::currentContext() == nullptr) return;
    for (auto& [key, texture] : textures_) freeTexture(texture);
    textures_.clear();
    if (picture_.id) gl_.glDeleteProgram(picture_.id);
    if (planes_.id) gl_.glDeleteProgram(planes_.id);
    picture_ = planes_ = {};
    if (vertexBuffer_) gl_.glDeleteBuffers(1, &vertexBuffer_);
    if (vertexArray_) gl_.glDeleteVertexArrays(1, &vertexArray_);
    if (whiteTexture_) gl_.glDeleteTextures(1, &whiteTexture_);
    program_ = vertexBuffer_ = vertexArray_ = whiteTexture_ = 0;
    ready_ = false;
}

} // namespace velarion
