#include "Platform/Music/MprisRemote.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace velarion {

namespace {

const QString objectPath = "/org/mpris/MediaPlayer2";
const QString rootInterface = "org.mpris.MediaPlayer2";
const QString playerInterface = "org.mpris.MediaPlayer2.Player";
const QString propertiesInterface = "org.freedesktop.DBus.Properties";
constexpr const char* mprisPrefix = "org.mpris.MediaPlayer2.";

QVariant plain(const QVariant& value) {
    if (value.canConvert<QDBusVariant>()) return plain(value.value<QDBusVariant>().variant());
    return value;
}

QVariantMap asMap(const QVariant& value) {
    const QVariant inner = plain(value);
    if (inner.canConvert<QDBusArgument>()) return qdbus_cast<QVariantMap>(inner.value<QDBusArgument>());
    return inner.toMap();
}

QStringList asStrings(const QVariant& value) {
    const QVariant inner = plain(value);
    if (inner.canConvert<QDBusArgument>()) return qdbus_cast<QStringList>(inner.value<QDBusArgument>());
    if (inner.typeId() == QMetaType::QStringList) return inner.toStringList();
    return inner.toString().isEmpty() ? QStringList{} : QStringList{inner.toString()};
}

// A field of the status text: tabs and line ends would split it.
std::string field(QString text) {
    text.replace('\t', ' ').replace('\n', ' ').replace('\r', ' ');
    return text.toStdString();
}

std::string number(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.3f", value);
    return text;
}

std::string spotifyReference(const QVariantMap& metadata) {
    if (auto uri = StreamRemote::spotifyURI(plain(metadata.value("xesam:url")).toString().toStdString())) return *uri;
    QVariant id = plain(metadata.value("mpris:trackid"));
    QString track = id.canConvert<QDBusObjectPath>() ? id.value<QDBusObjectPath>().path() : id.toString();
    if (track.startsWith("spotify:")) return track.toStdString();
    const QString prefix = "/com/spotify/track/";
    if (track.startsWith(prefix)) return "spotify:track:" + track.mid(prefix.size()).toStdString();
    return track.toStdString();
}

// A call that never starts the player: the bus could otherwise launch one
// that is installed as a service, and nothing on the live path launches an app.
QDBusMessage methodCall(const std::string& bus, const QString& interface, const QString& method) {
    QDBusMessage message =
        QDBusMessage::createMethodCall(QString::fromStdString(bus), objectPath, interface, method);
    message.setAutoStartService(false);
    return message;
}

bool sameAddress(const std::string& a, const std::string& b) {
    if (a == b) return true;
    const QUrl first(QString::fromStdString(a)), second(QString::fromStdString(b));
    return first.isValid() && second.isValid() && first.toString(QUrl::FullyEncoded) == second.toString(QUrl::FullyEncoded);
}

} // namespace

MprisRemote::MprisRemote(std::string musicPlayer, double callTimeoutSeconds)
    : musicPlayer_(std::move(musicPlayer)), callTimeoutSeconds_(callTimeoutSeconds),
      spotifyLevel_("Spotify", callTimeoutSeconds) {
    if (!musicPlayer_.empty() && !musicPlayer_.starts_with(mprisPrefix)) musicPlayer_ = mprisPrefix + musicPlayer_;
}

StreamRemote MprisRemote::remote() {
    StreamRemote made;
    made.send = [this](StreamApp app, const StreamCommand& command) { return send(app, command); };
    made.isAppRunning = [this](StreamApp app) { return isAppRunning(app); };
    made.displayName = [this](StreamApp app) { return displayName(app); };
    return made;
}

std::vector<std::string> MprisRemote::otherPlayers() {
    std::vector<std::string> players;
    QDBusConnectionInterface* bus = QDBusConnection::sessionBus().interface();
    if (bus == nullptr) return players;
    const QDBusReply<QStringList> names = bus->registeredServiceNames();
    if (!names.isValid()) return players;
    for (const QString& name : names.value())
        if (name.startsWith(mprisPrefix) && name.toStdString() != spotifyBusName) players.push_back(name.toStdString());
    std::sort(players.begin(), players.end());
    std::lock_guard guard(lock_);
    lastOtherPlayers_ = players;
    return players;
}

std::vector<std::string> MprisRemote::lastOtherPlayers() const {
    std::lock_guard guard(lock_);
    return lastOtherPlayers_;
}

