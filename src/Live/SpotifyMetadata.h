#pragma once
// Spotify metadata: names Spotify cues that carry a reference but no title,
// from Spotify's public oEmbed endpoint. A failure changes nothing; the log
// says why in one sentence.
//
// Contract.
// - Main thread only. Answers come back through WebRequests on the main
//   loop; each is checked against the show as it is then, so an answer for
//   a cue that was deleted or given another song changes nothing.
// - The resolver holds no show: it reads the present one through `show`
//   and changes it only through `edit` (a normal undoable edit).

#include "Identity/Uuid.h"
#include "Live/ports/WebRequests.h"
#include "LiveModel/Show.h"
#include "LiveModel/ShowEdit.h"

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <string>
#include <string_view>
#include <vector>

namespace velarion {

struct SpotifyMetadataRequest {
    Uuid cueID;
    std::string reference;
    std::string originalName;
    bool mayNameCue = false;
    friend bool operator==(const SpotifyMetadataRequest&, const SpotifyMetadataRequest&) = default;
};

namespace spotifyMetadata {
// The public endpoint; VELARION_SPOTIFY_OEMBED_BASE replaces it (tests).
inline constexpr std::string_view defaultBase = "https://open.spotify.com";
std::string baseAddress();
// Spotify cues with a reference and no title.
std::vector<SpotifyMetadataRequest> requests(const Show& show);
// The oEmbed address for a track reference; none for albums and playlists.
std::optional<std::string> oEmbedAddress(std::string_view base, std::string_view reference);
// The `title` of an oEmbed answer; none when the text isn't such an answer.
std::optional<std::string> parseTitle(std::string_view body);
// The edit that names the cue, when it still exists with the same
// reference; none otherwise.
std::optional<ShowEdit> titleEdit(const Show& show, const SpotifyMetadataRequest& request,
                                  const std::string& title);
} // namespace spotifyMetadata

class SpotifyMetadataResolver {
public:
    SpotifyMetadataResolver(WebRequests& web, std::function<const Show*()> show,
                            std::function<bool(const ShowEdit&)> edit, std::function<void(const std::string&)> note,
                            std::string base = spotifyMetadata::baseAddress());
    // Asks for every request not asked for before: a failure is said once.
    void resolve(const std::vector<SpotifyMetadataRequest>& requests);

private:
    void answered(const SpotifyMetadataRequest& request, const WebAnswer& answer);
    WebRequests& web_;
    std::function<const Show*()> show_;
    std::function<bool(const ShowEdit&)> edit_;
    std::function<void(const std::string&)> note_;
    std::string base_;
    std::set<std::pair<Uuid, std::string>> asked_; // each cue and song once a session
    std::shared_ptr<int> life_ = std::make_shared<int>(0);
};

} // namespace velarion
