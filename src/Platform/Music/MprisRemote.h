#pragma once
// MprisRemote: the two music apps over MPRIS on the session D-Bus. `spotify`
// is the Spotify client (org.mpris.MediaPlayer2.spotify), whose level lives
// on its stream in the sound server since it ignores MPRIS volume; `music`
// is the operator's own player: the one named in the preferences, else the
// first other MPRIS player running. Its display name is its MPRIS Identity.
//
// Contract.
// - `send` and `isAppRunning` block and belong on the music apps' serial
//   worker (StreamQueue), never the main thread. Every D-Bus call is
//   bounded by `callTimeoutSeconds`; a player that doesn't answer in time
//   fails with its name and " didn't answer within N seconds", and the
//   queue goes on.
// - `displayName` and `presence` read what the worker last learned and
//   never block; any thread.
// - Nothing here ever starts a player.

#include "LiveEngine/ReadyCheck.h"
#include "LiveEngine/StreamRemote.h"
#include "Platform/Music/SinkInputLevel.h"

#include <QDBusError>
#include <QList>
#include <QVariant>

#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace velarion {

class MprisRemote {
public:
    static constexpr double defaultCallTimeoutSeconds = 6;
    static inline const std::string spotifyBusName = "org.mpris.MediaPlayer2.spotify";

    // `musicPlayer`: the chosen player's bus name or its last part
    // ("rhythmbox"); empty for the first other player running.
    explicit MprisRemote(std::string musicPlayer = {}, double callTimeoutSeconds = defaultCallTimeoutSeconds);

    StreamReply send(StreamApp app, const StreamCommand& command);
    bool isAppRunning(StreamApp app);
    std::string displayName(StreamApp app) const;
    // Spotify, then the music player, as last seen.
    std::pair<ReadyMusicApp, ReadyMusicApp> presence() const;
    // MPRIS players other than Spotify running now (bus names).
    std::vector<std::string> otherPlayers();
    // What `otherPlayers` last found; never blocks, any thread.
    std::vector<std::string> lastOtherPlayers() const;
    // The three functions of StreamRemote bound to this object, which must
    // outlive them.
    StreamRemote remote();

private:
    std::optional<std::string> busName(StreamApp app);
    StreamReply status(StreamApp app, const std::string& bus);
    std::optional<StreamError> call(StreamApp app, const std::string& bus, const char* method,
                                    const QList<QVariant>& arguments = {});
    std::optional<StreamError> setProperty(StreamApp app, const std::string& bus, const char* name,
                                           const QVariant& value);
    StreamError failure(StreamApp app, const QDBusError& error) const;

    std::string musicPlayer_;
    double callTimeoutSeconds_;
    SinkInputLevel spotifyLevel_;
    mutable std::mutex lock_;
    std::optional<std::string> musicBus_;
    std::string musicIdentity_;
    std::string musicOpened_; // the last song the music player was asked to play
    std::optional<bool> spotifyRunning_;
    std::optional<bool> musicRunning_;
    std::vector<std::string> lastOtherPlayers_;
};

} // namespace velarion
