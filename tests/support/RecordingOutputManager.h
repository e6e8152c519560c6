#pragma once
// An output manager for tests that draws nothing and remembers every call,
// so a test reads exactly what the engine asked the screens to show.
//
// `health()` gives `reportedHealth`; `emitHealth` sets it and tells the
// engine as a real manager would when a screen comes or goes. The program
// output is `programID` unless the operator picked one; `programLayerIDs`
// are the layers of the last applied scene routed to it or routed
// everywhere. Main thread only, like the port.

#include "LiveEngine/ports/OutputManager.h"

#include <cstddef>
#include <optional>
#include <set>
#include <map>
#include <string>
#include <vector>

namespace velarion::testing {

struct AppliedOutputCall {
    OutputScene scene;
    LayerKinds kinds;
    LayerRoutes routes;
    std::set<int> lyricLineLimits; // the keys of the lyric part pictures
    std::optional<SceneID> lyricLayerID;
};

struct StageUpdateCall {
    ConfidenceState confidence;
    std::optional<TimerState> timer;
    std::optional<std::string> nextCueName;
    double wallSeconds = 0;
    friend bool operator==(const StageUpdateCall&, const StageUpdateCall&) = default;
};

class RecordingOutputManager final : public OutputManager {
public:
    void apply(const OutputScene& scene, const LayerKinds& kinds, const VideoSurfaces& surfaces,
               const LayerRoutes& routes, const LyricPartPictures& lyricParts,
               const std::optional<SceneID>& lyricLayerID) override;
    void configure(const OutputSetup& setup) override { setups.push_back(setup); }
    void updateStage(const ConfidenceState& confidence, const std::optional<TimerState>& timer,
                     const std::optional<std::string>& nextCueName, double wallSeconds) override;
    void clearDiagnostics() override {}
    void closeAll() override { ++closeAllCount; }

    void setOnHealthChange(HealthCallback callback) override {
        onHealthChange_ = std::move(callback);
    }
    std::vector<OutputHealth> health() const override { return reportedHealth; }

    std::optional<std::string> programOutputID() const override;
    std::string programOutputName() const override { return programName; }
    std::optional<std::string> programOutputSelection() const override { return programSelection_; }
    void selectProgramOutput(const std::optional<std::string>& destination) override {
        programSelection_ = destination;
    }
    std::set<SceneID> programLayerIDs() const override;
    OutputScene programScene() const override { return applied.empty() ? OutputScene{} : applied.back().scene; }

    // The operator's tools: `refusal` is every answer.
    std::optional<std::string> identify(const std::string&) override { return refusal; }
    std::optional<std::string> setTestPattern(const std::string&, std::optional<OutputTestPattern>) override {
        return refusal;
    }
    void setTestWindowVisible(const std::string& id, bool on) override { testWindows[id] = on; }
    bool testWindowIsVisible(const std::string& id) const override { return testWindows.count(id) && testWindows.at(id); }
    void showProgramPreview() override {}
    void addMirror(const std::weak_ptr<SceneSink>& sink) override { mirrors.push_back(sink); }
    void removeMirror(const std::shared_ptr<SceneSink>&) override { mirrors.clear(); }
    std::vector<DisplayInfo> availableDisplays() const override { return displays; }

    // Stores the health and calls the engine's callback, if it set one.
    void emitHealth(std::vector<OutputHealth> health);
    bool hasHealthCallback() const { return static_cast<bool>(onHealthChange_); }

    std::size_t applyCount() const { return applied.size(); }
    // The latest apply; fails the test (throws) when there was none.
    const AppliedOutputCall& lastApply() const;
    const OutputScene& lastScene() const { return lastApply().scene; }

    std::vector<AppliedOutputCall> applied;
    std::vector<OutputSetup> setups;
    std::vector<StageUpdateCall> stageUpdates;
    int closeAllCount = 0;

    std::vector<OutputHealth> reportedHealth;
    std::optional<std::string> programID = "_program";
    std::optional<std::string> refusal;
    std::map<std::string, bool> testWindows;
    std::vector<std::weak_ptr<SceneSink>> mirrors;
    std::string programName = "Program";
    std::vector<DisplayInfo> displays;

private:
    HealthCallback onHealthChange_;
    std::optional<std::string> programSelection_;
};

} // namespace velarion::testing
