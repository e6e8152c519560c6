#include "Live/SpotifyMetadata.h"

#include "LiveEngine/StreamRemote.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>

namespace velarion::spotifyMetadata {

std::string baseAddress() {
    const char* override = std::getenv("VELARION_SPOTIFY_OEMBED_BASE");
    std::string base = override != nullptr && *override != '\0' ? override : std::string(defaultBase);
    while (!base.empty() && base.back() == '/') base.pop_back();
    return base;
}

namespace {

std::string percentEncoded(std::string_view text) {
    static constexpr char hex[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : text) {
        if (std::isalnum(c) || c == '-' || c == '_' || c == '.' || c == '~') {
            out.push_back(static_cast<char>(c));
        } else {
            out.push_back('%');
            out.push_back(hex[c >> 4]);
            out.push_back(hex[c & 15]);
        }
    }
    return out;
}

// A name the operator didn't choose: empty, the kind's own word, or the
// link or URI that made the cue.
bool isMachineName(const Cue& cue, const std::string& reference) {
    return cue.name.empty() || cue.name == cueKind::label(cue.kind) || cue.name == reference ||
           StreamRemote::spotifyURI(cue.name) == reference;
}

} // namespace

std::vector<SpotifyMetadataRequest> requests(const Show& show) {
    std::vector<SpotifyMetadataRequest> found;
    for (const Cue* cue : show.allCues()) {
        const auto* track = std::get_if<SpotifyTrack>(&cue->kind);
        if (track == nullptr || track->reference.empty() || !track->title.empty()) continue;
        found.push_back({cue->id, track->reference, cue->name, isMachineName(*cue, track->reference)});
    }
    return found;
}

std::optional<std::string> oEmbedAddress(std::string_view base, std::string_view reference) {
    constexpr std::string_view prefix = "spotify:track:";
    if (!reference.starts_with(prefix)) return std::nullopt;
    const std::string_view id = reference.substr(prefix.size());
    if (id.empty() || !std::all_of(id.begin(), id.end(), [](unsigned char c) { return std::isalnum(c); }))
        return std::nullopt;
    const std::string page = "https://open.spotify.com/track/" + std::string(id);
    return std::string(base) + "/oembed?url=" + percentEncoded(page);
}

std::optional<std::string> parseTitle(std::string_view body) {
    const nlohmann::json answer = nlohmann::json::parse(body, nullptr, false);
    if (!answer.is_object()) return std::nullopt;
    const auto title = answer.find("title");
    if (title == answer.end() || !title->is_string()) return std::nullopt;
    std::string text = title->get<std::string>();
    const auto blank = [](unsigned char c) { return std::isspace(c) != 0; };
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), blank));
    text.erase(std::find_if_not(text.rbegin(), text.rend(), blank).base(), text.end());
    if (text.empty()) return std::nullopt;
    return text;
}

std::optional<ShowEdit> titleEdit(const Show& show, const SpotifyMetadataRequest& request, const std::string& title) {
    const Cue* cue = show.cue(request.cueID);
    if (cue == nullptr) return std::nullopt;
    const auto* track = std::get_if<SpotifyTrack>(&cue->kind);
    if (track == nullptr || track->reference != request.reference) return std::nullopt;
    Cue named = *cue;
    std::get<SpotifyTrack>(named.kind).title = title;
    if (request.mayNameCue && cue->name == request.originalName) named.name = title;
    if (named == *cue) return std::nullopt;
    return ShowEdit{edit::UpdateCue{std::move(named)}};
}

} // namespace velarion::spotifyMetadata

namespace velarion {

SpotifyMetadataResolver::SpotifyMetadataResolver(WebRequests& web, std::function<const Show*()> show,
                                                 std::function<bool(const ShowEdit&)> edit,
                                                 std::function<void(const std::string&)> note, std::string base)
    : web_(web), show_(std::move(show)), edit_(std::move(edit)), note_(std::move(note)), base_(std::move(base)) {}

void SpotifyMetadataResolver::resolve(const std::vector<SpotifyMetadataRequest>& requests) {
    for (const SpotifyMetadataRequest& request : requests) {
        const auto address = spotifyMetadata::oEmbedAddress(base_, request.reference);
        if (!address || !asked_.emplace(request.cueID, request.reference).second) continue;
        std::weak_ptr<int> life = life_;
        web_.get(*address, [this, life, request](WebAnswer answer) {
            if (life.expired()) return;
            answered(request, answer);
        });
    }
}

void SpotifyMetadataResolver::answered(const SpotifyMetadataRequest& request, const WebAnswer& answer) {
    std::optional<std::string> title;
    std::string why = answer.error;
    if (why.empty() && answer.status != 200) why = "Spotify answered " + std::to_string(answer.status);
    if (why.empty()) {
        title = spotifyMetadata::parseTitle(answer.body);
        if (!title) why = "Spotify's answer had no title";
    }
    if (!title) {
        if (note_) note_("Couldn't name " + request.originalName + " from Spotify — " + why + ".");
        return;
    }
    const Show* show = show_ ? show_() : nullptr;
    if (show == nullptr) return;
    if (auto change = spotifyMetadata::titleEdit(*show, request, *title)) edit_(*change);
}

} // namespace velarion
