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

constexpr const char* fragmentSource = R"(#version 330 core
in vec2 coordinate;
uniform sampler2D picture;
uniform vec4 color;
out vec4 fragment;
void main() { fragment = texture(picture, coordinate) * color; }
)";

} // namespace

bool GlSceneDrawer::prepare() {
    if (ready_) return program_ != 0;
    ready_ = true;
    gl_.initializeOpenGLFunctions();
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
    program_ = gl_.glCreateProgram();
    gl_.glAttachShader(program_, vertex);
    gl_.glAttachShader(program_, fragment);
    gl_.glLinkProgram(program_);
    gl_.glDeleteShader(vertex);
    gl_.glDeleteShader(fragment);
    int linked = 0;
    gl_.glGetProgramiv(program_, GL_LINK_STATUS, &linked);
    if (!linked) {
        gl_.glDeleteProgram(program_);
        program_ = 0;
        return false;
    }
    uniformCentre_ = gl_.glGetUniformLocation(program_, "centre");
    uniformTransform_ = gl_.glGetUniformLocation(program_, "transform");
    uniformViewport_ = gl_.glGetUniformLocation(program_, "viewport");
    uniformColor_ = gl_.glGetUniformLocation(program_, "color");
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

GlSceneDrawer::Texture* GlSceneDrawer::textureFor(const SceneID& key,
                                                  const std::shared_ptr<const StillPixels>& pixels) {
    Texture& texture = textures_[key];
    texture.used = true;
    if (texture.id != 0 && texture.pixels == pixels) return &texture;
    const bool fresh = texture.id == 0;
    if (fresh) gl_.glGenTextures(1, &texture.id);
    gl_.glBindTexture(GL_TEXTURE_2D, texture.id);
    gl_.glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    if (!fresh && texture.width == pixels->width && texture.height == pixels->height) {
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
    texture.pixels = pixels;
    return &texture;
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
    gl_.glUseProgram(program_);
    gl_.glBindVertexArray(vertexArray_);
    gl_.glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer_);
    gl_.glUniform2f(uniformViewport_, static_cast<float>(widthPixels), static_cast<float>(heightPixels));
    gl_.glActiveTexture(GL_TEXTURE0);
    for (auto& [key, texture] : textures_) texture.used = false;

    for (const SceneDrawOperation& operation : frame.operations) {
        std::optional<LayerQuad> quad;
        std::array<float, 4> color{1, 1, 1, 1};
        const float opacity = operation.opacity;
        if (const auto* fill = std::get_if<SceneColorContent>(&operation.content)) {
            quad = colorQuad(operation.rect);
            const SceneColor& c = fill->color;
            color = {static_cast<float>(c.red * c.alpha) * opacity, static_cast<float>(c.green * c.alpha) * opacity,
                     static_cast<float>(c.blue * c.alpha) * opacity, static_cast<float>(c.alpha) * opacity};
            gl_.glBindTexture(GL_TEXTURE_2D, whiteTexture_);
        } else {
            std::shared_ptr<const StillPixels> pixels;
            SceneID key;
            if (const auto* still = std::get_if<SceneStillContent>(&operation.content)) {
                pixels = still->image.pixels();
                key = still->image.id();
            } else if (const auto* video = std::get_if<SceneVideoContent>(&operation.content)) {
                if (videoFrames) pixels = videoFrames(video->surfaceID);
                else if (operation.surface) pixels = operation.surface->latestFrame();
                key = video->surfaceID;
            }
            if (!pixels || pixels->width <= 0) continue;
            quad = pictureQuad(operation.rect, operation.gravity, pixels->width, pixels->height);
            if (!quad) continue;
            Texture* texture = textureFor(key, pixels);
            gl_.glBindTexture(GL_TEXTURE_2D, texture->id);
            color = {opacity, opacity, opacity, opacity};
        }
        if (!quad) continue;
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
        gl_.glUniformMatrix4fv(uniformTransform_, 1, GL_FALSE, matrix.data());
        gl_.glUniform2f(uniformCentre_, static_cast<float>(operation.rect.left + operation.rect.width / 2),
                        static_cast<float>(operation.rect.bottom + operation.rect.height / 2));
        gl_.glUniform4f(uniformColor_, color[0], color[1], color[2], color[3]);
        gl_.glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    }
    // Pictures no longer drawn give their memory back.
    for (auto texture = textures_.begin(); texture != textures_.end();) {
        if (texture->second.used) {
            ++texture;
            continue;
        }
        gl_.glDeleteTextures(1, &texture->second.id);
        texture = textures_.erase(texture);
    }
}

void GlSceneDrawer::release() {
    if (!ready_ || QOpenGLContext::currentContext() == nullptr) return;
    for (auto& [key, texture] : textures_) gl_.glDeleteTextures(1, &texture.id);
    textures_.clear();
    if (program_) gl_.glDeleteProgram(program_);
    if (vertexBuffer_) gl_.glDeleteBuffers(1, &vertexBuffer_);
    if (vertexArray_) gl_.glDeleteVertexArrays(1, &vertexArray_);
    if (whiteTexture_) gl_.glDeleteTextures(1, &whiteTexture_);
    program_ = vertexBuffer_ = vertexArray_ = whiteTexture_ = 0;
    ready_ = false;
}

} // namespace velarion
