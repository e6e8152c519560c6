#pragma once
// LiveEngine: the one object that runs a show. It owns the copy of the show
// being played, every running cue, the visual stack and the show log, and
// publishes one immutable EngineState that every view reads. Everything that
// changes the live state goes through `perform`.
//
// Contract.
// - Main thread only. Time, delays and the tick come from the Scheduler; the
//   engine never reads a clock or sleeps.
// - The ports are given at construction and must outlive the engine. The
//   engine registers a health callback on the OutputManager and clears it in
//   `shutdown` and on destruction.
// - Tasks the engine schedules hold it weakly: after destruction they do
//   nothing, and `shutdown` cancels every one of them, so no task outlives a
//   shut-down engine.
// - `state()` changes only when a different value is published.

#include "LiveEngine/EngineCommand.h"
#include "LiveEngine/EngineState.h"
#include "LiveEngine/GroupPlayback.h"
#include "LiveEngine/PictureCache.h"
#include "LiveEngine/Run.h"
#include "LiveEngine/TimerRun.h"
#include "LiveEngine/ShowIndex.h"
#include "LiveEngine/VisualStack.h"
#include "LiveEngine/ports/AudioDevices.h"
#include "LiveEngine/ports/ImageLoader.h"
#include "LiveEngine/ports/MediaPlayers.h"
#include "LiveEngine/ports/OutputManager.h"
#include "LiveEngine/ports/Scheduler.h"
#include "LiveEngine/ports/SlidePictures.h"
#include "LiveEngine/ports/StreamTasks.h"
#include "LiveEngine/ports/TextCards.h"
#include "LiveModel/Show.h"
#include "LiveModel/ShowPackage.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace velarion {

// The music apps: how they are driven, and where that work runs off the
// main thread. Without it every stream cue is simulated.
struct EngineStreams {
    StreamRemote remote;
    StreamTasks& tasks;
};

struct EnginePorts {
    Scheduler& scheduler;
    OutputManager& outputs;
    MediaPlayers& players;
    ImageLoader& images;
    TextCards& cards;
    SlidePictures& slides;
    // The sound outputs, when known: a run whose device goes away is logged,
    // and moved back when it returns. Without it nothing is checked.
    AudioDevices* devices = nullptr;
    EngineStreams* streams = nullptr;
};

class LiveEngine {
public:
    static constexpr double goLockoutSeconds = 0.25;
    static constexpr double panicFadeSeconds = 2.0;
    static constexpr double dipLevel = 0.25;
    static constexpr double dipFadeSeconds = 1.0;
    static constexpr double tickSeconds = 0.1;
    static constexpr std::size_t historyLimit = 400;
    static constexpr std::size_t publishedHistoryLimit = 200;
    static constexpr double videoPrepareTimeoutSeconds = 10;
    // How long before a crossfading video loop's seam its next pass starts
    // preparing, so that the swap is on time.
    static constexpr double loopPrepareLeadSeconds = 0.5;
    // How early the next song or sound loop pass is opened off the main loop.
    static constexpr double soundOpenLeadSeconds = 0.1;
    // The reserved destination key of the operator's own program view.
    static inline const std::string programDestination = "_program";

    LiveEngine(Show show, ShowPackage package, EnginePorts ports, bool controlsMusicApps);

    // Built-in backdrop loops: where one is already rendered, and how to
    // render one. The second answers once, on the main loop, with the file
    // or none when rendering failed. Set by the application; without them a
    // built-in backdrop shows nothing.
    using BackdropReady = std::function<std::optional<std::filesystem::path>(BuiltInBackdrop)>;
    using PrepareBackdrop = std::function<void(
        BuiltInBackdrop, std::function<void(std::optional<std::filesystem::path>)>)>;
    BackdropReady backdropReadyURL;
    PrepareBackdrop prepareBackdropLoop;
    // Called just before a music app is told to play; the application stops
    // its own audition of that app with it.
    std::function<void(StreamApp)> onProviderWillStart;
    // Music-app status is asked every this many ticks.
    static constexpr std::uint64_t streamPollTicks = 5;
    ~LiveEngine();
    LiveEngine(const LiveEngine&) = delete;
    LiveEngine& operator=(const LiveEngine&) = delete;

