#include "Live/SpotifyMetadata.h"

#include "ShowBuilder.h"

#include <gtest/gtest.h>

namespace velarion::testing {
namespace {

class FakeWeb final : public WebRequests {
public:
    void get(const std::string& address, std::function<void(WebAnswer)> done) override {
        asked.push_back(address);
        answers.push_back(std::move(done));
    }
    std::vector<std::string> asked;
    std::vector<std::function<void(WebAnswer)>> answers;
};

TEST(SpotifyMetadataTest, OEmbedAnswersAndAddresses) {
    EXPECT_EQ(spotifyMetadata::parseTitle(R"({"title":" Song 2 ","type":"rich"})"), "Song 2");
    for (const char* bad : {"", "[]", R"({"title":7})", R"({"title":"  "})", R"({"html":"x"})", "{\"title\":\"a"})
        EXPECT_EQ(spotifyMetadata::parseTitle(bad), std::nullopt) << bad;
    EXPECT_EQ(spotifyMetadata::oEmbedAddress("http://127.0.0.1:9", "spotify:track:abc"),
              "http://127.0.0.1:9/oembed?url=https%3A%2F%2Fopen.spotify.com%2Ftrack%2Fabc");
    EXPECT_EQ(spotifyMetadata::oEmbedAddress("x", "spotify:album:abc"), std::nullopt);
}

TEST(SpotifyMetadataTest, AnAnswerNamesTheCueOnlyWhileItIsStillTheSame) {
    Show show;
    show.sections.push_back(Section{Uuid::random(), "Main", std::nullopt, std::nullopt, {}});
    ShowBuilder build{show};
    StreamTrackCue track;
    track.reference = "spotify:track:abc";
    const Uuid named = build.add("Spotify song", SpotifyTrack{track}).id;
    const Uuid kept = build.add("Walk-in", SpotifyTrack{track}).id;
    Cue& changing = build.add("Spotify song", SpotifyTrack{track});

    FakeWeb web;
    std::vector<ShowEdit> edits;
    std::vector<std::string> notes;
    SpotifyMetadataResolver resolver(
        web, [&] { return &show; }, [&](const ShowEdit& edit) { edits.push_back(edit); return true; },
        [&](const std::string& note) { notes.push_back(note); }, "http://stand-in");
    resolver.resolve(spotifyMetadata::requests(show));
    resolver.resolve(spotifyMetadata::requests(show)); // asked once each
    ASSERT_EQ(web.asked.size(), 3u);

    std::get<SpotifyTrack>(changing.kind).reference = "spotify:track:other";
    for (int i = 0; i < 2; ++i) web.answers[i]({200, R"({"title":"Song 2"})", ""});
    web.answers[2]({0, "", "no network"});
    ASSERT_EQ(edits.size(), 2u);
    const Cue& first = std::get<edit::UpdateCue>(edits[0]).cue;
    EXPECT_EQ(first.id, named);
    EXPECT_EQ(first.name, "Song 2");
    const Cue& second = std::get<edit::UpdateCue>(edits[1]).cue;
    EXPECT_EQ(second.id, kept);
    EXPECT_EQ(second.name, "Walk-in");
    EXPECT_EQ(std::get<SpotifyTrack>(second.kind).title, "Song 2");
    EXPECT_EQ(notes, std::vector<std::string>{"Couldn't name Spotify song from Spotify — no network."});
}

} // namespace
} // namespace velarion::testing
