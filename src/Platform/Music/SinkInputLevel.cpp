#include "Platform/Music/SinkInputLevel.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <algorithm>
#include <chrono>
#include <thread>

namespace velarion {

SinkInputLevel::SinkInputLevel(std::string applicationName, double timeoutSeconds)
    : applicationName_(std::move(applicationName)), timeoutSeconds_(timeoutSeconds) {}

bool SinkInputLevel::run(const std::vector<std::string>& arguments, std::string& output, std::string& error) {
    QProcess pactl;
    QStringList list;
    for (const std::string& argument : arguments) list << QString::fromStdString(argument);
    pactl.start("pactl", list);
    const int waitMs = static_cast<int>(timeoutSeconds_ * 1000);
    if (!pactl.waitForStarted(waitMs)) {
        error = "the sound server's pactl couldn't start";
        return false;
    }
    if (!pactl.waitForFinished(waitMs)) {
        pactl.kill();
        pactl.waitForFinished(1000);
        error = "the sound server didn't answer";
        return false;
    }
    if (pactl.exitStatus() != QProcess::NormalExit || pactl.exitCode() != 0) {
        error = "the sound server refused: " + pactl.readAllStandardError().trimmed().toStdString();
        return false;
    }
    output = pactl.readAllStandardOutput().toStdString();
    return true;
}

std::optional<SinkInputLevel::Stream> SinkInputLevel::find(std::string& error) {
    std::string output;
    if (!run({"-f", "json", "list", "sink-inputs"}, output, error)) return std::nullopt;
    const QJsonArray inputs = QJsonDocument::fromJson(QByteArray::fromStdString(output)).array();
    const QString wanted = QString::fromStdString(applicationName_);
    for (const QJsonValue& value : inputs) {
        const QJsonObject input = value.toObject();
        const QJsonObject properties = input.value("properties").toObject();
        const bool ours = properties.value("application.name").toString().compare(wanted, Qt::CaseInsensitive) == 0 ||
                          properties.value("application.process.binary").toString().compare(wanted, Qt::CaseInsensitive) == 0;
        if (!ours) continue;
        Stream stream;
        stream.index = input.value("index").toInt(-1);
        const QJsonObject volume = input.value("volume").toObject();
        if (!volume.isEmpty()) {
            QString percent = volume.begin().value().toObject().value("value_percent").toString();
            percent.remove('%');
            stream.percent = std::clamp(percent.trimmed().toInt(), 0, 100);
        }
        if (stream.index >= 0) return stream;
    }
    return std::nullopt;
}

bool SinkInputLevel::applyWanted(int index, std::string& error) {
    std::string output;
    if (!run({"set-sink-input-volume", std::to_string(index), std::to_string(*wanted_) + "%"}, output, error))
        return false;
    lastIndex_ = index;
    wanted_.reset();
    return true;
}

bool SinkInputLevel::set(int percent, std::string& error) {
    std::lock_guard guard(lock_);
    wanted_ = std::clamp(percent, 0, 100);
    // A fade sets twenty levels a second: the stream last seen is tried
    // first, and the list is asked again only when it has gone.
    std::string stale;
    if (lastIndex_ >= 0 && applyWanted(lastIndex_, stale)) return true;
    lastIndex_ = -1;
    const auto stream = find(error);
    if (!stream) return error.empty();
    return applyWanted(stream->index, error);
}

void SinkInputLevel::applyWhenStreamAppears(double seconds) {
    // An app opens its stream when it first plays, at the level the sound
    // server restores for it: the wanted level goes on as soon as it can.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    for (;;) {
        {
            std::lock_guard guard(lock_);
            std::string error;
            if (!wanted_) return;
            if (const auto stream = find(error)) {
                applyWanted(stream->index, error);
                return;
            }
        }
        if (std::chrono::steady_clock::now() >= deadline) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

std::optional<int> SinkInputLevel::level() {
    std::lock_guard guard(lock_);
    std::string error;
    auto stream = find(error);
    lastIndex_ = stream ? stream->index : -1;
    if (!stream) return wanted_;
    if (wanted_ && *wanted_ != stream->percent) {
        const int target = *wanted_;
        if (applyWanted(stream->index, error)) stream->percent = target;
    }
    wanted_.reset();
    return stream->percent;
}

} // namespace velarion