    void perform(const EngineCommand& command);
    void shutdown();

    // A committed edit: the new show and the cues the edit changed. What
    // runs is brought in line without restarting what needn't restart.
    void apply(Show show, const std::set<Uuid>& touched);
    // The same show in another package, as after Save As.
    void replacePackage(ShowPackage package) { package_ = std::move(package); }

    // The list of sound outputs changed: runs whose device went away are
    // logged (the sound server already plays them on the system output), and
    // those whose device came back move back to it.
    void audioDevicesChanged();

    // Logging for other objects: `mode` and `warning` lines.
    void note(const std::string& text);
    void warn(const std::string& text);

    // Published and observable.
    const EngineState& state() const { return state_; }
    // Goes up by one each time a different state is stored.
    std::uint64_t stateVersion() const { return stateVersion_; }
    const Show& show() const { return show_; }
    const ShowPackage& package() const { return package_; }
    const OutputScene& audienceScene() const { return audienceScene_; }
    const LayerKinds& audienceLayerKinds() const { return audienceLayerKinds_; }
    const LayerRoutes& audienceLayerRoutes() const { return audienceLayerRoutes_; }
    const VideoSurfaces& surfaces() const { return surfaces_; }
    double meterLevel() const { return meterLevel_; }
    const Uuid& talkOverID() const { return talkOverID_; }

    // Read-only views of the working state, for diagnostics and tests.
    const std::map<Uuid, Run>& runs() const { return runs_; }
    const std::vector<Uuid>& runOrder() const { return runOrder_; }
    const std::map<Uuid, DestinationKeys>& visualRoutes() const { return visualRoutes_; }
    const std::map<Uuid, DestinationKeys>& supersededDestinations() const { return supersededDestinations_; }
    const std::map<Uuid, Uuid>& afterFinish() const { return afterFinish_; }
    const std::deque<HistoryEntry>& history() const { return history_; }
    const std::vector<Uuid>& heldFollowers() const { return heldFollowers_; }
    const std::optional<GroupPlayback>& playbackGroup() const { return playbackGroup_; }
    const VisualStack& stack() const { return stack_; }
    std::uint64_t tickCount() const { return tickCount_; }
    const std::map<Uuid, double>& sectionStarts() const { return sectionStarts_; }
    const std::optional<TimerRun>& timer() const { return timer_; }

    // Where Next goes after a cue: the first enabled manual cue behind it,
    // else the first enabled cue of any follow; none at the end of the show.
    std::optional<Uuid> firstManualCue(const std::optional<Uuid>& after) const;
    std::optional<int> scheduleDelta() const;
    RunningCue runningCue(const Run& run) const;
    std::optional<NowPlayingMusic> nowPlaying() const;
    // A picture of what a cue will show, for the Stage Display's next-cue
    // view; answers once, on the main loop, with none when there is nothing
    // to show or it can't be made. A video's picture is its frame at 0.1 s,
    // fitted within 960 by 540, decoded by a surface of its own (off the
    // main loop).
    void standbyImage(const Uuid& cueID, std::function<void(std::optional<StillImage>)> done);

private:
    // The tick and the state.
    void scheduleTick();
    void tick();
    void publish();
    void refresh();
    void log(HistoryEntry::Kind kind, const std::string& text);
    std::vector<Run*> activeRuns();
    void programRun(EngineState& next) const;

    // Commands.
    void fireCommand(const Uuid& cueID);
    void setNextCommand(const std::optional<Uuid>& cueID);
    void setMasterLevel(double level);
    void setMuted(bool muted);
    void setTalkOver(bool on);
    void applyLevels();

    // Firing and progression.
    void go();
    void fire(const Cue& cue, std::optional<int> requestedSlideIndex = std::nullopt,
              bool backgroundOnly = false);
    Run& enterRun(const Cue& cue, const Uuid& group, std::optional<Uuid> follower);
    void startOrWait(const Uuid& runID);
    void begin(const Uuid& runID);
    void waitToBegin(Run& run, double seconds);
    void fail(const Uuid& runID, const std::string& reason);
    void finish(const Uuid& runID, bool clearVisual, double fadeSeconds, bool fireFollowers);
    void stop(const Uuid& runID, double fadeSeconds);
    void stopEverything(double fadeSeconds);
    void releaseOrHold(const Uuid& cueID);
    void discardHeldFollowers(const std::string& reason);
    void trackSchedule(const Cue& cue, double wallSeconds);
    std::string numberLabel(const Cue& cue) const;
    void noteFired(const Cue& cue);

