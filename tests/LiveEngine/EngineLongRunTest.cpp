// A virtual hour of random operating on a generated show: the engine's
// bookkeeping must stay consistent whatever order things happen in.

#include "EngineFixture.h"

#include "LiveModel/CueGroups.h"
#include "LiveModel/ShowEditError.h"

#include <random>

namespace velarion::testing {
namespace {

class LongRun : public EngineFixture {
protected:
    std::mt19937 random{0};

    double uniform(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    }
    bool chance(double probability) { return uniform(0, 1) < probability; }
    std::size_t pick(std::size_t count) {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
    }

    // 500 cues in 25 sections, with chains, pre-waits, screens, broken media
    // and a few cue groups.
    void generateShow() {
        show.sections = {};
        for (int section = 0; section < 25; ++section) {
            show.sections.push_back(Section{Uuid::random(), "Part " + std::to_string(section),
                                            std::nullopt, std::nullopt, {}});
            for (int i = 0; i < 20; ++i) addRandomCue(static_cast<std::size_t>(section), i);
        }
        for (std::size_t section = 0; section < 25; section += 2) addGroup(section);
    }

    void addRandomCue(std::size_t section, int position) {
        const std::string name = "Cue " + std::to_string(section) + "." + std::to_string(position);
        CueKind kind;
        const double roll = uniform(0, 1);
        if (roll < 0.35) {
            ImageCue image{addItem(name + ".png", MediaKind::image)};
            image.layer = chance(0.2) ? LayerKind::background : LayerKind::media;
            image.fadeIn = chance(0.5) ? uniform(0, 2) : 0;
            if (chance(0.05)) images.failingPaths.insert("/shows/Test.velarion/Media/" + name + ".png");
            kind = image;
        } else if (roll < 0.6) {
            VideoCue video{addItem(name + ".mp4", MediaKind::video, uniform(1, 30))};
            video.loops = chance(0.2);
            video.holdLastFrame = chance(0.2);
            FakeVideoBehaviour behaviour;
            behaviour.durationSeconds = uniform(0.5, 20);
            if (chance(0.05)) behaviour.failure = VideoSurfaceError{};
            players.videoBehaviours["/shows/Test.velarion/Media/" + name + ".mp4"] = behaviour;
            kind = video;
        } else if (roll < 0.68) {
            kind = GraphicCue{name, "", chance(0.6) ? std::optional<double>(uniform(0.5, 20)) : std::nullopt};
        } else if (roll < 0.74) {
            AudioCue audio{addSound(name, uniform(0.5, 90))};
            audio.loops = chance(0.2);
            audio.crossfadesLoop = chance(0.5);
            kind = audio;
        } else if (roll < 0.8) {
            kind = MessageCue{name, chance(0.5) ? MessageTarget::stage : MessageTarget::audience,
                              chance(0.5) ? std::optional<double>(uniform(0, 20)) : std::nullopt};
        } else {
            ClearCue clear{static_cast<ClearTarget>(pick(6)), chance(0.5) ? uniform(0, 1.5) : 0,
                           std::nullopt};
            const auto& cues = show.sections[section].cues;
            if (chance(0.3) && !cues.empty()) clear.cueID = cues[pick(cues.size())].id;
            kind = clear;
        }
        const double follow = uniform(0, 1);
        Cue& cue = add(name, kind,
                       follow < 0.6   ? Follow::manual
                       : follow < 0.8 ? Follow::withPrevious
                                      : Follow::afterPrevious,
                       section);
        cue.isEnabled = !chance(0.05);
        if (chance(0.15)) cue.preWait = uniform(0.1, 4);
        if (chance(0.2)) cue.visualOutputIDs = std::vector<std::string>{chance(0.5) ? "A" : "B"};
        if (chance(0.1)) cue.groupDuration = uniform(1, 10);
    }

    Uuid addSound(const std::string& name, double seconds) {
        players.soundDurations["/shows/Test.velarion/Media/" + name + ".mp3"] = seconds;
        return addItem(name + ".mp3", MediaKind::audio, seconds);
    }

    void addGroup(std::size_t section) {
        const auto& cues = show.sections[section].cues;
        const std::size_t first = 3 + pick(8);
        CueGroup group{Uuid::random(), "Group " + std::to_string(section), {}, chance(0.4)};
        for (std::size_t i = first; i < first + 2 + pick(4); ++i) group.cueIDs.push_back(cues[i].id);
        try {
            if (validatedCueGroup(show, group) != group) return;
        } catch (const ShowEditError&) {
            return;
        }
        if (!show.cueGroups) show.cueGroups.emplace();
        show.cueGroups->push_back(group);
    }

