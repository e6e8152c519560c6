#pragma once
// CNDIBridge: the small C bridge to the NDI runtime. The runtime is never
// linked: `vela_ndi_load` opens it with dlopen and binds its twenty
// functions by name; every other call does nothing (or answers null/0) until
// a load has succeeded.
//
// Contract.
// - `vela_ndi_load` is serialized by one mutex; once a runtime is held it
//   stays loaded for the life of the process (a runtime installed later
//   needs a restart). Every other function may be called from any thread;
//   a record (finder, sender, receiver) is used by one thread at a time.
// - Records are created and destroyed by their own pair of calls; the
//   strings and pixels they hand out stay valid until the next call on the
//   same record (or the matching release).

#include <cstddef>
#include <cstdint>

extern "C" {

typedef struct vela_ndi_finder vela_ndi_finder;
typedef struct vela_ndi_sender vela_ndi_sender;
typedef struct vela_ndi_receiver vela_ndi_receiver;

enum vela_ndi_capture_kind {
    vela_ndi_capture_none = 0,
    vela_ndi_capture_video = 1,
    vela_ndi_capture_audio = 2,
    vela_ndi_capture_disconnected = 3,
};

enum vela_ndi_pixel_format { vela_ndi_pixels_bgra = 0, vela_ndi_pixels_bgrx = 1, vela_ndi_pixels_other = 2 };

// One captured frame; what it points to stays valid until
// vela_ndi_recv_release.
typedef struct vela_ndi_capture {
    int kind;
    // video
    const std::uint8_t* pixels;
    int width, height, stride;
    int pixelFormat;
    int rateNumerator, rateDenominator;
    std::int64_t timecode;
    // audio: planar floats, one channel after another
    const float* samples;
    int sampleRate, channels, samplesPerChannel, channelStrideBytes;
    int holdsVideo, holdsAudio; // private: what release must free
} vela_ndi_capture;

int vela_ndi_load(const char* path, char* error, std::size_t size);
int vela_ndi_is_loaded(void);
const char* vela_ndi_version(void);

vela_ndi_finder* vela_ndi_find_create(void);
void vela_ndi_find_destroy(vela_ndi_finder* finder);
int vela_ndi_find_sources(vela_ndi_finder* finder, std::uint32_t timeout_ms);
const char* vela_ndi_find_name(vela_ndi_finder* finder, int index);
const char* vela_ndi_find_url(vela_ndi_finder* finder, int index);

vela_ndi_sender* vela_ndi_send_create(const char* name);
void vela_ndi_send_destroy(vela_ndi_sender* sender);
const char* vela_ndi_send_name(vela_ndi_sender* sender);
const char* vela_ndi_send_url(vela_ndi_sender* sender);
int vela_ndi_send_connections(vela_ndi_sender* sender);
// Alpha: 0 off (BGRX), 1 straight (un-premultiplied copy), 2 premultiplied as
// given. Returns 1 when the picture went to the runtime.
int vela_ndi_send_video(vela_ndi_sender* sender, const std::uint8_t* pixels, int width, int height, int stride,
                        int numerator, int denominator, int alpha);
int vela_ndi_send_audio(vela_ndi_sender* sender, const float* planar, int sampleRate, int channels,
                        int samplesPerChannel);

// BGRA (straight alpha) pictures are asked for.
vela_ndi_receiver* vela_ndi_recv_create(const char* name, const char* url);
void vela_ndi_recv_destroy(vela_ndi_receiver* receiver);
int vela_ndi_recv_capture(vela_ndi_receiver* receiver, vela_ndi_capture* capture, std::uint32_t timeout_ms);
void vela_ndi_recv_release(vela_ndi_receiver* receiver, vela_ndi_capture* capture);
int vela_ndi_recv_connections(vela_ndi_receiver* receiver);
std::int64_t vela_ndi_recv_dropped_video(vela_ndi_receiver* receiver);

// Copies a picture into premultiplied BGRA: straight BGRA is multiplied by
// its alpha, BGRX becomes opaque.
void vela_ndi_copy_premultiplied(std::uint8_t* target, int targetStride, const std::uint8_t* source,
                                 int sourceStride, int width, int height, int sourceIsBGRX);

} // extern "C"