    // Kinds begun here.
    void beginImage(Run& run);
    void beginVideo(Run& run);
    // A video cue of a live NDI source (LiveEngineNetworkInput.cpp).
    void beginNetworkInput(Run& run, const NDISource& source);
    void endNetworkInput(Run& run, double fadeSeconds);
    void tickNetworkInput(Run& run);
    void videoPrepared(const Uuid& runID, const VideoPreparation& result);
    void videoEnded(const Uuid& runID);
    void watchVideoEnd(const std::shared_ptr<VideoSurface>& surface, const Uuid& runID);
    void crossfadeVideoLoop(const Uuid& runID);
    void swapLoopSurface(const Uuid& runID, const std::shared_ptr<VideoSurface>& next, double overlapSeconds);
    void beginGraphic(Run& run);
    void beginClear(Run& run);
    void tickVideo(Run& run);

    // Clears.
    // `sparing` is the clear cue's own run, which ends by itself right after.
    void clear(ClearTarget target, double fadeSeconds, bool preservingGroup,
               const std::optional<Uuid>& sparing = std::nullopt);
    void clearLayer(LayerKind kind, double fadeSeconds);
    void clearMessage(MessageTarget target);

    // Timers, messages and the Stage Display.
    void beginTimer(Run& run);
    void beginNewTimer(Run& run);
    void beginMessage(Run& run);
    void sendMessage(const std::string& text, MessageTarget target,
                     std::optional<double> durationSeconds, std::optional<Uuid> runID);
    void tickTimer();
    void updateAudienceTimer();
    ConfidenceState confidence() const;
    std::optional<StillImage> loadImage(const Uuid& mediaID);
    // A decoded picture file, from the cache or loaded into it.
    std::optional<StillImage> cachedPicture(const std::string& path);
    // Moves the run's playing file behind the next one: it fades out over
    // `fadeSeconds`, then stops and leaves `audioTails`.
    void retireToTail(Run& run, double fadeSeconds);

    // Live decks.
    struct LiveLyric {
        const Song* song = nullptr;
        std::vector<std::string> lines;
        const MadeSlide* slide = nullptr;
        Uuid deckID;
        std::optional<Backdrop> background;
    };
    const DeckInfo* deck(const Run& run) const;
    double slideDissolve(const Run& run) const;
    void beginSlides(Run& run);
    void showSlide(int index, const Uuid& runID);
    void moveSlide(int delta);
    void goToSlide(int index);
    void showDeckSlide(const Uuid& cueID, int index);
    void showDeckBackground(const Uuid& cueID);
    void applyDeckBackground(const Uuid& runID);
    void showBackdrop(const Backdrop& backdrop, const Uuid& runID);
    void loopBackdrop(const std::filesystem::path& file, const Uuid& runID, const Uuid& token);
    std::optional<LiveLyric> liveLyric(const Run& run) const;
    int lyricPartCount(const Run& run) const;
    LyricPartPictures lyricPartPictures();
    Run* activeRunOf(const Uuid& cueID);

    // Live updates.
    void updateRun(const Uuid& runID, const Cue& old, const Show& oldShow, bool touched);
    void updateRoutes(const Uuid& runID);
    void updateDeck(const Uuid& runID, const Cue& old, const Show& oldShow);

