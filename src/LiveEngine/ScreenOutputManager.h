#pragma once
// ScreenOutputManager: the output manager of a running application. It opens
// a window for each screen whose display is connected (and the test window
// when the operator asks for it), narrows the engine's scene for each one,
// shows the Stage picture on Stage screens, identification pictures and test
// patterns on request, and keeps the health table the console and the Ready
// check read.
//
// Contract: as OutputManager, plus:
// - Main thread only. Windows come and go with `configure` and with every
//   change of displays; a screen whose display has gone keeps its place in
//   the setup with a red health row, and gets its window and picture back
//   when the display returns.
// - Each screen shows override ?? test pattern ?? its routed, filtered
//   scene. An identification lasts 5 seconds; a new one restarts them.
// - `identify` and `setTestPattern` answer a refusal sentence while Safe
//   Slide or Panic is active (as `coverIsActive` says), else none.
// - Network feeds: one FeedRunner per feed, made by the factories given to
//   `setFeedFactories` (none: every NDI screen reports its sender as
//   unavailable). A changed or removed feed is retired, its sender closed
//   off the main thread; a new sender of the same name starts only once the
//   old one has gone. Video sound of feeds that send sound is mixed and sent
//   every 20 ms while any surface is tapped.
// - Ownership: the displays, pictures and scheduler outlive the manager.

#include "LiveEngine/FeedRunner.h"
#include "LiveEngine/NDISoundMix.h"
#include "LiveEngine/ports/NetworkFeeds.h"
#include "LiveEngine/ports/OutputDisplays.h"
#include "LiveEngine/ports/OutputManager.h"
#include "LiveEngine/ports/SceneSink.h"
#include "LiveEngine/ports/Scheduler.h"
#include "LiveEngine/ports/ScreenPictures.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace velarion {

class ScreenOutputManager final : public OutputManager {
public:
    static constexpr const char* placeholderDetail = "Placeholder — preview only; no signal is sent.";
    static constexpr const char* disconnectedDetail = "The selected display is disconnected.";
    static constexpr const char* assignedTwiceDetail = "This display is already assigned to another screen.";
    static constexpr const char* testWindowClosedDetail = "Test window is closed. Open it from the Program menu.";
    static constexpr const char* senderUnavailableDetail =
        "The NDI sender is unavailable. Check the runtime and output name.";
    static constexpr const char* missingFeedDetail = "The selected NDI configuration is missing.";
    static constexpr const char* invalidFeedFormatDetail = "Invalid picture size or frame rate.";
    static constexpr double soundSeconds = 0.02;
    static constexpr const char* identifyRefusal =
        "Screen identification is unavailable while Safe Slide or Panic is active.";
    static constexpr const char* patternRefusal = "Screen tests are unavailable while Safe Slide or Panic is active.";
    static constexpr const char* missingSourceName = "The selected picture source is missing.";
    static constexpr const char* noOutputName = "Composition preview — no output";
    static constexpr const char* programPreviewTitle = "Program preview";
    static constexpr double identifySeconds = 5;
    static constexpr double healthSeconds = 1;
    static constexpr int stageWidthPixels = 1280;
    static constexpr int stageHeightPixels = 720;

    ScreenOutputManager(Scheduler& scheduler, OutputDisplays& displays, ScreenPictures& pictures,
                        std::function<bool()> coverIsActive);
    ~ScreenOutputManager() override;
    ScreenOutputManager(const ScreenOutputManager&) = delete;
    ScreenOutputManager& operator=(const ScreenOutputManager&) = delete;

    // OutputManager
    void apply(const OutputScene& scene, const LayerKinds& kinds, const VideoSurfaces& surfaces,
               const LayerRoutes& routes, const LyricPartPictures& lyricParts,
               const std::optional<SceneID>& lyricLayerID) override;
    void configure(const OutputSetup& setup) override;
    void updateStage(const ConfidenceState& confidence, const std::optional<TimerState>& timer,
                     const std::optional<std::string>& nextCueName, double wallSeconds) override;
    void clearDiagnostics() override;
    void closeAll() override;
    void setOnHealthChange(HealthCallback callback) override { onHealthChange_ = std::move(callback); }
    std::vector<OutputHealth> health() const override { return health_; }
    std::optional<std::string> programOutputID() const override;
    std::string programOutputName() const override;
    std::optional<std::string> programOutputSelection() const override { return programOutputSelection_; }
    void selectProgramOutput(const std::optional<std::string>& destination) override;
    std::set<SceneID> programLayerIDs() const override;

    // How network feeds are made; before the first `configure`.
    void setFeedFactories(FeedFactories factories) { feedFactories_ = std::move(factories); }
    // Feed ids with a runner now, and names whose sender is still closing.
    std::vector<std::string> runningFeedIDs() const;
    std::size_t closingFeedCount() const { return closingFeedTokens_.size(); }

    // What the program preview shows: the program output's picture, or the
    // whole composition when there is no output.
    OutputScene programScene() const override;

