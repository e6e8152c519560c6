#pragma once
// A music app in memory behind StreamRemote's functions: it plays what it is
// told (or, when set up to misbehave, another song or another position),
// keeps a level, and records every moment something became audible. Time
// is its own: `sleep` moves the clock, so a confirmation deadline passes at
// once. Not thread-safe: use it with InlineStreamTasks.

#include "LiveEngine/StreamRemote.h"

#include <cstdio>
#include <string>
#include <vector>

namespace velarion::testing {

struct FakeStreamApp {
    StreamApp app = StreamApp::spotify;
    bool running = true;
    // Misbehaviour.
    std::string playsInstead;          // a play starts this song instead
    double seekLandsOffBy = 0;         // a seek lands this far from the asked position
    double showsSongAfterSeconds = 0;  // the status shows the new song only after this long
    // State.
    double clock = 0;
    std::string reference;
    bool playing = false;
    double position = 0;
    double playStartedAt = -1;
    int volume = 50;
    std::vector<int> volumes;          // every level set, in order
    std::vector<std::string> heard;    // "<song>@<position>" each time a song sounded with level above 0
    int commands = 0;

    void sound() {
        if (playing && volume > 0) {
            char at[32];
            std::snprintf(at, sizeof at, "%.1f", position);
            const std::string moment = reference + "@" + at;
            if (heard.empty() || heard.back() != moment) heard.push_back(moment);
        }
    }

    StreamReply answer(const StreamCommand& command) {
        ++commands;
        if (const auto* play = std::get_if<streamCommand::Play>(&command)) {
            reference = playsInstead.empty() ? play->reference : playsInstead;
            playing = true;
            position = 0;
            playStartedAt = clock;
        } else if (const auto* level = std::get_if<streamCommand::SetVolume>(&command)) {
            volume = level->percent;
            volumes.push_back(level->percent);
        } else if (const auto* seek = std::get_if<streamCommand::Seek>(&command)) {
            position = seek->seconds + seekLandsOffBy;
        } else if (std::holds_alternative<streamCommand::Pause>(command)) {
            playing = false;
        } else if (std::holds_alternative<streamCommand::Resume>(command)) {
            playing = true;
        } else if (std::holds_alternative<streamCommand::Status>(command)) {
            if (reference.empty() || clock - playStartedAt < showsSongAfterSeconds) return {"stopped", {}};
            const double duration = app == StreamApp::spotify ? 215000 : 215;
            return {std::string(playing ? "playing" : "paused") + "\tSong\tArtist\t" + std::to_string(position) +
                        "\t" + std::to_string(duration) + "\t" + reference + "\t" + std::to_string(volume),
                    {}};
        }
        sound();
        return {};
    }

    StreamRemote remote() {
        StreamRemote made;
        made.send = [this](StreamApp, const StreamCommand& command) { return answer(command); };
        made.isAppRunning = [this](StreamApp) { return running; };
        made.sleep = [this](double seconds, const StreamCancel& cancel) {
            if (cancel.isCancelled()) return false;
            clock += seconds;
            return true;
        };
        made.now = [this] { return clock; };
        return made;
    }
};

} // namespace velarion::testing