std::optional<std::string> MprisRemote::busName(StreamApp app) {
    if (app == StreamApp::spotify) return spotifyBusName;
    const std::vector<std::string> players = otherPlayers();
    std::optional<std::string> chosen;
    if (!musicPlayer_.empty()) {
        if (std::find(players.begin(), players.end(), musicPlayer_) != players.end()) chosen = musicPlayer_;
    } else if (!players.empty()) {
        chosen = players.front();
    }
    std::lock_guard guard(lock_);
    if (chosen != musicBus_) {
        musicBus_ = chosen;
        musicIdentity_.clear();
    }
    return chosen;
}

bool MprisRemote::isAppRunning(StreamApp app) {
    const std::optional<std::string> bus = busName(app);
    bool running = false;
    if (bus) {
        QDBusConnectionInterface* connection = QDBusConnection::sessionBus().interface();
        const QDBusReply<bool> registered =
            connection ? connection->isServiceRegistered(QString::fromStdString(*bus)) : QDBusReply<bool>{};
        running = registered.isValid() && registered.value();
    }
    if (running && app == StreamApp::music) {
        bool known = false;
        {
            std::lock_guard guard(lock_);
            known = !musicIdentity_.empty();
        }
        if (!known) {
            QDBusMessage get = methodCall(*bus, propertiesInterface, "Get");
            get << rootInterface << QString("Identity");
            const QDBusMessage reply =
                QDBusConnection::sessionBus().call(get, QDBus::Block, static_cast<int>(callTimeoutSeconds_ * 1000));
            const QString identity =
                reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty()
                    ? plain(reply.arguments().first()).toString()
                    : QString();
            std::lock_guard guard(lock_);
            musicIdentity_ = identity.isEmpty() ? "Music player" : identity.toStdString();
        }
    }
    std::lock_guard guard(lock_);
    (app == StreamApp::spotify ? spotifyRunning_ : musicRunning_) = running;
    return running;
}

std::string MprisRemote::displayName(StreamApp app) const {
    if (app == StreamApp::spotify) return "Spotify";
    std::lock_guard guard(lock_);
    return musicIdentity_.empty() ? "Music player" : musicIdentity_;
}

std::pair<ReadyMusicApp, ReadyMusicApp> MprisRemote::presence() const {
    const auto presenceOf = [](const std::optional<bool>& running) {
        if (!running) return ReadyMusicApp::Presence::unknown;
        return *running ? ReadyMusicApp::Presence::running : ReadyMusicApp::Presence::notRunning;
    };
    std::lock_guard guard(lock_);
    ReadyMusicApp spotify{"Spotify", presenceOf(spotifyRunning_)};
    ReadyMusicApp music{musicIdentity_.empty() ? "Music player" : musicIdentity_, presenceOf(musicRunning_)};
    return {spotify, music};
}

StreamError MprisRemote::failure(StreamApp app, const QDBusError& error) const {
    if (error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout ||
        error.type() == QDBusError::TimedOut) {
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "%g", callTimeoutSeconds_);
        return {displayName(app) + " didn't answer within " + seconds + " seconds"};
    }
    if (error.type() == QDBusError::ServiceUnknown || error.name() == "org.freedesktop.DBus.Error.NameHasNoOwner")
        return {displayName(app) + " isn't running"};
    return {displayName(app) + " refused the request: " + error.message().toStdString()};
}

std::optional<StreamError> MprisRemote::call(StreamApp app, const std::string& bus, const char* method,
                                             const QList<QVariant>& arguments) {
    QDBusMessage message = methodCall(bus, playerInterface, method);
    message.setArguments(arguments);
    const QDBusMessage reply =
        QDBusConnection::sessionBus().call(message, QDBus::Block, static_cast<int>(callTimeoutSeconds_ * 1000));
    if (reply.type() == QDBusMessage::ErrorMessage) return failure(app, QDBusError(reply));
    return std::nullopt;
}

std::optional<StreamError> MprisRemote::setProperty(StreamApp app, const std::string& bus, const char* name,
                                                    const QVariant& value) {
    QDBusMessage message = methodCall(bus, propertiesInterface, "Set");
    message << playerInterface << QString(name) << QVariant::fromValue(QDBusVariant(value));
    const QDBusMessage reply =
        QDBusConnection::sessionBus().call(message, QDBus::Block, static_cast<int>(callTimeoutSeconds_ * 1000));
    if (reply.type() == QDBusMessage::ErrorMessage) return failure(app, QDBusError(reply));
    return std::nullopt;
}

