#pragma once
// HeadlessOutputs: the output side of a run without windows (`--headless`,
// or a machine with no display). It draws nothing and opens nothing; it
// keeps the last scene it was given, so that a later reader (a snapshot, a
// test) can see what the audience would see, and reports every configured
// screen and feed as not connected, with the reason.
//
// Contract: as OutputManager. Main thread only. Health is reported once per
// `configure`, on the main loop through the Scheduler.

#include "LiveEngine/ports/OutputManager.h"
#include "LiveEngine/ports/Scheduler.h"

namespace velarion {

class HeadlessOutputs final : public OutputManager {
public:
    static constexpr const char* headlessDetail = "Headless — no windows or feeds are open";

    explicit HeadlessOutputs(Scheduler& scheduler);
    ~HeadlessOutputs() override;

    void apply(const OutputScene& scene, const LayerKinds& kinds, const VideoSurfaces& surfaces,
               const LayerRoutes& routes, const LyricPartPictures& lyricParts,
               const std::optional<SceneID>& lyricLayerID) override;
    void configure(const OutputSetup& setup) override;
    void updateStage(const ConfidenceState&, const std::optional<TimerState>&, const std::optional<std::string>&,
                     double) override {}
    void clearDiagnostics() override {}
    void closeAll() override;

    void setOnHealthChange(HealthCallback callback) override { onHealth_ = std::move(callback); }
    std::vector<OutputHealth> health() const override { return health_; }

    std::optional<std::string> programOutputID() const override { return std::nullopt; }
    std::string programOutputName() const override { return "No program output"; }
    std::optional<std::string> programOutputSelection() const override { return selection_; }
    void selectProgramOutput(const std::optional<std::string>& destination) override { selection_ = destination; }
    std::set<SceneID> programLayerIDs() const override { return {}; }
    OutputScene programScene() const override { return scene_; }

    // No window to show a test on: the tools say so.
    std::optional<std::string> identify(const std::string&) override { return headlessDetail; }
    std::optional<std::string> setTestPattern(const std::string&, std::optional<OutputTestPattern>) override {
        return headlessDetail;
    }
    void setTestWindowVisible(const std::string&, bool) override {}
    bool testWindowIsVisible(const std::string&) const override { return false; }
    void showProgramPreview() override {}
    // Mirrors (a snapshot, a CPU preview) still get every scene.
    void addMirror(const std::weak_ptr<SceneSink>& sink) override;
    void removeMirror(const std::shared_ptr<SceneSink>& sink) override;
    std::vector<DisplayInfo> availableDisplays() const override { return {}; }

    const OutputScene& lastScene() const { return scene_; }
    std::size_t scenesApplied() const { return scenesApplied_; }

private:
    Scheduler& scheduler_;
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
    OutputScene scene_;
    std::size_t scenesApplied_ = 0;
    std::vector<OutputHealth> health_;
    HealthCallback onHealth_;
    std::optional<std::string> selection_;
    std::vector<std::weak_ptr<SceneSink>> mirrors_;
    bool closed_ = false;
};

} // namespace velarion
