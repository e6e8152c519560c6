#pragma once
// NDIRuntimeABI: the C types and function signatures of the closed NDI
// runtime (libndi.so.6), declared here from its published names and layouts
// so that nothing of the runtime is needed to build. Only the twenty
// functions the bridge binds, and the records they take, are declared.
//
// Contract: plain C layouts; the runtime owns every pointer it returns
// until the matching free or destroy call.

#include <cstdint>

extern "C" {

#define VELA_NDI_FOURCC(a, b, c, d)                                                                          \
    ((std::uint32_t)(std::uint8_t)(a) | ((std::uint32_t)(std::uint8_t)(b) << 8) |                            \
     ((std::uint32_t)(std::uint8_t)(c) << 16) | ((std::uint32_t)(std::uint8_t)(d) << 24))

typedef enum NDIlib_frame_type_e {
    NDIlib_frame_type_none = 0,
    NDIlib_frame_type_video = 1,
    NDIlib_frame_type_audio = 2,
    NDIlib_frame_type_metadata = 3,
    NDIlib_frame_type_error = 4,
    NDIlib_frame_type_status_change = 100,
    NDIlib_frame_type_max = 0x7fffffff
} NDIlib_frame_type_e;

typedef enum NDIlib_FourCC_video_type_e {
    NDIlib_FourCC_video_type_UYVY = VELA_NDI_FOURCC('U', 'Y', 'V', 'Y'),
    NDIlib_FourCC_video_type_BGRA = VELA_NDI_FOURCC('B', 'G', 'R', 'A'),
    NDIlib_FourCC_video_type_BGRX = VELA_NDI_FOURCC('B', 'G', 'R', 'X'),
    NDIlib_FourCC_video_type_RGBA = VELA_NDI_FOURCC('R', 'G', 'B', 'A'),
    NDIlib_FourCC_video_type_RGBX = VELA_NDI_FOURCC('R', 'G', 'B', 'X'),
    NDIlib_FourCC_video_type_max = 0x7fffffff
} NDIlib_FourCC_video_type_e;

typedef enum NDIlib_frame_format_type_e {
    NDIlib_frame_format_type_interleaved = 0,
    NDIlib_frame_format_type_progressive = 1,
    NDIlib_frame_format_type_field_0 = 2,
    NDIlib_frame_format_type_field_1 = 3,
    NDIlib_frame_format_type_max = 0x7fffffff
} NDIlib_frame_format_type_e;

typedef enum NDIlib_recv_bandwidth_e {
    NDIlib_recv_bandwidth_metadata_only = -10,
    NDIlib_recv_bandwidth_audio_only = 10,
    NDIlib_recv_bandwidth_lowest = 0,
    NDIlib_recv_bandwidth_highest = 100,
    NDIlib_recv_bandwidth_max = 0x7fffffff
} NDIlib_recv_bandwidth_e;

typedef enum NDIlib_recv_color_format_e {
    NDIlib_recv_color_format_BGRX_BGRA = 0,
    NDIlib_recv_color_format_UYVY_BGRA = 1,
    NDIlib_recv_color_format_RGBX_RGBA = 2,
    NDIlib_recv_color_format_UYVY_RGBA = 3,
    NDIlib_recv_color_format_fastest = 100,
    NDIlib_recv_color_format_best = 101,
    NDIlib_recv_color_format_max = 0x7fffffff
} NDIlib_recv_color_format_e;

static const std::int64_t NDIlib_send_timecode_synthesize = INT64_MAX;

typedef struct NDIlib_source_t {
    const char* p_ndi_name;
    const char* p_url_address;
} NDIlib_source_t;

typedef struct NDIlib_find_create_t {
    bool show_local_sources;
    const char* p_groups;
    const char* p_extra_ips;
} NDIlib_find_create_t;

typedef struct NDIlib_send_create_t {
    const char* p_ndi_name;
    const char* p_groups;
    bool clock_video;
    bool clock_audio;
} NDIlib_send_create_t;

typedef struct NDIlib_recv_create_v3_t {
    NDIlib_source_t source_to_connect_to;
    NDIlib_recv_color_format_e color_format;
    NDIlib_recv_bandwidth_e bandwidth;
    bool allow_video_fields;
    const char* p_ndi_recv_name;
} NDIlib_recv_create_v3_t;

typedef struct NDIlib_video_frame_v2_t {
    int xres;
    int yres;
    NDIlib_FourCC_video_type_e FourCC;
    int frame_rate_N;
    int frame_rate_D;
    float picture_aspect_ratio;
    NDIlib_frame_format_type_e frame_format_type;
    std::int64_t timecode;
    std::uint8_t* p_data;
    int line_stride_in_bytes;
    const char* p_metadata;
    std::int64_t timestamp;
} NDIlib_video_frame_v2_t;

typedef struct NDIlib_audio_frame_v2_t {
    int sample_rate;
    int no_channels;
    int no_samples;
    std::int64_t timecode;
    float* p_data;
    int channel_stride_in_bytes;
    const char* p_metadata;
    std::int64_t timestamp;
} NDIlib_audio_frame_v2_t;

typedef struct NDIlib_metadata_frame_t {
    int length;
    std::int64_t timecode;
    char* p_data;
} NDIlib_metadata_frame_t;

typedef struct NDIlib_recv_performance_t {
    std::int64_t video_frames;
    std::int64_t audio_frames;
    std::int64_t metadata_frames;
} NDIlib_recv_performance_t;

typedef void* NDIlib_find_instance_t;
typedef void* NDIlib_send_instance_t;
typedef void* NDIlib_recv_instance_t;

// The twenty functions, as pointer types the bridge binds by name.
typedef bool (*NDIlib_initialize_f)(void);
typedef const char* (*NDIlib_version_f)(void);
typedef NDIlib_find_instance_t (*NDIlib_find_create_v2_f)(const NDIlib_find_create_t*);
typedef void (*NDIlib_find_destroy_f)(NDIlib_find_instance_t);
typedef const NDIlib_source_t* (*NDIlib_find_get_current_sources_f)(NDIlib_find_instance_t, std::uint32_t*);
typedef bool (*NDIlib_find_wait_for_sources_f)(NDIlib_find_instance_t, std::uint32_t);
typedef NDIlib_send_instance_t (*NDIlib_send_create_f)(const NDIlib_send_create_t*);
typedef void (*NDIlib_send_destroy_f)(NDIlib_send_instance_t);
typedef void (*NDIlib_send_send_video_v2_f)(NDIlib_send_instance_t, const NDIlib_video_frame_v2_t*);
typedef void (*NDIlib_send_send_audio_v2_f)(NDIlib_send_instance_t, const NDIlib_audio_frame_v2_t*);
typedef const NDIlib_source_t* (*NDIlib_send_get_source_name_f)(NDIlib_send_instance_t);
typedef int (*NDIlib_send_get_no_connections_f)(NDIlib_send_instance_t, std::uint32_t);
typedef NDIlib_recv_instance_t (*NDIlib_recv_create_v3_f)(const NDIlib_recv_create_v3_t*);
typedef void (*NDIlib_recv_destroy_f)(NDIlib_recv_instance_t);
typedef NDIlib_frame_type_e (*NDIlib_recv_capture_v2_f)(NDIlib_recv_instance_t, NDIlib_video_frame_v2_t*,
                                                        NDIlib_audio_frame_v2_t*, NDIlib_metadata_frame_t*,
                                                        std::uint32_t);
typedef void (*NDIlib_recv_free_video_v2_f)(NDIlib_recv_instance_t, const NDIlib_video_frame_v2_t*);
typedef void (*NDIlib_recv_free_audio_v2_f)(NDIlib_recv_instance_t, const NDIlib_audio_frame_v2_t*);
typedef void (*NDIlib_recv_free_metadata_f)(NDIlib_recv_instance_t, const NDIlib_metadata_frame_t*);
typedef int (*NDIlib_recv_get_no_connections_f)(NDIlib_recv_instance_t);
typedef void (*NDIlib_recv_get_performance_f)(NDIlib_recv_instance_t, NDIlib_recv_performance_t*,
                                              NDIlib_recv_performance_t*);

} // extern "C"
