// GO, batches, followers, holds, pre-waits, failures and schedule tracking.

#include "EngineFixture.h"
#include "LiveModel/CueGroups.h"
#include "LiveModel/ShowEditError.h"

#include <functional>
#include <random>

namespace velarion::testing {
namespace {

using Firing = EngineFixture;

TEST_F(Firing, GoLockoutCountsFromTheLastAcceptedPress) {
    image("One");
    image("Two");
    image("Three");
    start();
    go();
    scheduler.advance(0.2);
    go(); // bounced
    EXPECT_EQ(engine->state().firedCueIDs->size(), 1u);
    scheduler.advance(0.1);
    go(); // 0.3 s after the first accepted press
    EXPECT_EQ(engine->state().lastFiredCueID, cueNamed("Two").id);
    scheduler.advance(0.2);
    go(); // 0.2 s after the second
    EXPECT_EQ(engine->state().firedCueIDs->size(), 2u);

    goLater();
    goLater();
    goLater();
    const auto log = logTexts();
    EXPECT_EQ(std::count(log.begin(), log.end(), "GO pressed at the end of the show"), 2);
    EXPECT_FALSE(engine->state().nextCueID);
}

TEST_F(Firing, BatchSkipsDisabledCuesAndHangsTheFollowerOnItsLast) {
    // Three layers, so that none of the batch takes another's place.
    graphic("Lead", 2);
    image("With", Follow::withPrevious);
    graphic("Off", std::nullopt, Follow::withPrevious).isEnabled = false;
    image("Also", Follow::withPrevious);
    std::get<ImageCue>(show.sections.edit(0).cues.edit(3).kind).layer = LayerKind::background;
    graphic("After", std::nullopt, Follow::afterPrevious);
    graphic("Later", std::nullopt);
    start();
    go();
    ASSERT_EQ(runningNames(), (std::vector<std::string>{"Lead", "With", "Also"}));
    const Uuid group = runOf("Lead")->group;
    EXPECT_EQ(runOf("With")->group, group);
    EXPECT_EQ(runOf("Also")->group, group);
    EXPECT_EQ(engine->afterFinish().size(), 1u);
    EXPECT_EQ(engine->afterFinish().at(runOf("Also")->id), cueNamed("After").id);
    EXPECT_EQ(engine->state().nextCueID, cueNamed("Later").id);

    // The lead ending starts nothing; only the batch's last cue has the follower.
    scheduler.advance(2.1);
    EXPECT_FALSE(runOf("After"));
}

TEST_F(Firing, AnEndingCueStartsItsFollowerAndAStoppedOneDoesNot) {
    graphic("Title", 3);
    graphic("Credits", std::nullopt, Follow::afterPrevious);
    graphic("Sting", 3);
    graphic("Bumper", std::nullopt, Follow::afterPrevious);
    start();
    go();
    scheduler.advance(3.05);
    EXPECT_EQ(runningNames(), std::vector<std::string>{"Credits"});
    EXPECT_TRUE(engine->state().wasFired(cueNamed("Credits").id));
    goLater();
    perform(command::Stop{runOf("Sting")->id});
    scheduler.advance(5);
    EXPECT_FALSE(engine->state().wasFired(cueNamed("Bumper").id));
}

TEST_F(Firing, HeldFollowersWaitForGoInOrder) {
    graphic("A", 1);
    graphic("A2", std::nullopt, Follow::afterPrevious);
    video("B");
    graphic("B2", std::nullopt, Follow::afterPrevious);
    graphic("C", std::nullopt);
    players.defaultVideoBehaviour.durationSeconds = 2;
    start();
    perform(command::ToggleHold{});
    go();
    goLater();
    scheduler.advance(2.5);
    EXPECT_EQ(engine->state().heldCueIDs,
              (std::vector<Uuid>{cueNamed("A2").id, cueNamed("B2").id}));
    EXPECT_EQ(engine->state().nextCueID, cueNamed("A2").id);

    perform(command::ToggleHold{}); // turning the hold off releases nothing
    EXPECT_EQ(engine->state().heldCueIDs.size(), 2u);
    go();
    ASSERT_TRUE(runOf("A2"));
    const Uuid firstBatch = runOf("A2")->group;
    EXPECT_EQ(engine->state().nextCueID, cueNamed("B2").id);
    goLater();
    ASSERT_TRUE(runOf("B2"));
    EXPECT_NE(runOf("B2")->group, firstBatch);
    EXPECT_TRUE(logged("Released held cue: B2"));
}

TEST_F(Firing, ChoosingACueByHandSkipsHeldCuesAndSetNextNeedsAnEnabledCue) {
    graphic("A", 1);
    graphic("A2", std::nullopt, Follow::afterPrevious);
    graphic("Off", std::nullopt).isEnabled = false;
    graphic("Z", std::nullopt);
    start();
    perform(command::ToggleHold{});
    go();
    scheduler.advance(1.5);
    ASSERT_EQ(engine->heldFollowers().size(), 1u);

    perform(command::SetNext{cueNamed("Off").id});
    EXPECT_EQ(engine->heldFollowers().size(), 1u) << "a disabled cue changes nothing";

    perform(command::Fire{cueNamed("Z").id});
    EXPECT_TRUE(logged("Skipped held cue: A2 — chose Z"));
    EXPECT_TRUE(engine->heldFollowers().empty());
}

TEST_F(Firing, PreWaitShowsWaitingAndASecondGoMovesOn) {
    graphic("Late", std::nullopt).preWait = 2.5;
    graphic("Next", std::nullopt);
    start();
    go();
    ASSERT_EQ(engine->state().running.size(), 1u);
    EXPECT_EQ(engine->state().running[0].detail, "Starts in 3");
    EXPECT_FALSE(engine->state().running[0].isOnScreen);
    goLater();
    EXPECT_EQ(runningNames(), (std::vector<std::string>{"Late", "Next"}));
    scheduler.advance(2.3);
    EXPECT_TRUE(engine->state().running[0].isOnScreen);
    EXPECT_EQ(engine->state().running[0].detail, "");
}

TEST_F(Firing, PausingHoldsAPreWaitUntilResumed) {
    graphic("Late", std::nullopt).preWait = 2;
    start();
    go();
    scheduler.advance(1);
    perform(command::PauseAll{});
    scheduler.advance(5);
    EXPECT_FALSE(engine->state().running.at(0).isOnScreen);
    EXPECT_EQ(engine->state().running.at(0).detail, "Starts in 1");
    perform(command::ResumeAll{});
    scheduler.advance(0.9);
    EXPECT_FALSE(engine->state().running.at(0).isOnScreen);
    scheduler.advance(0.2);
    EXPECT_TRUE(engine->state().running.at(0).isOnScreen);
}

TEST_F(Firing, EachCueThatCantPlaySaysWhyAndStopsItsChain) {
    const std::vector<std::pair<std::function<CueKind()>, std::string>> cases = {
        {[&] {
             images.failingPaths.insert("/shows/Test.velarion/Media/Logo.png");
             return ImageCue{addItem("Logo.png", MediaKind::image)};
         },
         "the image is missing"},
        {[&] { return ImageCue{Uuid::random()}; }, "the image is missing"},
        {[&] {
             const Uuid camera = addItem("Camera", MediaKind::video);
             show.library.edit(show.library.size() - 1).ndiSource = NDISourceReference{"STUDIO (Camera 1)", {}};
             return VideoCue{camera};
         },
         MediaPlayers::noNetworkInputs},
        {[&] { return PlaylistCue{}; }, "it has no songs"},
        {[&] { return PlaylistCue{{Uuid::random(), Uuid::random()}}; }, "none of its songs can play"},
        {[&] {
             players.missingPaths.insert("/shows/Test.velarion/Media/Lost.mp3");
             return PlaylistCue{{Uuid::random(), addItem("Lost.mp3", MediaKind::audio)}};
         },
         "the sound file is missing"},
        {[&] {
             players.defaultVideoBehaviour = {.durationSeconds = 0.5, .breaksOffWith = "the file was deleted"};
             return VideoCue{addItem("Film.mp4", MediaKind::video)};
         },
         "its video broke off: the file was deleted"},
    };
    for (const auto& [build, reason] : cases) {
        SCOPED_TRACE(reason);
        show.library = {};
        show.sections.edit(0).cues = {};
        add("Failing", build());
        graphic("After", std::nullopt, Follow::afterPrevious);
        start();
        go();
        scheduler.advance(1);
        EXPECT_TRUE(logged("Failing didn't play — " + reason));
        EXPECT_TRUE(engine->runs().empty()) << "nothing runs, and the follower doesn't start";
        EXPECT_TRUE(engine->state().wasFired(cueNamed("Failing").id)) << "it still counts as fired";
        engine->shutdown();
        engine.reset();
    }
}

// A live source as the engine sees it: state set by the test.
class FakeNetworkInput final : public NetworkInput {
public:
    explicit FakeNetworkInput(SceneID id) : id_(std::move(id)) {}
    NDIReceiverStatus status;
    double level = -1;
    bool playing = false;
    std::optional<std::string> device;

