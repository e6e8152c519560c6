// The computed answers of a show that other parts of the system rely on.

#include "ShowBuilder.h"

#include "LiveModel/LiveCheck.h"
#include "LiveModel/Show.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <string>

namespace velarion {
namespace {

using testing::makeCue;
using testing::makeItem;

Show showWith(std::vector<std::vector<Cue>> sections, std::vector<MediaItem> library = {}) {
    std::vector<Section> made;
    for (auto& cues : sections) made.push_back(testing::makeSection("", std::move(cues)));
    return testing::makeShow("", std::move(made), std::move(library));
}

TEST(ShowQueries, FindsCuesAcrossSectionsInOrder) {
    const Cue a = makeCue("A", ClearCue{}), b = makeCue("B", ClearCue{}), c = makeCue("C", ClearCue{});
    const Show show = showWith({{a}, {}, {b, c}});
    ASSERT_EQ(show.allCues().size(), 3u);
    EXPECT_EQ(show.allCues()[2]->name, "C");
    EXPECT_EQ(show.cue(b.id)->name, "B");
    EXPECT_EQ(show.location(c.id), (CueLocation{2, 1}));
    EXPECT_EQ(show.number(c.id), 3);
    const Uuid stranger = Uuid::random();
    EXPECT_EQ(show.cue(stranger), nullptr);
    EXPECT_FALSE(show.location(stranger));
    EXPECT_FALSE(show.number(stranger));
}

TEST(ShowQueries, FirstPlayableCueNeverFollows) {
    const Cue disabled = makeCue("Off", ClearCue{}, Follow::manual, false);
    const Cue second = makeCue("Second", ClearCue{}, Follow::withPrevious);
    const Cue third = makeCue("Third", ClearCue{}, Follow::afterPrevious);
    const Show show = showWith({{disabled}, {second, third}});
    EXPECT_EQ(show.effectiveFollow(second), Follow::manual);
    EXPECT_EQ(show.effectiveFollow(third), Follow::afterPrevious);
}

TEST(ShowQueries, SoundRoleOfAudioFollowsTheFileLength) {
    MediaItem noLength = makeItem(MediaKind::audio, "Sting");
    MediaItem minute = makeItem(MediaKind::audio, "Jingle", 60.0);
    MediaItem longer = makeItem(MediaKind::audio, "Song", 60.1);
    auto audioCue = [](const MediaItem& item) {
        AudioCue audio;
        audio.mediaID = item.id;
        return makeCue(item.name, audio);
    };
    const Cue a = audioCue(noLength), b = audioCue(minute), c = audioCue(longer);
    Cue forced = audioCue(longer);
    std::get<AudioCue>(forced.kind).role = SoundRole::effect;
    const Cue orphan = audioCue(makeItem(MediaKind::audio, "Gone", 5));
    const Show show = showWith({{a, b, c, forced, orphan}}, {noLength, minute, longer});
    EXPECT_EQ(show.soundRole(a), SoundRole::music);
    EXPECT_EQ(show.soundRole(b), SoundRole::effect);
    EXPECT_EQ(show.soundRole(c), SoundRole::music);
    EXPECT_EQ(show.soundRole(forced), SoundRole::effect);
    EXPECT_EQ(show.soundRole(orphan), SoundRole::music);
    EXPECT_EQ(show.soundRole(makeCue("T", SpotifyTrack{})), SoundRole::music);
    EXPECT_FALSE(show.soundRole(makeCue("V", VideoCue{})));
}

TEST(ShowQueries, GroupCueHasEndByDurationOrKind) {
    MediaItem network = makeItem(MediaKind::video, "Camera");
    network.ndiSource = NDISource{"CAM (Studio)", std::nullopt};
    const Show show = showWith({}, {network});
    const double inf = std::numeric_limits<double>::infinity();

    Cue audio = makeCue("A", AudioCue{});
    EXPECT_TRUE(show.groupCueHasEnd(audio));
    audio.groupDuration = 0; // a zero step never ends, although the sound would
    EXPECT_FALSE(show.groupCueHasEnd(audio));
    audio.groupDuration = inf;
    EXPECT_FALSE(show.groupCueHasEnd(audio));
    Cue message = makeCue("M", MessageCue{});
    message.groupDuration = 4;
    EXPECT_TRUE(show.groupCueHasEnd(message));

    VideoCue live;
    live.mediaID = network.id;
    EXPECT_FALSE(show.groupCueHasEnd(makeCue("Live", live)));
    EXPECT_TRUE(show.groupCueHasEnd(makeCue("Missing item", VideoCue{})));
    VideoCue looping;
    looping.loops = true;
    EXPECT_FALSE(show.groupCueHasEnd(makeCue("Loop", looping)));

    EXPECT_FALSE(show.groupCueHasEnd(makeCue("Empty", PlaylistCue{})));
    EXPECT_TRUE(show.groupCueHasEnd(makeCue("One", PlaylistCue{{Uuid::random()}})));
    MusicTrack track;
    EXPECT_FALSE(show.groupCueHasEnd(makeCue("Track", track)));
    track.playFor = 30;
    EXPECT_TRUE(show.groupCueHasEnd(makeCue("Track", track)));
    EXPECT_TRUE(show.groupCueHasEnd(makeCue("T", TimerCue{CountdownMode{10}})));
    EXPECT_FALSE(show.groupCueHasEnd(makeCue("T", TimerCue{CountdownMode{0}})));
    EXPECT_TRUE(show.groupCueHasEnd(makeCue("T", TimerCue{CountToMode{600}})));
    EXPECT_FALSE(show.groupCueHasEnd(makeCue("T", TimerCue{CountUpMode{}})));
    EXPECT_FALSE(show.groupCueHasEnd(makeCue("G", GraphicCue{"a", "b", std::nullopt})));
    EXPECT_TRUE(show.groupCueHasEnd(makeCue("G", GraphicCue{"a", "b", 5.0})));
    EXPECT_FALSE(show.groupCueHasEnd(makeCue("S", SlidesCue{})));
}

TEST(ShowQueries, MachineNamedMediaTakesTheFirstUsingCueOrTheKindName) {
    MediaItem used = makeItem(MediaKind::video, Uuid::random().text());
    MediaItem unused = makeItem(MediaKind::audio, Uuid::random().text());
    MediaItem named = makeItem(MediaKind::image, "Logo");
    VideoCue video;
    video.mediaID = used.id;
    Show show = showWith({{makeCue("Intro film", video), makeCue("Second use", video)}},
                         {used, unused, named});
    const Show before = show;
    EXPECT_TRUE(show.nameMachineNamedMedia());
    EXPECT_EQ(show.media(used.id)->name, "Intro film");
    EXPECT_EQ(show.media(unused.id)->name, "Sound");
    EXPECT_EQ(show.media(named.id)->name, "Logo");
    // The earlier value shares storage with this one but must not change.
    EXPECT_TRUE(MediaItem::isMachineName(before.media(used.id)->name));
    EXPECT_FALSE(show.nameMachineNamedMedia());
}

// The live-safe assertion: fatal where we can afford it, a warning and the
// safe path on stage.
int safePathTaken(bool consistent) {
    if (!VELARION_CHECK(consistent, "run table out of step")) return -1;
    return 1;
}

TEST(LiveCheckDeathTest, FatalChecksAbortWithTheMessage) {
    ::setenv("VELARION_FATAL_CHECKS", "1", 1);
    EXPECT_EQ(safePathTaken(true), 1);
    EXPECT_DEATH(safePathTaken(false), "run table out of step");
}

TEST(LiveCheck, WithoutFatalChecksAReleaseBuildReportsAndTakesTheSafePath) {
    const char* before = std::getenv("VELARION_FATAL_CHECKS");
    const std::string saved = before ? before : "";
    ::setenv("VELARION_FATAL_CHECKS", "0", 1);
    if (liveCheck::isFatal()) {
        ::setenv("VELARION_FATAL_CHECKS", saved.c_str(), 1);
        GTEST_SKIP() << "debug builds always stop on a failed check";
    }
    std::string reported;
    liveCheck::setReporter([&](std::string_view message) { reported = message; });
    EXPECT_EQ(safePathTaken(false), -1);
    liveCheck::setReporter({});
    ::setenv("VELARION_FATAL_CHECKS", saved.c_str(), 1);
    EXPECT_NE(reported.find("run table out of step"), std::string::npos);
    EXPECT_NE(reported.find("consistent"), std::string::npos);
}

} // namespace
} // namespace velarion
