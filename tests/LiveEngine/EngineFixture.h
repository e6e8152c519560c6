#pragma once
// A live engine on doubles: virtual time, recorded outputs, players and
// pictures that answer at once. Tests build a show with the helpers, start
// the engine, and drive it with commands and time.

#include "FakePictures.h"
#include "FakePlayers.h"
#include "RecordingOutputManager.h"
#include "ShowBuilder.h"
#include "VirtualScheduler.h"

#include "LiveEngine/LiveEngine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace velarion::testing {

class EngineFixture : public ::testing::Test {
protected:
    EngineFixture() {
        show.sections.push_back(Section{Uuid::random(), "Main", std::nullopt, std::nullopt, {}});
        show.outputs.usesLogicalScreens = true;
        show.outputs.screens = {screen("A"), screen("B")};
        players.defaultSoundSeconds = 30;
    }
    ~EngineFixture() override {
        if (engine) engine->shutdown();
    }

    static LogicalScreen screen(const std::string& id) { return makeScreen(id, destination::Display{id}); }

    Uuid addItem(const std::string& name, MediaKind kind, std::optional<double> seconds = {}) {
        return build.addItem(name, kind, seconds);
    }
    Cue& add(std::string name, CueKind kind, Follow follow = Follow::manual, std::size_t section = 0) {
        return build.add(std::move(name), std::move(kind), follow, section);
    }
    Cue& image(std::string name, Follow follow = Follow::manual) { return build.image(std::move(name), follow); }
    Cue& video(std::string name, Follow follow = Follow::manual) { return build.video(std::move(name), follow); }
    Cue& graphic(std::string name, std::optional<double> seconds, Follow follow = Follow::manual) {
        return build.graphic(std::move(name), seconds, follow);
    }
    Cue& clearCue(std::string name, ClearTarget target, Follow follow = Follow::manual) {
        return build.clearCue(std::move(name), target, follow);
    }

    void start() {
        engine = std::make_unique<LiveEngine>(show, ShowPackage("/shows/Test.velarion"),
                                              EnginePorts{scheduler, outputs, players, images, cards, slides, devices,
                                                          streams},
                                              streams != nullptr);
        scheduler.runDue();
    }
    void perform(const EngineCommand& command) { engine->perform(command); }
    void go() { perform(command::Go{}); }
    // GO after the lockout has passed.
    void goLater() {
        scheduler.advance(0.3);
        go();
    }

    const Cue& cueNamed(const std::string& name) const {
        for (const Cue* cue : show.allCues())
            if (cue->name == name) return *cue;
        throw std::runtime_error("no cue " + name);
    }
    std::vector<std::string> runningNames() const {
        std::vector<std::string> names;
        for (const RunningCue& running : engine->state().running) names.push_back(running.name);
        return names;
    }
    const velarion::Run* runOf(const std::string& name) const {
        for (const auto& [id, run] : engine->runs())
            if (run.cue.name == name) return &run;
        return nullptr;
    }
    std::vector<std::string> logTexts() const {
        std::vector<std::string> texts;
        for (const HistoryEntry& entry : engine->history()) texts.push_back(entry.text);
        return texts;
    }
    bool logged(const std::string& text) const {
        for (const HistoryEntry& entry : engine->history())
            if (entry.text == text) return true;
        return false;
    }

    VirtualScheduler scheduler;
    RecordingOutputManager outputs;
    FakeMediaPlayers players{scheduler};
    FakeImageLoader images;
    FakeTextCards cards;
    FakeSlidePictures slides;
    AudioDevices* devices = nullptr;
    EngineStreams* streams = nullptr; // set: stream cues drive these apps
    Show show;
    ShowBuilder build{show};
    std::unique_ptr<LiveEngine> engine;
};

} // namespace velarion::testing
