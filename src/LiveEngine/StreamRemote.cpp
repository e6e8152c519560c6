#include "LiveEngine/StreamRemote.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <charconv>

namespace velarion {

void StreamCancel::cancel() const {
    {
        std::lock_guard guard(state_->lock);
        state_->cancelled = true;
    }
    state_->changed.notify_all();
}

bool StreamCancel::isCancelled() const {
    std::lock_guard guard(state_->lock);
    return state_->cancelled;
}

bool StreamCancel::waitFor(double seconds) const {
    std::unique_lock guard(state_->lock);
    if (!(seconds > 0)) return !state_->cancelled;
    const auto span = std::chrono::duration<double>(std::min(seconds, 86400.0));
    return !state_->changed.wait_for(guard, span, [this] { return state_->cancelled; });
}

double StreamRemote::steadySeconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::string StreamRemote::defaultDisplayName(StreamApp app) {
    return app == StreamApp::spotify ? "Spotify" : "Music";
}

namespace {

std::string twoDecimals(double seconds) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.2f", seconds);
    return text.data();
}

std::optional<double> finiteNumber(std::string_view field) {
    double value = 0;
    const char* end = field.data() + field.size();
    auto [stop, error] = std::from_chars(field.data(), end, value);
    if (error != std::errc{} || stop != end || !std::isfinite(value)) return std::nullopt;
    return value;
}

std::string_view trimmed(std::string_view text) {
    const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    while (!text.empty() && blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && blank(text.back())) text.remove_suffix(1);
    return text;
}

} // namespace

std::optional<StreamError> StreamRemote::requireRunning(StreamApp app) const {
    if (isAppRunning && isAppRunning(app)) return std::nullopt;
    return StreamError{displayName(app) + " isn't running"};
}

std::optional<StreamError> StreamRemote::command(StreamApp app, const StreamCommand& command) const {
    if (auto error = requireRunning(app)) return error;
    return send(app, command).error;
}

std::optional<StreamError> StreamRemote::setVolume(StreamApp app, int percent) const {
    return command(app, streamCommand::SetVolume{std::clamp(percent, 0, 100)});
}

StreamStatusReply StreamRemote::status(StreamApp app) const {
    if (auto error = requireRunning(app)) return {std::nullopt, error};
    StreamReply reply = send(app, streamCommand::Status{});
    if (reply.error) return {std::nullopt, reply.error};
    return {parseStatus(app, reply.text), std::nullopt};
}

std::optional<StreamStatus> StreamRemote::parseStatus(StreamApp app, std::string_view text) {
    if (text.empty() || text == "stopped") return std::nullopt;
    std::vector<std::string_view> fields;
    for (std::size_t start = 0;;) {
        const std::size_t tab = text.find('\t', start);
        fields.push_back(text.substr(start, tab == std::string_view::npos ? std::string_view::npos : tab - start));
        if (tab == std::string_view::npos) break;
        start = tab + 1;
    }
    if (fields.size() != 7) return std::nullopt;
    StreamStatus status;
    status.isPlaying = fields[0] == "playing";
    status.title = fields[1];
    status.artist = fields[2];
    const auto position = finiteNumber(fields[3]);
    const auto duration = finiteNumber(fields[4]);
    if (!position || *position < 0 || !duration || *duration < 0) return std::nullopt;
    status.position = *position;
    status.duration = app == StreamApp::spotify ? *duration / 1000 : *duration;
    status.reference = fields[5];
    const auto volume = finiteNumber(trimmed(fields[6]));
    if (!volume) return std::nullopt;
    status.volume = static_cast<int>(std::lround(std::clamp(*volume, 0.0, 100.0)));
    return status;
}

bool StreamRemote::confirm(StreamApp app, const std::function<bool(const StreamStatus&)>& wanted, double seconds,
                           const IsLive& isLive, const StreamCancel& cancel,
                           std::optional<StreamError>& error) const {
    const double deadline = now() + seconds;
    for (;;) {
        if (cancel.isCancelled() || (isLive && !isLive())) {
            error = streamCancelled();
            return false;
        }
        StreamStatusReply reply = status(app);
        if (reply.error) {
            error = reply.error;
            return false;
        }
        if (reply.status && wanted(*reply.status)) return true;
        if (now() >= deadline) return false;
        if (!sleep(confirmPollSeconds, cancel)) {
            error = streamCancelled();
            return false;
        }
    }
}

std::optional<StreamError> StreamRemote::startTrack(StreamApp app, const std::string& reference, double startAt,
                                                    int level, double fadeInSeconds, const IsLive& isLive,
                                                    const StreamCancel& cancel) const {
    const std::string name = displayName(app);
    if (!std::isfinite(startAt)) return StreamError{name + " needs a finite start position"};
    if (!std::isfinite(fadeInSeconds)) return StreamError{name + " needs a finite fade duration"};
    const auto live = [&] { return !cancel.isCancelled() && (!isLive || isLive()); };

    if (!live()) return streamCancelled();
    if (auto error = setVolume(app, 0)) return error;
    if (!live()) return streamCancelled();
    if (auto error = command(app, streamCommand::Play{reference})) return error;

    std::optional<StreamError> error;
    const auto sameSong = [&](const StreamStatus& status) { return status.reference == reference; };
    if (!confirm(app, sameSong, songConfirmSeconds, isLive, cancel, error))
        return error ? *error : StreamError{name + " did not confirm the selected song. Its volume remains at zero."};

    if (startAt > 0) {
        if (!live()) return streamCancelled();
        if (auto seekError = command(app, streamCommand::Seek{startAt})) return seekError;
        const auto atStart = [&](const StreamStatus& status) {
            return status.reference == reference &&
                   std::abs(status.position - startAt) <= positionToleranceSeconds;
        };
        if (!confirm(app, atStart, positionConfirmSeconds, isLive, cancel, error))
            return error ? *error
                         : StreamError{name + " did not confirm the start position at " + twoDecimals(startAt) +
                                       " seconds. Its volume remains at zero."};
    }

    if (!live()) return streamCancelled();
    if (fadeInSeconds > 0) return ramp(app, 0, level, fadeInSeconds, cancel);
    return setVolume(app, level);
}