    NDIReceiverStatus receiverStatus() const override { return status; }
    bool hasFrameToShow() const override { return true; }
    const SceneID& id() const override { return id_; }
    const std::filesystem::path& path() const override { return path_; }
    const std::optional<VideoSurfaceInfo>& info() const override { return info_; }
    void prepare(double, std::function<void(VideoPreparation)>) override {}
    void play() override { playing = true; }
    void pause() override { playing = false; }
    bool isPlaying() const override { return playing; }
    void seek(double, std::function<void()>) override {}
    double currentSeconds() const override { return 0; }
    void setVolume(double value, bool) override { level = value; }
    double volume() const override { return level; }
    bool isMuted() const override { return false; }
    bool loops() const override { return false; }
    void setLoops(bool) override {}
    void setOnEnd(std::function<void()>) override {}
    std::optional<std::string> audioOutputDeviceUID() const override { return device; }
    void setAudioOutputDeviceUID(const std::optional<std::string>& uid) override { device = uid; }
    void setAudioSink(VideoAudioSink) override {}

private:
    SceneID id_;
    std::filesystem::path path_;
    std::optional<VideoSurfaceInfo> info_;
};

TEST_F(Firing, ANetworkSourcePlaysLikeAVideoUntilStoppedAndLogsWhenItGoesAndReturns) {
    std::shared_ptr<FakeNetworkInput> input;
    players.setNetworkInputs([&](const SceneID& id, const NDISource& source) {
        EXPECT_EQ(source.name, "STUDIO (Camera 1)");
        return input = std::make_shared<FakeNetworkInput>(id);
    });
    const Uuid camera = addItem("Camera", MediaKind::video);
    show.library.edit(0).ndiSource = NDISourceReference{"STUDIO (Camera 1)", {}};
    VideoCue cue{camera};
    cue.level = 0.5;
    add("Camera", cue);
    start();
    go();
    scheduler.advance(0.2);
    ASSERT_TRUE(input);
    EXPECT_TRUE(input->playing);
    EXPECT_DOUBLE_EQ(input->level, 0.5);
    ASSERT_EQ(outputs.lastScene().layers.size(), 1u);
    EXPECT_EQ(outputs.lastScene().layers[0].content, SceneContent{SceneVideoContent{input->id()}});

    input->status.phase = NDIConnectionPhase::disconnected;
    input->status.message = "The NDI source is unavailable. Waiting for it to return…";
    scheduler.advance(30);
    EXPECT_TRUE(logged("Camera: The NDI source is unavailable. Waiting for it to return…"));
    input->status.phase = NDIConnectionPhase::connected;
    input->status.message = "Receiving NDI video and audio.";
    scheduler.advance(0.2);
    EXPECT_TRUE(logged("Camera: Receiving NDI video and audio."));
    EXPECT_EQ(runningNames(), std::vector<std::string>{"Camera"}) << "a live source has no end";

    perform(command::Clear{ClearTarget::everything, 1});
    scheduler.advance(0.5);
    EXPECT_TRUE(input->playing) << "the sound fades out with the picture";
    scheduler.advance(1);
    EXPECT_FALSE(input->playing);
    EXPECT_TRUE(logged("NDI input stopped."));
}

TEST_F(Firing, ShutdownLeavesNoTaskBehind) {
    graphic("Timed", 30).preWait = 5;
    video("Film");
    start();
    go();
    goLater();
    scheduler.advance(1);
    engine->shutdown();
    EXPECT_EQ(scheduler.pendingCount(), 0u);
    EXPECT_EQ(outputs.closeAllCount, 1);
    EXPECT_FALSE(outputs.hasHealthCallback());
    const auto ticks = engine->tickCount();
    scheduler.advance(10);
    EXPECT_EQ(engine->tickCount(), ticks);
}

// Cue group playback: steps, drivers, repeats, held steps and cancellation.
class Groups : public EngineFixture {
protected:
    void group(const std::string& name, std::vector<std::string> members, bool repeats = false) {
        CueGroup made{Uuid::random(), name, {}, repeats};
        for (const std::string& member : members) made.cueIDs.push_back(cueNamed(member).id);
        if (!show.cueGroups) show.cueGroups.emplace();
        show.cueGroups->push_back(made);
    }
    const GroupPlayback* playback() const {
        return engine->playbackGroup() ? &*engine->playbackGroup() : nullptr;
    }
};

TEST_F(Groups, ARepeatingStepRestartsOnItsGroupDuration) {
    image("Loop").groupDuration = 5;
    graphic("Caption", std::nullopt, Follow::withPrevious);
    group("Walk-in", {"Loop", "Caption"}, true);
    start();
    go();
    ASSERT_TRUE(runOf("Loop"));
    const Uuid first = runOf("Loop")->id;
    EXPECT_TRUE(logged("Walk-in · repeating group"));
    scheduler.advance(5.15);
    ASSERT_TRUE(runOf("Loop"));
    const Uuid second = runOf("Loop")->id;
    EXPECT_NE(second, first);
    EXPECT_EQ(engine->runs().size(), 2u) << "the earlier runs are stopped";
    EXPECT_TRUE(logged("Stopped Loop"));
    scheduler.advance(5.1);
    EXPECT_NE(runOf("Loop")->id, second);
    ASSERT_TRUE(engine->state().cueGroup);
    EXPECT_EQ(engine->state().cueGroup->step, 1);
    EXPECT_TRUE(engine->state().cueGroup->repeats);
}

TEST_F(Groups, AStepWithoutAnEndWaitsForGoWhichEndsTheGroup) {
    image("Still");
    graphic("Title", 1, Follow::withPrevious);
    graphic("After", std::nullopt);
    group("Stills", {"Still", "Title"});
    start();
    go();
    EXPECT_TRUE(logged("Still has no group duration or natural end. GO takes over after the group."));
    EXPECT_EQ(engine->state().nextCueID, cueNamed("After").id);
    scheduler.advance(2); // the title ending is not the driver
    EXPECT_TRUE(playback());
    go();
    EXPECT_FALSE(playback());
    EXPECT_TRUE(runOf("After"));
}

TEST_F(Groups, AHeldStepWaitsAndGoReleasesIt) {
    graphic("One", 1);
    image("Two");
    std::get<ImageCue>(show.sections.edit(0).cues.edit(1).kind).layer = LayerKind::background;
    group("Pair", {"One", "Two"});
    start();
    perform(command::ToggleHold{});
    go();
    scheduler.advance(1.1);
    ASSERT_TRUE(engine->state().cueGroup);
    EXPECT_TRUE(engine->state().cueGroup->waitingForGO);
    EXPECT_EQ(engine->state().nextCueID, cueNamed("Two").id);
    EXPECT_TRUE(logged("Held for GO: Two"));
    goLater();
    EXPECT_TRUE(logged("Released held group step: Two"));
    EXPECT_TRUE(runOf("Two"));
    EXPECT_EQ(engine->state().cueGroup->step, 2);
}

TEST_F(Groups, StoppingAnyRunOfTheStepEndsTheGroup) {
    graphic("Driver", 5);
    image("Side", Follow::withPrevious);
    graphic("Next", std::nullopt);
    group("Both", {"Driver", "Side"});
    start();
    go();
    ASSERT_TRUE(playback());
    perform(command::Stop{runOf("Side")->id});
    EXPECT_FALSE(playback());
    scheduler.advance(6);
    EXPECT_FALSE(runOf("Next")) << "nothing advances after the group was ended";
}

TEST_F(Groups, TheFollowerBehindAGroupStartsOnlyWhenTheGroupEnds) {
    graphic("First", 1);
    graphic("Second", 1);
    graphic("Behind", std::nullopt, Follow::afterPrevious);
    group("Run", {"First", "Second"});
    start();
    go();
    scheduler.advance(1.05);
    EXPECT_TRUE(runOf("Second"));
    EXPECT_FALSE(runOf("Behind"));
    scheduler.advance(1.05);
    EXPECT_TRUE(runOf("Behind"));
    EXPECT_FALSE(playback());

    perform(command::Stop{runOf("Behind")->id});
    goLater(); // Next is the end of the show; fire the group again by hand
    perform(command::Fire{cueNamed("First").id});
    perform(command::Stop{runOf("First")->id});
    scheduler.advance(3);
    EXPECT_FALSE(runOf("Behind")) << "a stopped group releases nothing";
}

TEST_F(Groups, AnInvalidGroupStartsNothingAndKeepsNext) {
    graphic("A", std::nullopt);
    graphic("B", std::nullopt);
    group("Broken", {"B", "A"}); // out of show order
    start();
    const auto next = engine->state().nextCueID;
    go();
    EXPECT_TRUE(logged("Broken cannot play — check its cue group in Ready Check"));
    EXPECT_TRUE(engine->runs().empty());
    EXPECT_EQ(engine->state().nextCueID, next);
}

// A virtual hour of random operating on a generated show: the engine's
// bookkeeping must stay consistent whatever order things happen in.
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
