#pragma once
// A live engine driving the music apps on the session bus through the real
// MPRIS remote, on the real clock, with doubles for everything else. For
// tests and benchmarks that start stand-in players; header-only, since only
// the programs that link the music apps' platform library use it.

#include "FakePictures.h"
#include "FakePlayers.h"
#include "RealTimeScheduler.h"
#include "RecordingOutputManager.h"
#include "ShowBuilder.h"

#include "LiveEngine/LiveEngine.h"
#include "Platform/Music/MprisRemote.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

namespace velarion::testing {

struct LiveMusicShow {
    explicit LiveMusicShow(std::string musicPlayer = {}) : mpris(std::move(musicPlayer)) {
        show.sections.push_back(Section{Uuid::random(), "Main", std::nullopt, std::nullopt, {}});
    }
    ~LiveMusicShow() {
        if (engine) engine->shutdown();
    }
    Cue& song(const std::string& name, StreamApp app, const std::string& reference) {
        StreamTrackCue track;
        track.reference = reference;
        track.level = 80;
        return app == StreamApp::spotify ? build.add(name, SpotifyTrack{track}) : build.add(name, MusicTrack{track});
    }
    // The engine takes `remote` as it is now.
    void start() {
        streams = std::make_unique<EngineStreams>(EngineStreams{remote, tasks});
        engine = std::make_unique<LiveEngine>(
            show, ShowPackage("/shows/Music.velarion"),
            EnginePorts{scheduler, outputs, players, images, cards, slides, nullptr, streams.get()}, true);
    }
    // Runs the main loop until `done` or the time is up; whether `done`.
    bool runUntil(const std::function<bool()>& done, double seconds) {
        for (double waited = 0; waited < seconds && !done(); waited += 0.005) scheduler.runFor(0.005);
        return done();
    }
    const Run* runOf(const std::string& name) const {
        for (const auto& [id, run] : engine->runs())
            if (run.cue.name == name) return &run;
        return nullptr;
    }
    bool confirmed(const std::string& name) const {
        const Run* run = runOf(name);
        return run != nullptr && run->streamConfirmed;
    }
    bool logged(const std::string& text) const {
        const auto& history = engine->history();
        return std::any_of(history.begin(), history.end(), [&](const HistoryEntry& entry) { return entry.text == text; });
    }

    RealTimeScheduler scheduler;
    RecordingOutputManager outputs;
    FakeMediaPlayers players{scheduler};
    FakeImageLoader images;
    FakeTextCards cards;
    FakeSlidePictures slides;
    Show show;
    ShowBuilder build{show};
    MprisRemote mpris;
    StreamQueue queue;
    ThreadStreamTasks tasks;
    StreamRemote remote = queue.serial(mpris.remote());
    std::unique_ptr<EngineStreams> streams;
    std::unique_ptr<LiveEngine> engine;
};

} // namespace velarion::testing