    // Sound.
    bool isMusic(const Run& run) const { return index_.soundRole(run.cue) == SoundRole::music; }
    double dipFactor(const Run& run) const { return !dippers_.empty() && isMusic(run) ? dipLevel : 1.0; }
    std::optional<std::string> deviceUID(AudioBus bus, const Cue& cue) const;
    static std::optional<std::string> deviceUID(AudioBus bus, const Cue& cue, const AudioSetup& setup);
    // The device a run's sound plays on under `setup`; none for the system
    // output and for runs without sound.
    static std::optional<std::string> soundDevice(const Cue& cue, const AudioSetup& setup);
    // Every player of the run, and its surface, to `device`.
    void moveSound(Run& run, const std::optional<std::string>& device);
    void reorderPlaylist(Run& run);
    void rampMusic(double seconds);
    void handOffMusic(const Run& run, double fadeInSeconds);
    void handOffVideoSound(const Run& run, double fadeInSeconds);
    void applyMusicRule(const Run& run, const VideoCue& video);
    std::optional<AudioPlayback> openPlayback(const std::filesystem::path& file,
                                              const std::optional<std::string>& device,
                                              double inPoint, std::optional<double> outPoint,
                                              double fadeOut, double level, bool loopsItself,
                                              std::shared_ptr<SoundFilePlayer> player);
    // Starts opening `file` off the main loop for the run, unless it already is.
    void openAhead(Run& run, const std::filesystem::path& file);
    void soundArrived(const Uuid& runID);
    void startPlayback(AudioPlayback& playback, double target, double fadeInSeconds);
    void beginAudio(Run& run);
    void startAudio(Run& run); // when the player `beginAudio` asked for is in
    void tickAudio(Run& run);
    void crossfadeAudioLoop(const Uuid& runID);
    void beginPlaylist(Run& run);
    std::vector<Uuid> playingOrder(const PlaylistCue& cue, const std::optional<Uuid>& avoidingFirst);
    enum class SongStart { started, waiting, cantOpen, noneLeft };
    // At GO the first song opens here; later ones only ever off the main loop.
    SongStart startPlaylistSong(const Uuid& runID, std::size_t from, double fadeInSeconds);
    void openNextSong(Run& run);
    void tickPlaylist(Run& run);
    void advancePlaylist(const Uuid& runID, double fadeSeconds);
    void skipTrack();

    // Music apps.
    void beginStream(Run& run);
    void streamStartEnded(const Uuid& runID, const std::optional<StreamError>& error);
    void scheduleStreamStop(Run& run, const StreamTrackCue& track, double elapsedSeconds);
    // Ramps the app from `from` to `to` over `seconds` as its one fade, then
    // pauses it when `pausesAfter`; `done` runs on the main loop after.
    void fadeStream(StreamApp app, int from, int to, double seconds, bool pausesAfter,
                    std::function<void()> done = {});
    void sendStream(StreamApp app, StreamCommand command);
    void pollStream(Run& run);
    void stopStream(Run& run, double fadeSeconds);
    void setStreamLevel(int level, const Run& run);
    void rampStreams(double seconds);
    int currentStreamLevel(const Run& run) const;
    bool drivesApp(const Run& run) const { return run.stream && !run.simulated; }
    // Runs `work` off the main thread; what it posts back runs on the main
    // loop while the engine lives.
    using PostBack = std::function<void(std::function<void()>)>;
    using StreamWork = std::function<void(const StreamRemote&, const StreamCancel&, const PostBack&)>;
    StreamCancel launchStreamWork(StreamWork work);

    // Panic, the safe slide, pause and seek.
    void panic();
    void setHolding(bool on);
    void pause(const Uuid& runID);
    void resume(const Uuid& runID);
    void pauseAll();
    void resumeAll();
    void seek(const Uuid& runID, double seconds);
    // A straight line in amplitude to `level` times the master, 30 steps a
    // second; a newer ramp of the same surface replaces it.
    void rampVideo(const std::shared_ptr<VideoSurface>& surface, double level, double seconds);
    void rampStep(const SceneID& surfaceID, const Uuid& token, int step);
    double master() const { return isMuted_ ? 0 : masterLevel_; }

    // Cue groups.
    void beginPlaybackGroup(const ShowIndex::PreparedGroup& prepared);
    void playGroupStep(int index);
    void advancePlaybackGroup(bool endingCurrentStep);
    void groupRunFinished(const Run& run, bool naturally);
    void releaseHeldGroupStep();
    void cancelPlaybackGroup();

