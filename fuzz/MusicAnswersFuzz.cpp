// Feeds arbitrary text to what the music apps and Spotify's web answer are
// read with: the status text of either app, a pasted link, an oEmbed body.
// They answer none rather than fail; what they answer must hold as it is.

#include "FuzzCheck.h"
#include "Live/SpotifyMetadata.h"
#include "LiveEngine/StreamRemote.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velarion;
    const std::string_view text = textOf(data, size);
    for (StreamApp app : {StreamApp::spotify, StreamApp::music}) {
        if (auto status = StreamRemote::parseStatus(app, text)) {
            require(std::isfinite(status->position) && status->position >= 0);
            require(std::isfinite(status->duration) && status->duration >= 0);
            require(status->volume >= 0 && status->volume <= 100);
        }
    }
    if (auto uri = StreamRemote::spotifyURI(text)) {
        require(uri->starts_with("spotify:"));
        require(StreamRemote::spotifyURI(*uri) == uri);
    }
    if (auto title = spotifyMetadata::parseTitle(text)) require(!title->empty());
    return 0;
}
