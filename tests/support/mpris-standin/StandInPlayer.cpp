// velarion-mpris-standin --name spotify --identity Spotify --app-name Spotify
//   [--ignores-volume] [--plays-instead [ASKED=]URI] [--seek-off SECONDS] [--hang]
// (--plays-instead with ASKED= swaps only that song.)
// Prints "ready" once its bus name is owned, and "volume N" for each level
// it is given over MPRIS.

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QUrl>

#include <gst/gst.h>

#include <cstdio>
#include <string>

namespace {

struct Options {
    QString name, identity, appName, playsInstead;
    double seekOff = 0;
    bool ignoresVolume = false;
    bool hang = false;
};

class Player final : public QDBusVirtualObject {
public:
    explicit Player(Options options) : options_(std::move(options)) {}
    ~Player() override {
        if (pipeline_ != nullptr) {
            gst_element_set_state(pipeline_, GST_STATE_NULL);
            gst_object_unref(pipeline_);
        }
    }

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (options_.hang) return true; // never answers
        const QString member = message.member();
        const QList<QVariant> args = message.arguments();
        QDBusMessage reply = message.createReply();
        if (member == "OpenUri") {
            open(played(args.value(0).toString()));
        } else if (member == "Play") {
            setPlaying(true);
        } else if (member == "Pause") {
            setPlaying(false);
        } else if (member == "SetPosition") {
            base_ = args.value(1).toLongLong() / 1e6 + options_.seekOff;
            clock_.restart();
        } else if (member == "Get") {
            reply = message.createReply(QVariant::fromValue(QDBusVariant(property(args.value(1).toString()))));
        } else if (member == "GetAll") {
            QVariantMap all;
            for (const char* name : {"PlaybackStatus", "Metadata", "Position", "Volume", "Identity"})
                all.insert(name, property(name));
            reply = message.createReply(QVariant::fromValue(all));
        } else if (member == "Set") {
            const QVariant value = args.value(2).value<QDBusVariant>().variant();
            if (args.value(1).toString() == "Volume") {
                std::printf("volume %d\n", static_cast<int>(value.toDouble() * 100 + 0.5));
                std::fflush(stdout);
                if (!options_.ignoresVolume) setVolume(value.toDouble());
            }
        }
        connection.send(reply);
        return true;
    }

    bool prepare() {
        // Pre-rolled at once, so the stream exists in the sound server before
        // the first song, as a player that has played before.
        const std::string description =
            "audiotestsrc name=tone wave=sine freq=440 volume=0.5 ! volume name=level ! audioconvert ! "
            "pulsesink provide-clock=false stream-properties=\"props,application.name=" +
            options_.appName.toStdString() + "\"";
        GError* error = nullptr;
        pipeline_ = gst_parse_launch(description.c_str(), &error);
        if (pipeline_ == nullptr) {
            std::fprintf(stderr, "%s\n", error ? error->message : "no pipeline");
            return false;
        }
        gst_element_set_state(pipeline_, GST_STATE_PAUSED);
        // Ready only once pre-rolled: the stream is there from then on.
        return gst_element_get_state(pipeline_, nullptr, nullptr, 10 * GST_SECOND) == GST_STATE_CHANGE_SUCCESS;
    }

private:
    QVariant property(const QString& name) const {
        if (name == "PlaybackStatus") return uri_.isEmpty() ? "Stopped" : playing_ ? "Playing" : "Paused";
        if (name == "Position") return QVariant::fromValue(static_cast<qlonglong>(position() * 1e6));
        if (name == "Volume") return volume_;
        if (name == "Identity") return options_.identity;
        if (name == "Metadata") {
            QVariantMap metadata;
            if (uri_.isEmpty()) return metadata;
            QString id = uri_.section(':', -1);
            id.replace(QRegularExpression("[^A-Za-z0-9]"), "_");
            metadata.insert("mpris:trackid", QVariant::fromValue(QDBusObjectPath("/com/spotify/track/" + id)));
            metadata.insert("mpris:length", QVariant::fromValue(static_cast<qlonglong>(215'000'000)));
            metadata.insert("xesam:title", "Song " + id);
            metadata.insert("xesam:artist", QStringList{"Stand-in"});
            metadata.insert("xesam:url", QUrl(uri_).toString(QUrl::FullyEncoded)); // as players spell it
            return metadata;
        }
        return {};
    }
    QString played(const QString& asked) const {
        const QString instead = options_.playsInstead;
        if (instead.isEmpty()) return asked;
        if (!instead.contains('=')) return instead;
        return instead.section('=', 0, 0) == asked ? instead.section('=', 1) : asked;
    }
    double position() const { return base_ + (playing_ ? clock_.elapsed() / 1000.0 : 0); }
    void open(const QString& uri) {
        uri_ = uri;
        base_ = 0;
        clock_.restart();
        // The song's tone: "…:f440" plays 440 Hz.
        const double frequency = uri.section(":f", -1).toDouble();
        GstElement* tone = gst_bin_get_by_name(GST_BIN(pipeline_), "tone");
        g_object_set(tone, "freq", frequency > 0 ? frequency : 300.0, nullptr);
        gst_object_unref(tone);
        setPlaying(true);
    }
    void setPlaying(bool on) {
        if (on && !playing_) clock_.restart();
        if (!on && playing_) base_ = position();
        playing_ = on && !uri_.isEmpty();
        gst_element_set_state(pipeline_, playing_ ? GST_STATE_PLAYING : GST_STATE_PAUSED);
    }
    void setVolume(double value) {
        volume_ = value;
        GstElement* level = gst_bin_get_by_name(GST_BIN(pipeline_), "level");
        g_object_set(level, "volume", value, nullptr);
        gst_object_unref(level);
    }

    Options options_;
    GstElement* pipeline_ = nullptr;
    QString uri_;
    bool playing_ = false;
    double base_ = 0;
    double volume_ = 1;
    QElapsedTimer clock_;
};

} // namespace

int main(int argc, char** argv) {
    gst_init(&argc, &argv);
    QCoreApplication application(argc, argv);
    Options options;
    const QStringList args = application.arguments();
    for (int i = 1; i < args.size(); ++i) {
        const QString arg = args[i];
        const QString next = i + 1 < args.size() ? args[i + 1] : QString();
        if (arg == "--name") options.name = next, ++i;
        else if (arg == "--identity") options.identity = next, ++i;
        else if (arg == "--app-name") options.appName = next, ++i;
        else if (arg == "--plays-instead") options.playsInstead = next, ++i;
        else if (arg == "--seek-off") options.seekOff = next.toDouble(), ++i;
        else if (arg == "--ignores-volume") options.ignoresVolume = true;
        else if (arg == "--hang") options.hang = true;
    }
    Player player(options);
    if (!player.prepare()) return 1;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerVirtualObject("/org/mpris/MediaPlayer2", &player) ||
        !bus.registerService("org.mpris.MediaPlayer2." + options.name)) {
        std::fprintf(stderr, "couldn't own the bus name\n");
        return 1;
    }
    std::printf("ready\n");
    std::fflush(stdout);
    return application.exec();
}
