// A stand-in for the closed NDI runtime, for tests: the same twenty
// functions, carrying pictures and sound between processes on this machine
// through one shared-memory file per sender in $VELARION_FAKE_NDI_DIR
// (default /dev/shm/velarion-ndi-<uid>). Discovery lists those files; a
// receiver finds its sender by name and notices it going and coming back.
// Built twice: whole, and without NDIlib_recv_get_performance.
// VELARION_FAKE_NDI_FAIL_INIT=1 makes NDIlib_initialize refuse.
#include "Platform/NDI/NDIRuntimeABI.h"

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdio>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <dirent.h>
#include <signal.h>
#include <string>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::uint32_t magic = 0x4e444931;
constexpr int audioSlots = 32;
constexpr int audioSlotFloats = 2 * 12000;
constexpr int receiverSlots = 16;

struct AudioSlot {
    std::atomic<std::uint64_t> number; // frame number held + 1; 0 while written
    int rate, channels, samples;
    float data[audioSlotFloats];
};

struct Header {
    std::uint32_t magic;
    std::atomic<std::uint32_t> closed;
    pid_t pid;
    char name[256];
    char url[128];
    std::atomic<std::uint64_t> videoSequence; // odd while a picture is written
    int width, height, stride, fourCC, rateN, rateD;
    std::atomic<std::uint64_t> videoCapacity;
    std::atomic<std::uint64_t> audioWritten;
    std::atomic<std::int64_t> receiverBeats[receiverSlots]; // ms of the last capture
    AudioSlot audio[audioSlots];
};

std::int64_t nowMs() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

std::string directory() {
    if (const char* dir = std::getenv("VELARION_FAKE_NDI_DIR"); dir && *dir) return dir;
    return "/dev/shm/velarion-ndi-" + std::to_string(getuid());
}

std::string hostName() {
    char host[128] = {};
    gethostname(host, sizeof host - 1);
    std::string upper = host;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return upper;
}

std::string fileFor(const std::string& sourceName) {
    std::string file = sourceName;
    for (char& c : file)
        if (c == '/') c = '_';
    return directory() + "/" + file + ".ndi";
}

bool alive(pid_t pid) { return kill(pid, 0) == 0 || errno == EPERM; }

// One mapping of a sender's file.
struct Mapping {
    int fd = -1;
    Header* header = nullptr;
    std::size_t size = 0;
    ino_t inode = 0;

    bool open(const std::string& path, bool create) {
        fd = ::open(path.c_str(), create ? (O_RDWR | O_CREAT | O_EXCL) : O_RDWR, 0600);
        if (fd < 0) return false;
        if (create && ftruncate(fd, sizeof(Header)) != 0) return close(), false;
        struct stat info {};
        fstat(fd, &info);
        inode = info.st_ino;
        return remap(static_cast<std::size_t>(info.st_size));
    }
    bool remap(std::size_t bytes) {
        if (header) munmap(header, size);
        header = nullptr;
        if (bytes < sizeof(Header)) return false;
        void* address = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        if (address == MAP_FAILED) return false;
        header = static_cast<Header*>(address);
        size = bytes;
        return true;
    }
    std::uint8_t* pixels() const { return reinterpret_cast<std::uint8_t*>(header) + sizeof(Header); }
    void close() {
        if (header) munmap(header, size);
        if (fd >= 0) ::close(fd);
        *this = Mapping{};
    }
};

struct Sender {
    Mapping map;
    std::string path;
    NDIlib_source_t source{};
    std::string name, url;
};

struct Finder {
    std::vector<std::string> names, urls;
    std::vector<NDIlib_source_t> sources;
};

struct Receiver {
    std::string name, path;
    Mapping map;
    int slot = -1;
    bool connected = false;
    std::uint64_t lastVideo = 0;
    std::uint64_t nextAudio = 0;
    std::int64_t videoFrames = 0, droppedVideo = 0, audioFrames = 0;
    std::vector<std::uint8_t> picture;
    std::vector<float> sound;
};