std::optional<StreamError> StreamRemote::startPlaylist(StreamApp app, const std::string& reference, bool shuffle,
                                                       int level, double fadeInSeconds,
                                                       const StreamCancel& cancel) const {
    if (!std::isfinite(fadeInSeconds)) return StreamError{displayName(app) + " needs a finite fade duration"};
    if (app != StreamApp::spotify) return StreamError{displayName(app) + " plays single songs only"};
    if (cancel.isCancelled()) return streamCancelled();
    if (auto error = setVolume(app, 0)) return error;
    if (auto error = command(app, streamCommand::SetShuffle{shuffle})) return error;
    if (cancel.isCancelled()) return streamCancelled();
    if (auto error = command(app, streamCommand::Play{reference})) return error;
    if (cancel.isCancelled()) return streamCancelled();
    if (fadeInSeconds > 0) return ramp(app, 0, level, fadeInSeconds, cancel);
    return setVolume(app, level);
}

std::optional<StreamError> StreamRemote::ramp(StreamApp app, int from, int to, double seconds,
                                              const StreamCancel& cancel) const {
    if (!std::isfinite(seconds)) return StreamError{displayName(app) + " needs a finite fade duration"};
    const long steps = std::max(1L, std::lround(std::max(seconds, 0.0) * rampStepsPerSecond));
    const double stepSeconds = std::max(seconds, 0.0) / static_cast<double>(steps);
    for (long i = 1; i <= steps; ++i) {
        if (cancel.isCancelled()) return streamCancelled();
        const double share = static_cast<double>(i) / static_cast<double>(steps);
        const int percent = static_cast<int>(std::lround(from + (to - from) * share));
        if (auto error = setVolume(app, percent)) return error;
        if (stepSeconds > 0 && !sleep(stepSeconds, cancel)) return streamCancelled();
    }
    return std::nullopt;
}

double StreamRemote::absolutePosition(double cueSeconds, double startAt) {
    const auto clean = [](double value) { return std::isfinite(value) && value > 0 ? value : 0.0; };
    return clean(startAt) + clean(cueSeconds);
}

bool StreamRemote::isAlbum(std::string_view reference) {
    return reference.starts_with("spotify:album:");
}

namespace {

bool isSpotifyHost(std::string_view host) {
    constexpr std::string_view domain = "spotify.com";
    std::string lower(host);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (!lower.ends_with(domain)) return false;
    return lower.size() == domain.size() || lower[lower.size() - domain.size() - 1] == '.';
}

bool isIdentifier(std::string_view id) {
    return !id.empty() && std::all_of(id.begin(), id.end(), [](unsigned char c) { return std::isalnum(c); });
}

} // namespace

std::optional<std::string> StreamRemote::spotifyURI(std::string_view text) {
    text = trimmed(text);
    for (std::string_view prefix : {"spotify:track:", "spotify:playlist:", "spotify:album:"})
        if (text.starts_with(prefix)) return std::string(text);

    const std::size_t schemeEnd = text.find("://");
    if (schemeEnd == std::string_view::npos) return std::nullopt;
    std::string scheme(text.substr(0, schemeEnd));
    std::transform(scheme.begin(), scheme.end(), scheme.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (scheme != "https" && scheme != "http") return std::nullopt;
    std::string_view rest = text.substr(schemeEnd + 3);
    rest = rest.substr(0, rest.find_first_of("?#"));
    const std::size_t pathStart = rest.find('/');
    std::string_view host = rest.substr(0, pathStart);
    if (const std::size_t at = host.rfind('@'); at != std::string_view::npos) host.remove_prefix(at + 1);
    host = host.substr(0, host.find(':'));
    if (!isSpotifyHost(host) || pathStart == std::string_view::npos) return std::nullopt;

    std::vector<std::string_view> parts;
    for (std::string_view path = rest.substr(pathStart); !path.empty();) {
        const std::size_t slash = path.find('/');
        std::string_view part = path.substr(0, slash);
        if (!part.empty()) parts.push_back(part);
        if (slash == std::string_view::npos) break;
        path.remove_prefix(slash + 1);
    }
    for (std::size_t i = 0; i + 1 < parts.size(); ++i)
        for (std::string_view kind : {"track", "playlist", "album"})
            if (parts[i] == kind && isIdentifier(parts[i + 1]))
                return "spotify:" + std::string(kind) + ":" + std::string(parts[i + 1]);
    return std::nullopt;
}

} // namespace velarion
