#pragma once
// MediaPreviewPlayer: plays one library file's sound in the preview panel,
// on the operator's Headphones output, with its own player, apart from the
// live show: nothing it does reaches the engine, the outputs or the house
// sound. A video's picture in the panel comes from its poster frames.
//
// Contract.
// - Main thread only. Observers read the published fields after `onChange`.
// - `load` begins a new generation; results of work begun under an older
//   one (a slow open, a seek ending) are dropped.
// - Sound is off until `setSound` names a device; then it plays there at the
//   given level. A device that is gone stops the sound and sets `error`.
// - Seeks go through PreviewSeekQueue: while one runs, newer requests only
//   replace the pending one, and the newest runs when it ends.
// - `tick` (about ten times a second while visible) follows the position
//   and notices the end of the file and a broken stream.
// - The players and the devices must outlive the preview; destruction stops
//   the player.

#include "LiveEngine/ports/AudioDevices.h"
#include "LiveEngine/ports/MediaPlayers.h"
#include "LiveEngine/ports/Scheduler.h"

#include "Identity/Uuid.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace velarion {

// Seeks as fast as a finger drags, one at a time, the newest wish winning.
struct PreviewSeekQueue {
    struct Request {
        double seconds = 0;
        bool precise = false;
        friend bool operator==(const Request&, const Request&) = default;
    };
    bool isSeeking = false;
    std::optional<Request> pending;

    // The request to run now, or none when one is under way (it is kept).
    std::optional<Request> request(Request wish);
    // The running seek ended: the pending request to run next, if any.
    std::optional<Request> finished();
};

class MediaPreviewPlayer {
public:
    static constexpr const char* missingFile = "The media file is missing. Relink it before previewing.";
    static constexpr const char* headphonesGone =
        "The Headphones output is disconnected. Choose an available output in Settings → Sound.";
    static constexpr const char* stoppedEarly = "The media could not continue playing. Check the file and try again.";

    MediaPreviewPlayer(MediaPlayers& players, Scheduler& scheduler, const AudioDevices* devices);
    ~MediaPreviewPlayer();
    MediaPreviewPlayer(const MediaPreviewPlayer&) = delete;
    MediaPreviewPlayer& operator=(const MediaPreviewPlayer&) = delete;

    std::function<void()> onChange;

    void load(const std::filesystem::path& file, std::optional<double> knownDuration = std::nullopt);
    void play();
    void pause();
    void stop();
    void seek(double seconds, bool precise = false);
    // None turns the sound off.
    void setSound(const std::optional<std::string>& deviceUID, double volume);
    void tick();

    double position() const { return position_; }
    double duration() const { return duration_; }
    bool isPlaying() const { return isPlaying_; }
    bool isLoading() const { return isLoading_; }
    bool isReady() const { return player_ != nullptr; }
    bool soundEnabled() const { return device_.has_value(); }
    const std::optional<std::string>& error() const { return error_; }
    const Uuid& generation() const { return generation_; }
    const PreviewSeekQueue& seeks() const { return seeks_; }

private:
    void opened(const Uuid& generation, std::shared_ptr<SoundFilePlayer> player);
    void runSeek(PreviewSeekQueue::Request request);
    void applySound();
    void fail(std::string text);
    void changed();

    MediaPlayers& players_;
    Scheduler& scheduler_;
    const AudioDevices* devices_;
    std::shared_ptr<SoundFilePlayer> player_;
    double position_ = 0;
    double duration_ = 0;
    bool isPlaying_ = false;
    bool isLoading_ = false;
    bool playAfterSeek_ = false;
    std::optional<std::string> device_;
    double volume_ = 1;
    std::optional<std::string> error_;
    Uuid generation_ = Uuid::random();
    PreviewSeekQueue seeks_;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
};

} // namespace velarion
