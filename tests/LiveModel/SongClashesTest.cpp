#include "ShowEditFixtures.h"

#include <gtest/gtest.h>

#include <sstream>

namespace velarion {
namespace {

using namespace editTesting;

// A show written as words, one cue a word, "|" between sections. A word is
// a kind letter (S Spotify song, P Spotify playlist, M Music song, G lower
// third), optional marks (+ With Previous, > After Previous, ! disabled),
// then the cue's name: "S:A S+:B".
Show showOf(const std::string& text) {
    std::vector<Section> sections{makeSection("1", {})};
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (word == "|") {
            sections.push_back(makeSection(std::to_string(sections.size() + 1), {}));
            continue;
        }
        const std::size_t colon = word.find(':');
        const std::string marks = word.substr(1, colon - 1);
        const Follow follow = marks.find('+') != std::string::npos   ? Follow::withPrevious
                              : marks.find('>') != std::string::npos ? Follow::afterPrevious
                                                                     : Follow::manual;
        const CueKind kind = word[0] == 'S'   ? CueKind(SpotifyTrack{})
                             : word[0] == 'P' ? CueKind(StreamPlaylistCue{})
                             : word[0] == 'M' ? CueKind(MusicTrack{})
                                              : CueKind(GraphicCue{});
        sections.back().cues.push_back(
            makeCue(word.substr(colon + 1), follow, marks.find('!') == std::string::npos, kind));
    }
    return makeShow(std::move(sections));
}

TEST(SongClashes, GivesEachPairOfOneAppThatStartsTogether) {
    const struct {
        const char* show;
        const char* clashes; // "earlier>later", space-separated
    } cases[] = {
        {"S:A S+:B", "A>B"},
        {"S:A S:B", ""},
        {"S:A S>:B", ""},
        {"S:A M+:B", ""},
        {"P:A G+:X S+:B", "A>B"},
        {"M:A M+:B M+:C", "A>B B>C"},
        {"S:A S!+:B S+:C", "A>C"},
        {"S!:A S+:B", ""},
        {"S:A | S+:B", "A>B"},
        {"S:A M+:B S:C S+:D M+:E", "C>D"},
    };
    for (const auto& row : cases) {
        const Show show = showOf(row.show);
        std::string found;
        for (const SongClash& clash : show.songClashes()) {
            found += (found.empty() ? "" : " ") + clash.earlier->name + ">" + clash.later->name;
        }
        EXPECT_EQ(found, row.clashes) << row.show;
    }
}

} // namespace
} // namespace velarion