    // The operator's tools.
    std::optional<std::string> identify(const std::string& screenID) override;
    std::optional<std::string> setTestPattern(const std::string& screenID,
                                              std::optional<OutputTestPattern> pattern) override;
    void setTestWindowVisible(const std::string& screenID, bool visible) override;
    bool testWindowIsVisible(const std::string& screenID) const override;
    void showProgramPreview() override;
    void addMirror(const std::weak_ptr<SceneSink>& sink) override;
    void removeMirror(const std::shared_ptr<SceneSink>& sink) override;
    std::vector<DisplayInfo> availableDisplays() const override { return displays_.displays(); }

    bool programPreviewIsOpen() const { return programPreviewWindow_ != nullptr; }
    // A screen's picture as it stands; none for a screen not in the setup.
    std::optional<OutputScene> pictureOf(const std::string& screenID) const;
    // Screen ids with a window open now.
    std::vector<std::string> openWindowIDs() const;
    // Times the Stage picture has been drawn.
    int stageRenders() const { return stageRenders_; }

    // The scene of the layers routed to `destination` (or to everywhere),
    // and of those the kinds a screen shows.
    static OutputScene routedScene(const OutputScene& scene, const LayerRoutes& routes, const std::string& destination);
    static OutputScene sceneShowing(const OutputScene& scene, const LayerKinds& kinds,
                                    const std::vector<LayerKind>& showing);

private:
    struct StageSnapshot {
        ConfidenceState confidence;
        std::optional<TimerState> timer;
        std::optional<std::string> nextCueName;
        long long second = 0;
        friend bool operator==(const StageSnapshot&, const StageSnapshot&) = default;
    };

    void rebuild();
    void updateHealth(std::vector<OutputHealth> health);
    std::vector<OutputHealth> feedHealth() const;
    void healthTick();
    void drawAll();
    void drawScreen(const LogicalScreen& screen);
    void drawWindow(const LogicalScreen& screen, const SceneSurfaces& surfaces, double now);
    void drawProgram(const SceneSurfaces& surfaces, double now);
    void renderStageIfNeeded();
    OutputScene pictureScene(const StillImage& still) const;
    const LogicalScreen* screenNamed(const std::string& screenID) const;
    SceneSurfaces sceneSurfaces() const;

    // Network feeds (ScreenOutputManagerFeeds.cpp).
    void rebuildFeeds();
    void applyFeeds();
    void retireFeed(const std::string& feedID);
    void closeFeeds();
    void feedRow(OutputHealth& row, const Uuid& feedID) const;
    void updateSoundTaps();
    void sendSound();

    Scheduler& scheduler_;
    OutputDisplays& displays_;
    ScreenPictures& pictures_;
    std::function<bool()> coverIsActive_;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);

    OutputSetup setup_;
    std::vector<LogicalScreen> screens_; // effective, in order
    std::map<std::string, std::unique_ptr<OutputWindow>> windows_; // by screen id
    std::map<std::string, std::optional<std::string>> windowDisplayIDs_; // none: test window
    std::set<std::string> requestedTestWindowIDs_;
    std::set<std::string> dismissedTestWindowIDs_; // the old form's window, closed
    std::unique_ptr<OutputWindow> programPreviewWindow_;

    OutputScene lastScene_;
    VideoSurfaces lastSurfaces_;
    LayerKinds lastKinds_;
    LayerRoutes lastRoutes_;
    LyricPartPictures lastLyricParts_;
    std::optional<SceneID> lastLyricLayerID_;

    std::vector<std::weak_ptr<SceneSink>> mirrors_;
    std::map<std::string, OutputScene> overrides_;
    std::map<std::string, OutputTestPattern> testPatterns_;
    std::map<std::string, OutputScene> patternScenes_;
    std::map<std::string, TaskHandle> identificationTasks_;

    std::optional<StageSnapshot> stageSnapshot_;
    std::optional<StageSnapshot> renderedStageSnapshot_;
    std::optional<OutputScene> stageScene_;
    SceneID stageLayerID_ = Uuid::random();
    std::optional<long long> stageRenderedSecond_;
    TaskHandle stageRetry_;
    int stageRenders_ = 0;

    FeedFactories feedFactories_;
    std::map<std::string, std::unique_ptr<FeedRunner>> feedRunners_; // by feed id
    std::set<std::string> closingFeedTokens_; // sender names still closing
    std::shared_ptr<NDISoundMix> soundMix_ = std::make_shared<NDISoundMix>();
    TaskHandle soundTimer_;
    std::map<SceneID, std::weak_ptr<VideoSurface>> tappedSurfaces_;
    std::map<std::string, std::string> feedErrors_;
    std::vector<OutputHealth> health_;
    HealthCallback onHealthChange_;
    TaskHandle healthTimer_;
    std::optional<std::string> programOutputSelection_;
    bool closed_ = false;
};

} // namespace velarion