std::vector<std::string> liveSources() {
    std::vector<std::string> names;
    DIR* dir = opendir(directory().c_str());
    if (!dir) return names;
    while (dirent* entry = readdir(dir)) {
        std::string file = entry->d_name;
        if (file.size() < 5 || file.substr(file.size() - 4) != ".ndi") continue;
        Mapping map;
        if (!map.open(directory() + "/" + file, false)) continue;
        if (map.header->magic == magic && !map.header->closed && alive(map.header->pid))
            names.emplace_back(map.header->name);
        map.close();
    }
    closedir(dir);
    return names;
}

bool attach(Receiver& receiver) {
    struct stat info {};
    if (receiver.map.header) {
        const bool gone = receiver.map.header->closed || !alive(receiver.map.header->pid) ||
                          stat(receiver.path.c_str(), &info) != 0 || info.st_ino != receiver.map.inode;
        if (!gone) {
            const auto wanted = sizeof(Header) + receiver.map.header->videoCapacity.load();
            if (wanted > receiver.map.size) receiver.map.remap(wanted);
            return receiver.map.header != nullptr;
        }
        receiver.map.header->receiverBeats[receiver.slot].store(0);
        receiver.map.close();
        receiver.slot = -1;
    }
    if (!receiver.map.open(receiver.path, false)) return false;
    Header* header = receiver.map.header;
    if (header->magic != magic || header->closed || !alive(header->pid)) return receiver.map.close(), false;
    for (int i = 0; i < receiverSlots && receiver.slot < 0; ++i) {
        std::int64_t beat = header->receiverBeats[i].load();
        if ((beat == 0 || nowMs() - beat > 2000) && header->receiverBeats[i].compare_exchange_strong(beat, nowMs()))
            receiver.slot = i;
    }
    receiver.lastVideo = header->videoSequence.load() & ~1ull;
    receiver.nextAudio = header->audioWritten.load();
    return attach(receiver);
}

} // namespace

