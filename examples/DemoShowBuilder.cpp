#include "DemoShowBuilder.h"

#include "LiveEngine/WavImage.h"
#include "LiveModel/ShowPackage.h"
#include "LiveModel/ShowTemplate.h"
#include "LiveModel/Song.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

namespace velarion {

namespace {

constexpr int sampleRate = 44100;

// A gentle stereo arpeggio over `notes` (Hz), each `noteSeconds` long, with
// soft attacks so it loops and crossfades without clicks.
std::string tune(const std::vector<double>& notes, double noteSeconds, int repeats) {
    const auto frames = static_cast<std::size_t>(notes.size() * repeats * noteSeconds * sampleRate);
    const auto noteFrames = static_cast<std::size_t>(noteSeconds * sampleRate);
    std::vector<std::int16_t> samples;
    samples.reserve(frames * 2);
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const double hertz = notes[(frame / noteFrames) % notes.size()];
        const double t = static_cast<double>(frame % noteFrames) / sampleRate;
        const double envelope = std::min(t / 0.02, 1.0) * std::exp(-2.5 * t);
        const double value = 0.3 * envelope * (std::sin(2 * std::numbers::pi * hertz * t) +
                                               0.3 * std::sin(4 * std::numbers::pi * hertz * t));
        samples.insert(samples.end(), 2, static_cast<std::int16_t>(std::lround(value * 32767)));
    }
    const auto wav = wavImage(sampleRate, 2, samples);
    return std::string(wav.begin(), wav.end());
}

MediaItem mediaItem(MediaKind kind, std::string name, std::string fileName, std::optional<double> seconds) {
    MediaItem item;
    item.id = Uuid::random();
    item.kind = kind;
    item.name = std::move(name);
    item.fileName = std::move(fileName);
    item.duration = seconds;
    return item;
}

Cue cue(std::string name, CueKind kind, Follow follow = Follow::manual) {
    Cue made;
    made.id = Uuid::random();
    made.name = std::move(name);
    made.kind = std::move(kind);
    made.follow = follow;
    return made;
}

Section section(std::string title, std::vector<Cue> cues) {
    Section made;
    made.id = Uuid::random();
    made.title = std::move(title);
    for (Cue& item : cues) made.cues.push_back(std::move(item));
    return made;
}

const char* lyrics = R"([Verse 1]
Morning light across the hills
Every heart awake and still
Gather in, the day is new
Every voice is singing through

[Chorus]
Rise, rise, the morning sings
Lift your eyes to brighter things
Rise, rise, the dark is gone
We are carried on and on

[Verse 2]
Open doors and open hands
Here together now we stand
All the weary, all the young
Find a place and find a song
)";

} // namespace

std::filesystem::path buildDemoShow(const std::filesystem::path& out, const std::optional<std::filesystem::path>& clip) {
    std::filesystem::remove_all(out);
    Show show = showTemplate::make(ShowTemplate::presentation, "Velarion Demo");
    ShowPackage package = ShowPackage::create(out, show);

    // Walk-in music, made here.
    const double noteSeconds = 0.5;
    MediaItem first = mediaItem(MediaKind::audio, "Walk-in 1", "Audio/Walk-in 1.wav", 16 * noteSeconds * 3);
    MediaItem second = mediaItem(MediaKind::audio, "Walk-in 2", "Audio/Walk-in 2.wav", 16 * noteSeconds * 3);
    package.writeMedia(tune({261.6, 329.6, 392.0, 523.3}, noteSeconds, 12), first.fileName);
    package.writeMedia(tune({220.0, 277.2, 329.6, 440.0}, noteSeconds, 12), second.fileName);
    show.library.push_back(first);
    show.library.push_back(second);

    // A song with verses and a chorus, as lyric slides.
    Song song = Song::parsing(lyrics, LyricLook::onBlack, 2);
    song.title = "Morning Light";
    MediaItem songDeck = mediaItem(MediaKind::deck, song.title, std::string(MediaItem::madeFileName), std::nullopt);
    DeckInfo deck;
    deck.source = "Velarion";
    deck.made = song.madeSlides();
    songDeck.deck = deck;
    songDeck.song = song;
    show.library.push_back(songDeck);

    std::vector<Cue> doors{cue("Walk-in music", PlaylistCue{{first.id, second.id}, true, true, 3, 2, 0.8}),
                           cue("Doors countdown",
                               TimerCue{CountdownMode{300}, std::string("We begin in"), 60, true, true})};
    std::vector<Cue> welcome{cue("Welcome lower third", GraphicCue{"Welcome", "Velarion demo", 8.0})};
    std::vector<Cue> worship{cue("Morning Light", SlidesCue{songDeck.id})};
    if (clip) {
        MediaItem video = mediaItem(MediaKind::video, "Opening clip", package.importFile(*clip, "Video"), 4.0);
        show.library.push_back(video);
        worship.insert(worship.begin(), cue("Opening clip", VideoCue{video.id}));
    }
    std::vector<Cue> closing{cue("Five minutes", MessageCue{"Five minutes left", MessageTarget::stage, 10.0}),
                             cue("Clear everything", ClearCue{ClearTarget::everything, 2.0})};

    // The template's sections stay, with the demo's around them.
    auto& sections = show.sections;
    std::vector<Section> ordered{section("Doors", std::move(doors))};
    for (std::size_t i = 0; i < sections.size(); ++i) {
        Section kept = sections[i];
        if (kept.title == "Welcome")
            for (Cue& item : welcome) kept.cues.push_back(std::move(item));
        ordered.push_back(std::move(kept));
        if (sections[i].title == "Welcome") ordered.push_back(section("Song and video", std::move(worship)));
    }
    ordered.push_back(section("After", std::move(closing)));
    show.sections = {};
    for (Section& item : ordered) show.sections.push_back(std::move(item));
    package.save(show);
    return out;
}

} // namespace velarion
