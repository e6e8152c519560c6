// The line under a cue's name, and the time texts it is built from.

#include "ShowBuilder.h"

#include "LiveModel/CueDescription.h"
#include "LiveModel/TimeText.h"
#include "LiveModel/TimerMode.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velarion {
namespace {

struct Fixture {
    Show show;
    MediaItem add(MediaKind kind, std::string name, std::optional<double> duration = {}) {
        MediaItem item = testing::makeItem(kind, std::move(name), duration);
        show.library.push_back(item);
        return item;
    }
    std::string describe(CueKind kind, std::optional<MusicHandoff> handoff = {}) {
        Cue cue = testing::makeCue("Cue", std::move(kind));
        cue.musicHandoff = handoff;
        return cueDescription(cue, show);
    }
};

TEST(CueDescription, PictureCues) {
    Fixture f;
    MediaItem deck = f.add(MediaKind::deck, "Welcome");
    DeckInfo info;
    info.pages = {"Decks/Welcome/1.png"};
    deck.deck = info;
    f.show.library.set(f.show.library.size() - 1, deck);
    EXPECT_EQ(f.describe(SlidesCue{deck.id}), "Welcome · 1 slide");
    info.made = std::vector<MadeSlide>(3);
    deck.deck = info;
    f.show.library.set(f.show.library.size() - 1, deck);
    EXPECT_EQ(f.describe(SlidesCue{deck.id}), "Welcome · 3 slides");
    EXPECT_EQ(f.describe(SlidesCue{Uuid::random()}), "missing media");

    const MediaItem film = f.add(MediaKind::video, "Opener");
    VideoCue video;
    video.mediaID = film.id;
    EXPECT_EQ(f.describe(video), "Opener");
    EXPECT_EQ(f.describe(video, MusicHandoff::cut), "Opener · cuts music");
    video.loops = true;
    video.layer = LayerKind::background;
    video.fadeIn = 2;
    video.musicRule = VideoMusicRule::dip;
    EXPECT_EQ(f.describe(video, MusicHandoff::cut), "Opener · loops · background · fade in 2s · dips music");
    video.musicRule = VideoMusicRule::leave;
    video.fadeIn = 1.5;
    EXPECT_EQ(f.describe(video), "Opener · loops · background · fade in 1.5s · leaves music");
}

TEST(CueDescription, SoundCues) {
    Fixture f;
    const MediaItem sting = f.add(MediaKind::audio, "Sting", 4);
    AudioCue audio;
    audio.mediaID = sting.id;
    EXPECT_EQ(f.describe(audio), "Effect · Sting");
    audio.inPoint = 75;
    audio.fadeIn = 3;
    audio.loops = true;
    audio.bus = AudioBus::headphones;
    audio.role = SoundRole::music;
    EXPECT_EQ(f.describe(audio), "Music · Sting · starts 1:15 · fade in 3s · loops · headphones only");

    PlaylistCue playlist{{sting.id}, true, false, 4, 0, 1, AudioBus::house};
    EXPECT_EQ(f.describe(playlist), "1 song · shuffle · crossfade 4s · plays once");
    playlist.mediaIDs.push_back(sting.id);
    playlist.shuffle = false;
    playlist.crossfade = 0;
    playlist.repeats = true;
    EXPECT_EQ(f.describe(playlist), "2 songs · in order · repeats");

    SpotifyTrack track;
    track.title = "Oceans";
    track.artist = "Hillsong United";
    EXPECT_EQ(f.describe(track), "Oceans · Hillsong United");
    track.startAt = 30;
    track.fadeIn = 2;
    track.playFor = 3725;
    EXPECT_EQ(f.describe(track, MusicHandoff::cut),
              "Oceans · Hillsong United · starts 0:30 · fade in 2s · plays 1:02:05 · hard cut");
    EXPECT_EQ(f.describe(StreamPlaylistCue{"ref", "Worship mix", true}), "Worship mix · shuffle");
}

TEST(CueDescription, TimersMessagesGraphicsAndClears) {
    Fixture f;
    EXPECT_EQ(f.describe(TimerCue{CountdownMode{300}}), "5:00 countdown");
    EXPECT_EQ(f.describe(TimerCue{CountToMode{570}}), "Counts to 9:30 AM");
    EXPECT_EQ(f.describe(MessageCue{"Wrap up", MessageTarget::stage}), "To the speaker");
    EXPECT_EQ(f.describe(GraphicCue{"Jane Doe", "Keynote"}), "Jane Doe · Keynote");
    EXPECT_EQ(f.describe(ClearCue{ClearTarget::graphics}), "Clears graphics");

    Section section;
    Cue target;
    target.id = Uuid::random();
    target.name = "Walk-in loop";
    section.cues.push_back(target);
    f.show.sections.push_back(section);
    EXPECT_EQ(f.describe(ClearCue{ClearTarget::everything, 0, target.id}), "Stops Walk-in loop");
    EXPECT_EQ(f.describe(ClearCue{ClearTarget::everything, 0, Uuid::random()}),
              "Stops a removed cue");
}

TEST(TimeText, DurationsAndClocks) {
    EXPECT_EQ(TimeText::duration(0), "0:00");
    EXPECT_EQ(TimeText::duration(59.9), "0:59");
    EXPECT_EQ(TimeText::duration(3600), "1:00:00");
    EXPECT_EQ(TimeText::duration(-61), "\u22121:01");
    EXPECT_EQ(TimeText::clock(0), "12:00 AM");
    EXPECT_EQ(TimeText::clock(12 * 60 + 5), "12:05 PM");
    EXPECT_EQ(TimeText::timerSeconds(0.2, false), 1);
    EXPECT_EQ(TimeText::timerSeconds(0.9, true), 0);
    EXPECT_EQ(TimeText::timerSeconds(-0.2, false), -1);
    EXPECT_EQ(TimeText::timerSeconds(std::nan(""), false), 0);
}

TEST(TimeText, ParsingTypedTimes) {
    EXPECT_EQ(TimeText::seconds(" 1:02:03 "), 3723);
    EXPECT_EQ(TimeText::seconds("2:30"), 150);
    EXPECT_EQ(TimeText::seconds("42.5"), 42.5);
    EXPECT_FALSE(TimeText::seconds("1:2:3:4"));
    EXPECT_FALSE(TimeText::seconds("soon"));
    EXPECT_EQ(TimeText::minuteOfDay("14:30"), 870);
    EXPECT_EQ(TimeText::minuteOfDay("2:30 pm"), 870);
    EXPECT_EQ(TimeText::minuteOfDay("12 AM"), 0);
    EXPECT_FALSE(TimeText::minuteOfDay("13 PM"));
    EXPECT_FALSE(TimeText::minuteOfDay("24:00"));
    EXPECT_FALSE(TimeText::minuteOfDay("9:60"));
}

// 2026-03-10 00:00:00 UTC.
constexpr double midnightUtc = 1773100800;

TEST(TimerModeTarget, PastTargetStaysTodayForTwoHoursThenMovesToTomorrow) {
    const FixedOffsetCalendar utc;
    const int nineAM = 9 * 60;
    const double nine = midnightUtc + 9 * 3600;
    // 1 h 59 min late: still today, shown as overrun.
    EXPECT_EQ(timerMode::target(nineAM, nine + 119 * 60, utc), nine);
    // 2 h 1 min late: the same clock time tomorrow.
    EXPECT_EQ(timerMode::target(nineAM, nine + 121 * 60, utc), nine + 86400);
    // Ahead of the target: today.
    EXPECT_EQ(timerMode::target(nineAM, nine - 3600, utc), nine);
}

TEST(TimerModeTarget, FollowsTheLocalDayNotTheUtcDay) {
    // UTC+10: local 08:00 on the 10th is 22:00 UTC on the 9th.
    const FixedOffsetCalendar east(10 * 3600);
    const double localMorning = midnightUtc - 2 * 3600; // 08:00 local, 10th
    const double expected = midnightUtc - 10 * 3600 + 9 * 3600; // 09:00 local, 10th
    EXPECT_EQ(timerMode::target(9 * 60, localMorning, east), expected);
}

} // namespace
} // namespace velarion