    // Pictures and routes.
    DestinationKeys pictureDestinations(const Cue& cue) const;
    DestinationKeys effectiveDestinations(const Run& run) const;
    bool isForegroundPicture(const Cue& cue) const;
    std::optional<CueGeometry> geometry(const Run& run) const;
    void takeLayer(LayerKind kind, const Run& run, const std::optional<DestinationKeys>& destinations);
    void retire(const VisualStack::Entry& entry, const Run& run, double fadeSeconds,
                const std::optional<DestinationKeys>& destinations);
    void replacePictures(const Run& run, double fadeSeconds,
                         const std::optional<DestinationKeys>& destinations);
    void showPicture(Run& run, SceneContent content, LayerKind layer, double fadeSeconds,
                     SceneScaling scaling);

    void standbyVideoFrame(const VideoCue& video, std::function<void(std::optional<StillImage>)> done);

    // Tasks that hold the engine weakly and are all cancelled by shutdown.
    TaskHandle after(double seconds, std::function<void()> task);
    void post(std::function<void()> task);

    Run* findRun(const Uuid& runID);
    const Run* findRun(const Uuid& runID) const;
    std::filesystem::path mediaPath(const MediaItem& item) const;

    EnginePorts ports_;
    Show show_;
    ShowPackage package_;
    ShowIndex index_;
    bool controlsMusicApps_;

    EngineState state_;
    OutputScene audienceScene_;
    LayerKinds audienceLayerKinds_;
    LayerRoutes audienceLayerRoutes_;
    VideoSurfaces surfaces_;
    double meterLevel_ = 0;

    VisualStack stack_;
    std::map<Uuid, Run> runs_;
    std::vector<Uuid> runOrder_;
    std::map<Uuid, Uuid> afterFinish_;
    std::vector<Uuid> heldFollowers_;
    std::optional<GroupPlayback> playbackGroup_;
    std::map<Uuid, DestinationKeys> visualRoutes_;
    std::map<Uuid, DestinationKeys> supersededDestinations_;
    TaskHandle tickTask_;
    std::uint64_t tickCount_ = 0;
    std::optional<double> lastGo_; // none: the distant past
    PictureCache imageCache_;
    std::map<Uuid, double> sectionStarts_; // wall-clock seconds
    std::deque<HistoryEntry> history_;
    bool historyChanged_ = true;
    std::set<Uuid> dippers_;
    Uuid talkOverID_ = Uuid::random();
    Shared<std::vector<Uuid>> firedCueIDs_;
    std::optional<Uuid> activeDeckRunID_;
    // Every surface made, kept while a run or a layer still shows it (a held
    // last frame outlives its run).
    VideoSurfaces surfaceOwners_;

    // The working values that refresh() publishes.
    std::optional<Uuid> nextCueID_;
    std::optional<Uuid> lastFiredCueID_;
    bool isHeld_ = false;
    bool holdingOn_ = false;
    PanicState panic_ = PanicIdle{};
    double masterLevel_ = 1;
    bool isMuted_ = false;
    std::vector<OutputHealth> outputHealth_;
    std::optional<std::string> stageMessage_;
    std::optional<std::string> audienceMessage_;
    std::map<MessageTarget, TaskHandle> messageTasks_;
    TaskHandle panicTask_;
    std::optional<TimerRun> timer_;
    std::map<std::string, StillImage> lyricPictures_;
    std::map<Uuid, std::shared_ptr<VideoSurface>> backdropSurfaces_; // by run
    std::string lastAudienceTimerText_;
    std::string lastAudienceTimerTitle_;
    struct VideoRamp {
        std::weak_ptr<VideoSurface> surface;
        double startLevel = 0;
        double targetLevel = 0;
        int steps = 1;
        double stepSeconds = 0;
        TaskHandle nextStep;
    };
    std::map<SceneID, VideoRamp> videoRamps_;
    std::map<SceneID, Uuid> videoRampTokens_;
    std::map<StreamApp, StreamCancel> streamFades_;
    std::mt19937 shuffler_{std::random_device{}()};
    std::uint64_t stateVersion_ = 0;

    // Engine tasks by serial, so that shutdown can cancel what is left.
    std::map<std::uint64_t, TaskHandle> tasks_;
    std::uint64_t nextTaskSerial_ = 0;
    bool isShutDown_ = false;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
};

} // namespace velarion