extern "C" {

bool NDIlib_initialize(void) {
    const char* fail = std::getenv("VELARION_FAKE_NDI_FAIL_INIT");
    if (fail && *fail == '1') return false;
    mkdir(directory().c_str(), 0700);
    return true;
}

const char* NDIlib_version(void) { return "6.0.0 (test runtime)"; }

NDIlib_find_instance_t NDIlib_find_create_v2(const NDIlib_find_create_t*) { return new Finder; }
void NDIlib_find_destroy(NDIlib_find_instance_t finder) { delete static_cast<Finder*>(finder); }

const NDIlib_source_t* NDIlib_find_get_current_sources(NDIlib_find_instance_t instance, std::uint32_t* count) {
    auto* finder = static_cast<Finder*>(instance);
    finder->names = liveSources();
    finder->urls.assign(finder->names.size(), "shm://" + directory());
    finder->sources.clear();
    for (std::size_t i = 0; i < finder->names.size(); ++i)
        finder->sources.push_back({finder->names[i].c_str(), finder->urls[i].c_str()});
    *count = static_cast<std::uint32_t>(finder->sources.size());
    return finder->sources.data();
}

bool NDIlib_find_wait_for_sources(NDIlib_find_instance_t instance, std::uint32_t timeoutMs) {
    auto* finder = static_cast<Finder*>(instance);
    const auto end = nowMs() + timeoutMs;
    do {
        if (liveSources() != finder->names) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    } while (nowMs() < end);
    return false;
}

NDIlib_send_instance_t NDIlib_send_create(const NDIlib_send_create_t* settings) {
    if (!settings || !settings->p_ndi_name || !*settings->p_ndi_name) return nullptr;
    auto* sender = new Sender;
    sender->name = hostName() + " (" + settings->p_ndi_name + ")";
    sender->url = "shm://" + directory();
    sender->path = fileFor(sender->name);
    Mapping existing;
    if (existing.open(sender->path, false)) {
        const bool taken = existing.header->magic == magic && !existing.header->closed && alive(existing.header->pid);
        existing.close();
        if (taken) return delete sender, nullptr;
        unlink(sender->path.c_str());
    }
    if (!sender->map.open(sender->path, true)) return delete sender, nullptr;
    Header* header = sender->map.header;
    header->pid = getpid();
    std::snprintf(header->name, sizeof header->name, "%s", sender->name.c_str());
    std::snprintf(header->url, sizeof header->url, "%s", sender->url.c_str());
    header->magic = magic;
    sender->source = {sender->name.c_str(), sender->url.c_str()};
    return sender;
}

void NDIlib_send_destroy(NDIlib_send_instance_t instance) {
    auto* sender = static_cast<Sender*>(instance);
    if (!sender) return;
    sender->map.header->closed = 1;
    unlink(sender->path.c_str());
    sender->map.close();
    delete sender;
}

void NDIlib_send_send_video_v2(NDIlib_send_instance_t instance, const NDIlib_video_frame_v2_t* frame) {
    auto* sender = static_cast<Sender*>(instance);
    if (!sender || !frame || !frame->p_data) return;
    const std::size_t rowBytes = static_cast<std::size_t>(frame->xres) * 4;
    const std::size_t bytes = rowBytes * static_cast<std::size_t>(frame->yres);
    Header* header = sender->map.header;
    if (bytes > header->videoCapacity) {
        if (ftruncate(sender->map.fd, static_cast<off_t>(sizeof(Header) + bytes)) != 0) return;
        if (!sender->map.remap(sizeof(Header) + bytes)) return;
        header = sender->map.header;
        header->videoCapacity = bytes;
    }
    header->videoSequence.fetch_add(1);
    header->width = frame->xres, header->height = frame->yres, header->stride = static_cast<int>(rowBytes);
    header->fourCC = frame->FourCC, header->rateN = frame->frame_rate_N, header->rateD = frame->frame_rate_D;
    for (int y = 0; y < frame->yres; ++y)
        std::memcpy(sender->map.pixels() + rowBytes * static_cast<std::size_t>(y),
                    frame->p_data + static_cast<std::ptrdiff_t>(y) * frame->line_stride_in_bytes, rowBytes);
    header->videoSequence.fetch_add(1);
}

void NDIlib_send_send_audio_v2(NDIlib_send_instance_t instance, const NDIlib_audio_frame_v2_t* frame) {
    auto* sender = static_cast<Sender*>(instance);
    if (!sender || !frame || !frame->p_data || frame->no_channels * frame->no_samples > audioSlotFloats) return;
    Header* header = sender->map.header;
    const std::uint64_t number = header->audioWritten.load();
    AudioSlot& slot = header->audio[number % audioSlots];
    slot.number = 0;
    slot.rate = frame->sample_rate, slot.channels = frame->no_channels, slot.samples = frame->no_samples;
    for (int c = 0; c < frame->no_channels; ++c)
        std::memcpy(slot.data + c * frame->no_samples,
                    reinterpret_cast<const std::uint8_t*>(frame->p_data) + c * frame->channel_stride_in_bytes,
                    sizeof(float) * static_cast<std::size_t>(frame->no_samples));
    slot.number = number + 1;
    header->audioWritten = number + 1;
}

const NDIlib_source_t* NDIlib_send_get_source_name(NDIlib_send_instance_t instance) {
    return instance ? &static_cast<Sender*>(instance)->source : nullptr;
}

int NDIlib_send_get_no_connections(NDIlib_send_instance_t instance, std::uint32_t) {
    auto* sender = static_cast<Sender*>(instance);
    int count = 0;
    for (auto& beat : sender->map.header->receiverBeats) {
        const std::int64_t at = beat.load();
        if (at != 0 && nowMs() - at < 1000) ++count;
    }
    return count;
}

NDIlib_recv_instance_t NDIlib_recv_create_v3(const NDIlib_recv_create_v3_t* settings) {
    if (!settings || !settings->source_to_connect_to.p_ndi_name) return nullptr;
    auto* receiver = new Receiver;
    receiver->name = settings->source_to_connect_to.p_ndi_name;
    receiver->path = fileFor(receiver->name);
    return receiver;
}

void NDIlib_recv_destroy(NDIlib_recv_instance_t instance) {
    auto* receiver = static_cast<Receiver*>(instance);
    if (!receiver) return;
    if (receiver->map.header && receiver->slot >= 0) receiver->map.header->receiverBeats[receiver->slot].store(0);
    receiver->map.close();
    delete receiver;
}

NDIlib_frame_type_e NDIlib_recv_capture_v2(NDIlib_recv_instance_t instance, NDIlib_video_frame_v2_t* video,
                                           NDIlib_audio_frame_v2_t* audio, NDIlib_metadata_frame_t*,
                                           std::uint32_t timeoutMs) {
    auto* receiver = static_cast<Receiver*>(instance);
    const auto end = nowMs() + timeoutMs;
    do {
        if (!attach(receiver[0])) {
            if (receiver->connected) {
                receiver->connected = false;
                return NDIlib_frame_type_error;
            }
        } else {
            receiver->connected = true;
            Header* header = receiver->map.header;
            if (receiver->slot >= 0) header->receiverBeats[receiver->slot].store(nowMs());
            const std::uint64_t written = header->audioWritten.load();
            if (written > receiver->nextAudio + audioSlots) receiver->nextAudio = written - audioSlots;
            if (audio && receiver->nextAudio < written) {
                const AudioSlot& slot = header->audio[receiver->nextAudio % audioSlots];
                const int count = slot.channels * slot.samples;
                receiver->sound.assign(slot.data, slot.data + std::max(count, 0));
                const bool intact = slot.number.load() == receiver->nextAudio + 1;
                ++receiver->nextAudio;
                if (intact) {
                    *audio = NDIlib_audio_frame_v2_t{};
                    audio->sample_rate = slot.rate, audio->no_channels = slot.channels, audio->no_samples = slot.samples;
                    audio->p_data = receiver->sound.data();
                    audio->channel_stride_in_bytes = slot.samples * static_cast<int>(sizeof(float));
                    ++receiver->audioFrames;
                    return NDIlib_frame_type_audio;
                }
            }
            const std::uint64_t sequence = header->videoSequence.load();
            const std::size_t capacity = receiver->map.size - sizeof(Header);
            if (video && sequence % 2 == 0 && sequence > receiver->lastVideo) {
                const int width = header->width, height = header->height, stride = header->stride;
                const std::size_t bytes = static_cast<std::size_t>(stride) * static_cast<std::size_t>(height);
                if (bytes <= capacity) {
                    receiver->picture.assign(receiver->map.pixels(), receiver->map.pixels() + bytes);
                    if (header->videoSequence.load() == sequence) {
                        receiver->droppedVideo += static_cast<std::int64_t>((sequence - receiver->lastVideo) / 2) - 1;
                        receiver->lastVideo = sequence;
                        ++receiver->videoFrames;
                        *video = NDIlib_video_frame_v2_t{};
                        video->xres = width, video->yres = height;
                        video->FourCC = static_cast<NDIlib_FourCC_video_type_e>(header->fourCC);
                        video->frame_rate_N = header->rateN, video->frame_rate_D = header->rateD;
                        video->frame_format_type = NDIlib_frame_format_type_progressive;
                        video->p_data = receiver->picture.data();
                        video->line_stride_in_bytes = stride;
                        return NDIlib_frame_type_video;
                    }
                }
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    } while (nowMs() < end);
    return NDIlib_frame_type_none;
}

void NDIlib_recv_free_video_v2(NDIlib_recv_instance_t, const NDIlib_video_frame_v2_t*) {}
void NDIlib_recv_free_audio_v2(NDIlib_recv_instance_t, const NDIlib_audio_frame_v2_t*) {}
void NDIlib_recv_free_metadata(NDIlib_recv_instance_t, const NDIlib_metadata_frame_t*) {}

int NDIlib_recv_get_no_connections(NDIlib_recv_instance_t instance) {
    auto* receiver = static_cast<Receiver*>(instance);
    return attach(*receiver) ? 1 : 0;
}

#ifndef VELARION_FAKE_NDI_INCOMPLETE
void NDIlib_recv_get_performance(NDIlib_recv_instance_t instance, NDIlib_recv_performance_t* total,
                                 NDIlib_recv_performance_t* dropped) {
    auto* receiver = static_cast<Receiver*>(instance);
    if (total) *total = {receiver->videoFrames, receiver->audioFrames, 0};
    if (dropped) *dropped = {receiver->droppedVideo, 0, 0};
}
#endif

} // extern "C"
