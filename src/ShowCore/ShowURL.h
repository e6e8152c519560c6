#pragma once
// A URL of the show graph, held and written in JSON as its absolute text
// exactly as given ("file:///home/ana/Music/intro.wav",
// "https://example.org/a.mp3"): a scheme, a colon and the rest, with no
// spaces or control characters. Local files are "file:" URLs with
// percent-encoded paths. A plain value; any thread.

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace velarion::showcore {

struct ShowURL {
    std::string text;

    // Checks the form above; anything else gives no value.
    static std::optional<ShowURL> parse(std::string_view text);
    bool isFileURL() const;

    friend bool operator==(const ShowURL&, const ShowURL&) = default;
    friend auto operator<=>(const ShowURL&, const ShowURL&) = default;
};

} // namespace velarion::showcore
