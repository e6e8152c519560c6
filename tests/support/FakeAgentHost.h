#pragma once
// An AgentHost for tests: a real Show with a real EditHistory and a real
// LiveEngine on the doubles, in virtual time. It does what the application
// does with the agent's requests, minus the disk and the windows: saving
// records the show under its path, opening takes a show saved that way,
// drawing slides names a page per made slide.
//
// Header only, since only the agent's tests and benchmarks link the agent
// library this depends on. Test thread only.

#include "FakePictures.h"
#include "FakePlayers.h"
#include "RecordingOutputManager.h"
#include "VirtualScheduler.h"

#include "LiveAgent/AgentHost.h"
#include "LiveAgentKit/AgentFailure.h"
#include "LiveEngine/LiveEngine.h"
#include "LiveModel/EditHistory.h"

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace velarion::testing {

class FakeAgentHost final : public AgentHost {
public:
    FakeAgentHost() { players.defaultSoundSeconds = 30; }
    ~FakeAgentHost() override {
        if (engine) engine->shutdown();
    }

    // Makes `show` the open show in a package at `at`, with a new engine.
    void load(Show show, ShowPackage at = ShowPackage("/shows/Test.velarion")) {
        if (engine) engine->shutdown();
        engine.reset();
        openShow = std::move(show);
        openPackage = std::move(at);
        engine = std::make_unique<LiveEngine>(*openShow, *openPackage,
                                              EnginePorts{scheduler, outputs, players, images, cards, slides},
                                              false);
        scheduler.runDue();
    }
    // After an edit, undo or redo: the new show goes to the engine.
    void replaceShow(Show show, const std::set<Uuid>& touched) {
        openShow = std::move(show);
        if (engine) engine->apply(*openShow, touched);
        scheduler.runDue();
    }
    const Show& current() const { return *openShow; }

    // AgentHost.
    std::optional<Show> show() const override { return openShow; }
    std::optional<ShowPackage> package() const override { return openPackage; }
    bool isLocked() const override { return history.isLocked; }
    std::optional<EngineState> engineState() const override {
        if (!engine) return std::nullopt;
        return engine->state();
    }
    std::set<AgentTier> allowedTiers() const override { return tiers; }
    std::vector<AudioDevice> audioOutputs() const override { return audioDevices; }

    std::optional<std::string> agentEdit(const ShowEdit& edit) override {
        if (!openShow) return std::string("That change was refused.");
        try {
            Show changed = history.apply(edit, *openShow);
            replaceShow(std::move(changed), touchedCueIDs(edit));
            return std::nullopt;
        } catch (const ShowEditError& refused) {
            status = refused.errorDescription();
            return status.empty() ? std::string("That change was refused.") : status;
        }
    }
    void agentPerform(const EngineCommand& command) override {
        if (engine) engine->perform(command);
        scheduler.runDue();
    }
    void agentLock() override { history.isLocked = true; }

    void agentNewShow(const std::string& title, ShowTemplate showTemplate,
                      const std::optional<std::filesystem::path>& saveTo) override {
        if (openShow) savedShows[openPackage->url()] = *openShow;
        history = EditHistory(100);
        Show made = showTemplate::make(showTemplate, title);
        const std::filesystem::path scratch = "/data/Velarion/Unsaved/" + made.id.text() + ".velarion";
        load(std::move(made), ShowPackage(scratch));
        if (saveTo) agentSaveShow(saveTo);
    }
    void agentOpenShow(const std::filesystem::path& at) override {
        const auto saved = savedShows.find(at);
        if (saved == savedShows.end()) throw AgentFailure("There's no show at " + at.string() + ".");
        history = EditHistory(100);
        load(saved->second, ShowPackage(at));
    }
    void agentSaveShow(const std::optional<std::filesystem::path>& to) override {
        if (!openShow) throw AgentFailure("No show is open.");
        if (to) {
            openPackage = ShowPackage(*to);
            if (engine) engine->replacePackage(*openPackage);
        }
        savedShows[openPackage->url()] = *openShow;
    }
    bool agentUndo() override { return step(history.undo(*openShow)); }
    bool agentRedo() override { return step(history.redo(*openShow)); }

    std::vector<ReadyItem> agentReadyItems() override { return readyItems; }
    std::vector<DisplayInfo> agentDisplays() override { return displays; }
    void agentNote(const std::string& text) override {
        notes.push_back(text);
        if (engine) engine->note(text);
    }
    void agentQuit(bool restart) override { quits.push_back(restart); }

    // Draws at once, unless `holdsDrawings`: then `finishDrawings` does.
    std::shared_ptr<NDISourceFinder> agentNDISources() override { return ndiSources; }
    // Copies for real, on the test's thread, into the open package.
    void agentImportMedia(const std::vector<std::filesystem::path>& files, MediaImported done) override {
        if (!openPackage) return done(std::nullopt, "No show is open.");
        const std::atomic<bool> cancelled{false};
        done(mediaImporter::importFiles(files, *openPackage, {}, cancelled), "");
    }
    void agentDrawSlides(const MediaItem& item, SlidesDrawn done) override {
        ++slideDrawings;
        if (drawingFails) return done(std::nullopt, "The disk is full.");
        MediaItem drawn = item;
        if (drawn.deck && drawn.deck->made) {
            drawn.deck->pages.clear();
            for (const MadeSlide& slide : *drawn.deck->made) drawn.deck->pages.push_back("Slides/" + slide.id.text() + ".png");
        }
        if (holdsDrawings)
            heldDrawings.push_back([drawn, done] { done(drawn, ""); });
        else
            done(drawn, "");
    }
    void finishDrawings() {
        auto held = std::move(heldDrawings);
        heldDrawings.clear();
        for (auto& finish : held) finish();
    }
    bool holdsDrawings = false;
    std::vector<std::function<void()>> heldDrawings;

    VirtualScheduler scheduler;
    RecordingOutputManager outputs;
    FakeMediaPlayers players{scheduler};
    FakeImageLoader images;
    FakeTextCards cards;
    FakeSlidePictures slides;
    std::unique_ptr<LiveEngine> engine;

    std::optional<Show> openShow;
    std::optional<ShowPackage> openPackage;
    EditHistory history{100};
    std::set<AgentTier> tiers{AgentTier::observe, AgentTier::run, AgentTier::edit};
    std::vector<DisplayInfo> displays;
    std::vector<ReadyItem> readyItems;
    std::vector<AudioDevice> audioDevices;
    std::map<std::filesystem::path, Show> savedShows;
    std::string status;
    bool drawingFails = false;
    int slideDrawings = 0;

    std::vector<std::string> notes;
    std::shared_ptr<NDISourceFinder> ndiSources;
    std::vector<bool> quits;

private:
    bool step(std::optional<Show> to) {
        if (!to) return false;
        std::set<Uuid> touched;
        for (const Cue* cue : to->allCues()) touched.insert(cue->id);
        replaceShow(std::move(*to), touched);
        return true;
    }
};

} // namespace velarion::testing