    void operate() {
        const double roll = uniform(0, 1);
        const auto& cues = show.allCues();
        if (roll < 0.5) {
            go();
        } else if (roll < 0.65) {
            perform(command::Fire{cues[pick(cues.size())]->id});
        } else if (roll < 0.8 && !engine->runOrder().empty()) {
            perform(command::Stop{engine->runOrder()[pick(engine->runOrder().size())]});
        } else if (roll < 0.9) {
            perform(command::ToggleHold{});
        } else if (roll < 0.93) {
            perform(command::Clear{static_cast<ClearTarget>(pick(6)), uniform(0, 2)});
        } else if (roll < 0.96) {
            // Start a group by hand, as an operator picking its first cue.
            if (show.cueGroups && !show.cueGroups->empty()) {
                const CueGroup& group = (*show.cueGroups)[pick(show.cueGroups->size())];
                perform(command::Fire{group.cueIDs.front()});
            }
        } else {
            const double what = uniform(0, 1);
            if (what < 0.4) perform(command::NextSlide{});
            else if (what < 0.6) perform(command::PauseAll{});
            else if (what < 0.9) perform(command::ResumeAll{});
            else perform(command::Panic{});
        }
    }

    void checkInvariants() {
        const auto& runs = engine->runs();
        const auto& order = engine->runOrder();
        ASSERT_EQ(order.size(), runs.size());
        for (const Uuid& id : order) ASSERT_TRUE(runs.contains(id)) << "an ordered run without a run";
        for (const auto& [id, run] : runs) {
            ASSERT_EQ(std::count(order.begin(), order.end(), id), 1) << "a run outside runOrder";
            if (run.waitingUntil && !run.isPaused()) { // a pause holds the wait
                ASSERT_GT(*run.waitingUntil, scheduler.now() - 1e-9) << "a pre-wait overran";
            }
        }
        const auto layerRuns = engine->stack().layerRuns();
        const auto hasLayer = [&](const Uuid& runID) {
            for (const auto& [layer, owner] : layerRuns)
                if (owner == runID) return true;
            return false;
        };
        for (const auto& [id, keys] : engine->visualRoutes())
            ASSERT_TRUE(runs.contains(id) || hasLayer(id)) << "a route kept for nothing";
        for (const auto& [id, keys] : engine->supersededDestinations())
            ASSERT_TRUE(runs.contains(id) || hasLayer(id)) << "superseded screens kept for nothing";
        for (const auto& [id, follower] : engine->afterFinish()) ASSERT_TRUE(runs.contains(id));
        ASSERT_LE(engine->history().size(), LiveEngine::historyLimit);
        ASSERT_LE(engine->state().history->size(), LiveEngine::publishedHistoryLimit);
        // Every layer in the published scene is one the stack holds or just let go.
        ASSERT_EQ(engine->audienceScene(), outputs.lastScene());
    }
};

TEST_F(LongRun, AVirtualHourOfRandomOperatingKeepsTheBooksStraight) {
    for (unsigned seed : {1u, 2u}) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        random.seed(seed);
        images.failingPaths.clear();
        players.videoBehaviours.clear();
        players.soundDurations.clear();
        show = Show{};
        show.outputs.usesLogicalScreens = true;
        show.outputs.screens = {screen("A"), screen("B")};
        generateShow();
        ASSERT_EQ(show.allCues().size(), 500u);
        start();
        std::size_t fired = 0;
        const double hourLater = scheduler.now() + 3600;
        while (scheduler.now() < hourLater) {
            operate();
            scheduler.advance(chance(0.3) ? uniform(0, 0.3) : uniform(0.3, 8));
            outputs.applied.erase(outputs.applied.begin(), outputs.applied.end() - 1);
            outputs.stageUpdates.clear();
            checkInvariants();
            if (HasFatalFailure()) return;
            fired = engine->state().firedCueIDs->size();
        }
        EXPECT_GT(fired, 200u) << "the run went through much of the show";
        engine->shutdown();
        EXPECT_EQ(scheduler.pendingCount(), 0u) << "a task outlived the engine";
        engine.reset();
    }
}

} // namespace
} // namespace velarion::testing