StreamReply MprisRemote::status(StreamApp app, const std::string& bus) {
    QDBusMessage message = methodCall(bus, propertiesInterface, "GetAll");
    message << playerInterface;
    const QDBusMessage reply =
        QDBusConnection::sessionBus().call(message, QDBus::Block, static_cast<int>(callTimeoutSeconds_ * 1000));
    if (reply.type() == QDBusMessage::ErrorMessage) return {{}, failure(app, QDBusError(reply))};
    if (reply.arguments().isEmpty()) return {"stopped", {}};
    const QVariantMap properties = asMap(reply.arguments().first());
    const QString state = plain(properties.value("PlaybackStatus")).toString();
    const QVariantMap metadata = asMap(properties.value("Metadata"));
    if (state == "Stopped" || state.isEmpty() || metadata.isEmpty()) return {"stopped", {}};

    const double lengthMicroseconds = plain(metadata.value("mpris:length")).toDouble();
    const double positionSeconds = std::max(0.0, plain(properties.value("Position")).toDouble() / 1e6);
    // The status text counts Spotify's durations in milliseconds.
    const double duration = app == StreamApp::spotify ? lengthMicroseconds / 1e3 : lengthMicroseconds / 1e6;
    int volume = 0;
    std::string reference;
    if (app == StreamApp::spotify) {
        volume = spotifyLevel_.level().value_or(0);
        reference = spotifyReference(metadata);
    } else {
        volume = static_cast<int>(std::lround(std::clamp(plain(properties.value("Volume")).toDouble(), 0.0, 1.0) * 100));
        reference = plain(metadata.value("xesam:url")).toString().toStdString();
        // Players report a file's address in their own spelling ("%20" or a
        // space): the song asked for keeps the operator's spelling.
        std::lock_guard guard(lock_);
        if (!musicOpened_.empty() && sameAddress(reference, musicOpened_)) reference = musicOpened_;
    }
    const std::string text = (state == "Playing" ? "playing" : "paused") + std::string("\t") +
                             field(plain(metadata.value("xesam:title")).toString()) + "\t" +
                             field(asStrings(metadata.value("xesam:artist")).join(", ")) + "\t" +
                             number(positionSeconds) + "\t" + number(std::max(duration, 0.0)) + "\t" +
                             field(QString::fromStdString(reference)) + "\t" + std::to_string(volume);
    return {text, {}};
}

StreamReply MprisRemote::send(StreamApp app, const StreamCommand& command) {
    const std::optional<std::string> bus = busName(app);
    if (!bus) return {{}, StreamError{displayName(app) + " isn't running"}};
    std::optional<StreamError> error;
    if (const auto* play = std::get_if<streamCommand::Play>(&command)) {
        if (app == StreamApp::music) {
            std::lock_guard guard(lock_);
            musicOpened_ = play->reference;
        }
        error = call(app, *bus, "OpenUri", {QString::fromStdString(play->reference)});
        if (!error && app == StreamApp::spotify) spotifyLevel_.applyWhenStreamAppears(std::min(callTimeoutSeconds_, 2.0));
    } else if (const auto* level = std::get_if<streamCommand::SetVolume>(&command)) {
        if (app == StreamApp::spotify) {
            std::string why;
            if (!spotifyLevel_.set(level->percent, why))
                error = StreamError{"Spotify's level couldn't be set: " + why};
        } else {
            error = setProperty(app, *bus, "Volume", std::clamp(level->percent, 0, 100) / 100.0);
        }
    } else if (const auto* seek = std::get_if<streamCommand::Seek>(&command)) {
        QDBusMessage get = methodCall(*bus, propertiesInterface, "Get");
        get << playerInterface << QString("Metadata");
        const QDBusMessage reply =
            QDBusConnection::sessionBus().call(get, QDBus::Block, static_cast<int>(callTimeoutSeconds_ * 1000));
        if (reply.type() == QDBusMessage::ErrorMessage) return {{}, failure(app, QDBusError(reply))};
        const QVariant id = plain(asMap(reply.arguments().value(0)).value("mpris:trackid"));
        const QString path = id.canConvert<QDBusObjectPath>() ? id.value<QDBusObjectPath>().path() : id.toString();
        const auto microseconds = static_cast<qlonglong>(std::llround(std::max(seek->seconds, 0.0) * 1e6));
        error = call(app, *bus, "SetPosition",
                     {QVariant::fromValue(QDBusObjectPath(path)), QVariant::fromValue(microseconds)});
    } else if (const auto* shuffle = std::get_if<streamCommand::SetShuffle>(&command)) {
        error = setProperty(app, *bus, "Shuffle", shuffle->on);
    } else if (std::holds_alternative<streamCommand::Next>(command)) {
        error = call(app, *bus, "Next");
    } else if (std::holds_alternative<streamCommand::Pause>(command)) {
        error = call(app, *bus, "Pause");
    } else if (std::holds_alternative<streamCommand::Resume>(command)) {
        error = call(app, *bus, "Play");
    } else {
        return status(app, *bus);
    }
    return {{}, error};
}

} // namespace velarion
