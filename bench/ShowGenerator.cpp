#include "ShowGenerator.h"

#include "GeneratedText.h"
#include "LibraryGenerator.h"
#include "SeededRandom.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace velarion::bench {

namespace {

// A timer variant picks its mode as variant % 3 and its look as variant % 5
// (the four backdrop cases, then no look); a clear variant 0 stops one cue.
struct Recipe {
    CueKindCase kind;
    std::size_t variant = 0;
};

// The first cues of every show, so that even a small one has each case.
constexpr std::array<Recipe, 17> coveringRecipes = {{
    {CueKindCase::slides},        {CueKindCase::video},           {CueKindCase::image},
    {CueKindCase::audio},         {CueKindCase::playlist},        {CueKindCase::spotifyTrack},
    {CueKindCase::spotifyPlaylist}, {CueKindCase::musicTrack},    {CueKindCase::timer, 0},
    {CueKindCase::timer, 1},      {CueKindCase::timer, 2},        {CueKindCase::timer, 3},
    {CueKindCase::timer, 4},      {CueKindCase::message},         {CueKindCase::graphic},
    {CueKindCase::clear, 0},      {CueKindCase::clear, 1},
}};

// How often each case appears in a real service, in percent, in case order.
constexpr std::array<int, 12> kindWeights = {34, 10, 8, 10, 3, 4, 2, 3, 5, 7, 8, 6};

Recipe randomRecipe(SeededRandom& random) {
    std::size_t roll = random.below(100);
    std::size_t kind = 0;
    while (roll >= static_cast<std::size_t>(kindWeights[kind])) {
        roll -= static_cast<std::size_t>(kindWeights[kind]);
        ++kind;
    }
    return {static_cast<CueKindCase>(kind), random.below(10)};
}

struct CueContext {
    SeededRandom& random;
    const LibraryIndex& library;
    const std::vector<std::string>& screenIDs;
    std::vector<Uuid> earlierCues;
};

std::optional<double> maybeAmount(SeededRandom& random, double probability, double low,
                                  double high, double step) {
    if (!random.chance(probability)) return std::nullopt;
    return random.amount(low, high, step);
}

template <class Track> Track makeStreamTrack(SeededRandom& random, std::string_view service) {
    Track track;
    track.reference = std::string(service) + ":track:";
    track.reference += std::to_string(random.next() % 100'000'000);
    track.title = titleText(random, 1, 5);
    track.artist = personName(random);
    track.startAt = random.chance(0.3) ? random.amount(0, 60, 0.5) : 0;
    track.fadeIn = random.chance(0.5) ? random.amount(0.5, 5, 0.5) : 0;
    track.playFor = maybeAmount(random, 0.4, 15, 240, 1);
    track.fadeOut = random.chance(0.5) ? random.amount(1, 8, 0.5) : 0;
    track.level = random.between(40, 100);
    return track;
}

TimerCue makeTimer(CueContext& context, std::size_t variant) {
    SeededRandom& random = context.random;
    TimerCue timer;
    switch (variant % 3) {
    case 0: timer.mode = CountdownMode{random.amount(30, 1800, 30)}; break;
    case 1: timer.mode = CountToMode{random.between(8 * 60, 20 * 60)}; break;
    default: timer.mode = CountUpMode{}; break;
    }
    if (random.chance(0.6)) timer.title = titleText(random, 1, 3);
    timer.warnAt = random.chance(0.5) ? random.amount(10, 120, 5) : 0;
    timer.showOnStage = random.chance(0.8);
    timer.showOnAudience = random.chance(0.4);
    if (variant % 5 < 4) {
        CountdownLook look;
        look.layout = random.chance(0.5) ? CountdownLayout::fullScreen : CountdownLayout::corner;
        look.backdrop = makeBackdrop(variant % 5, random, context.library);
        if (random.chance(0.3)) look.logoID = random.pick(context.library.images);
        timer.look = look;
    }
    return timer;
}

CueKind makeKind(CueContext& context, Recipe recipe) {
    SeededRandom& random = context.random;
    const LibraryIndex& library = context.library;
    switch (recipe.kind) {
    case CueKindCase::slides: {
        const auto& deck = random.pick(library.decks);
        SlidesCue slides{deck.id, 0, maybeAmount(random, 0.2, 0, 2, 0.05)};
        if (deck.slideCount > 1 && random.chance(0.2)) {
            slides.startSlide = random.between(1, deck.slideCount - 1);
        }
        return slides;
    }
    case CueKindCase::video: {
        VideoCue video;
        video.mediaID = random.pick(library.videos);
        video.layer = random.chance(0.2) ? LayerKind::background : LayerKind::media;
        video.inPoint = random.chance(0.2) ? random.amount(0, 30, 0.04) : 0;
        video.outPoint = maybeAmount(random, 0.15, 31, 300, 0.04);
        video.loops = random.chance(0.25);
        if (video.loops && random.chance(0.5)) video.crossfadesLoop = random.chance(0.5);
        video.holdLastFrame = !video.loops && random.chance(0.3);
        video.fadeIn = random.chance(0.4) ? random.amount(0.25, 3, 0.25) : 0;
        video.fadeOut = random.chance(0.4) ? random.amount(0.25, 3, 0.25) : 0;
        video.level = random.chance(0.3) ? random.amount(0.2, 1, 0.05) : 1;
        if (random.chance(0.3)) {
            video.musicRule =
                static_cast<VideoMusicRule>(random.below(enumCount<VideoMusicRule>()));
        }
        return video;
    }
    case CueKindCase::image:
        return ImageCue{random.pick(library.images),
                        random.chance(0.3) ? LayerKind::background : LayerKind::media,
                        random.chance(0.5) ? random.amount(0.25, 2, 0.25) : 0};
    case CueKindCase::audio: {
        AudioCue audio;
        audio.mediaID = random.pick(library.sounds);
        audio.inPoint = random.chance(0.1) ? random.amount(0, 20, 0.01) : 0;
        audio.outPoint = maybeAmount(random, 0.1, 21, 300, 0.01);
        audio.fadeIn = random.chance(0.4) ? random.amount(0.5, 5, 0.5) : 0;
        audio.fadeOut = random.chance(0.4) ? random.amount(0.5, 5, 0.5) : 0;
        audio.level = random.chance(0.3) ? random.amount(0.2, 1, 0.05) : 1;
        audio.loops = random.chance(0.15);
        if (audio.loops && random.chance(0.5)) audio.crossfadesLoop = true;
        audio.bus = random.chance(0.1) ? AudioBus::headphones : AudioBus::house;
        if (random.chance(0.2)) {
            audio.role = random.chance(0.5) ? SoundRole::music : SoundRole::effect;
        }
        return audio;
    }
    case CueKindCase::playlist: {
        PlaylistCue playlist;
        const int count = random.between(2, 12);
        for (int i = 0; i < count; ++i) playlist.mediaIDs.push_back(random.pick(library.sounds));
        playlist.shuffle = random.chance(0.3);
        playlist.repeats = random.chance(0.4);
        playlist.crossfade = random.amount(0, 6, 0.5);
        playlist.fadeIn = random.chance(0.5) ? random.amount(1, 5, 0.5) : 0;
        playlist.level = random.amount(0.3, 1, 0.05);
        playlist.bus = AudioBus::house;
        return playlist;
    }
    case CueKindCase::spotifyTrack: return makeStreamTrack<SpotifyTrack>(random, "spotify");
    case CueKindCase::spotifyPlaylist: {
        StreamPlaylistCue playlist;
        playlist.reference = "spotify:playlist:" + std::to_string(random.next());
        playlist.title = titleText(random, 1, 4);
        playlist.shuffle = random.chance(0.5);
        playlist.fadeIn = random.chance(0.5) ? random.amount(1, 5, 0.5) : 0;
        playlist.level = random.between(30, 100);
        return playlist;
    }
    case CueKindCase::musicTrack: return makeStreamTrack<MusicTrack>(random, "music");
    case CueKindCase::timer: return makeTimer(context, recipe.variant);
    case CueKindCase::message:
        return MessageCue{noteText(random),
                          random.chance(0.7) ? MessageTarget::stage : MessageTarget::audience,
                          maybeAmount(random, 0.5, 5, 60, 1)};
    case CueKindCase::graphic:
        return GraphicCue{personName(random), titleText(random, 1, 4),
                          maybeAmount(random, 0.6, 4, 20, 0.5)};
    case CueKindCase::clear: {
        ClearCue clear;
        clear.target = static_cast<ClearTarget>(random.below(enumCount<ClearTarget>()));
        clear.fade = random.chance(0.6) ? random.amount(0.5, 4, 0.5) : 0;
        if (recipe.variant % 2 == 0 && !context.earlierCues.empty()) {
            clear.cueID = random.pick(context.earlierCues);
        }
        return clear;
    }
    }
    throw std::logic_error("unknown cue kind case");
}

Cue makeCue(CueContext& context, Recipe recipe) {
    SeededRandom& random = context.random;
    Cue cue;
    cue.id = random.uuid();
    cue.kind = makeKind(context, recipe);
    cue.name = titleText(random, 1, 5);
    cue.notes = random.chance(0.3) ? noteText(random) : std::string();
    const std::size_t followRoll = random.below(20);
    cue.follow = followRoll < 15   ? Follow::manual
                 : followRoll < 18 ? Follow::afterPrevious
                                   : Follow::withPrevious;
    cue.preWait = random.chance(0.1) ? random.amount(0.5, 10, 0.5) : 0;
    cue.isEnabled = !random.chance(0.03);
    const bool picture = cueKind::isPicture(cue.kind);
    if (cueKind::isMusic(cue.kind) && random.chance(0.4)) {
        cue.musicHandoff = random.chance(0.7) ? MusicHandoff::crossfade : MusicHandoff::cut;
    }
    if (recipe.kind != CueKindCase::slides && picture && random.chance(0.15)) {
        cue.geometry = CueGeometry{random.amount(0.25, 1, 0.05), random.amount(-0.4, 0.4, 0.01),
                                   random.amount(-0.4, 0.4, 0.01), random.amount(-10, 10, 0.5),
                                   random.amount(0.5, 1, 0.05)};
    }
    if (picture && random.chance(0.1)) cue.keepOnScreen = true;
    if (recipe.kind == CueKindCase::slides && random.chance(0.3)) {
        cue.operatorView = random.chance(0.5) ? CueOperatorView::slides : CueOperatorView::cues;
    }
    if ((picture || recipe.kind == CueKindCase::timer || recipe.kind == CueKindCase::graphic) &&
        random.chance(0.15)) {
        std::vector<std::string> outputs{random.pick(context.screenIDs)};
        if (random.chance(0.5)) outputs.push_back(random.pick(context.screenIDs));
        cue.visualOutputIDs = std::move(outputs);
    }
    if ((recipe.kind == CueKindCase::audio || recipe.kind == CueKindCase::video) &&
        random.chance(0.08)) {
        cue.audioDeviceID = "alsa_output.usb-Focusrite_Scarlett_2i2-00.analog-stereo";
    }
    if (random.chance(0.04)) cue.descriptionOverride = noteText(random);
    return cue;
}

constexpr std::array<std::string_view, 10> sectionTitles = {
    "Welcome", "Worship", "Notices", "Sermon", "Communion", "Offering", "Prayers",
    "Kids' talk", "Begrüßung", "Sending"};

std::vector<int> sectionSizes(const BenchmarkShowShape& shape, SeededRandom& random) {
    const int base = shape.cueCount / shape.sectionCount;
    std::vector<int> sizes(static_cast<std::size_t>(shape.sectionCount), base);
    const auto remainder = static_cast<std::size_t>(shape.cueCount % shape.sectionCount);
    for (std::size_t i = 0; i < remainder; ++i) ++sizes[i];
    // Uneven sections, the total kept: move some cues to the next section.
    for (std::size_t i = 0; i + 1 < sizes.size(); i += 2) {
        const int moved = random.between(0, (sizes[i] - 1) / 2);
        sizes[i] -= moved;
        sizes[i + 1] += moved;
    }
    return sizes;
}

std::vector<Section> makeSections(const BenchmarkShowShape& shape, CueContext& context) {
    SeededRandom& random = context.random;
    std::vector<Section> sections;
    int minute = 9 * 60 + 30;
    std::size_t cueIndex = 0;
    for (int size : sectionSizes(shape, random)) {
        Section section;
        section.id = random.uuid();
        section.title = std::string(sectionTitles[random.below(sectionTitles.size())]);
        if (random.chance(0.3)) section.title += " — " + titleText(random, 1, 3);
        section.plannedMinutes = random.between(2, 20);
        if (random.chance(0.7)) section.plannedStart = minute % (24 * 60);
        minute += *section.plannedMinutes;
        if (random.chance(0.2)) section.plannedMinutes.reset();
        for (int i = 0; i < size; ++i, ++cueIndex) {
            const Recipe recipe = cueIndex < coveringRecipes.size() ? coveringRecipes[cueIndex]
                                                                    : randomRecipe(random);
            section.cues.push_back(makeCue(context, recipe));
            context.earlierCues.push_back(section.cues.back().id);
        }
        sections.push_back(std::move(section));
    }
    return sections;
}

// Runs of consecutive cues that play as one, at most one group per section.
std::vector<CueGroup> makeGroups(const BenchmarkShowShape& shape, std::vector<Section>& sections,
                                 SeededRandom& random) {
    std::vector<CueGroup> groups;
    // A group ending a section must not leave the next section's first cue
    // starting With Previous outside it; sections here start by themselves.
    for (Section& section : sections) {
        if (!section.cues.empty() && section.cues[0].follow == Follow::withPrevious) {
            section.cues.edit(0).follow = Follow::manual;
        }
    }
    const int count = std::min(shape.cueGroupCount, shape.sectionCount);
    for (int g = 0; g < count; ++g) {
        Section& section = sections[static_cast<std::size_t>(g * shape.sectionCount / count)];
        if (section.cues.size() < 2) continue;
        CueGroup group;
        group.id = random.uuid();
        group.name = titleText(random, 1, 3);
        group.repeats = random.chance(0.3);
        std::size_t length = std::min(section.cues.size(), std::size_t{2} + random.below(5));
        std::size_t first = random.below(section.cues.size() - length + 1);
        // A group never cuts a With Previous bundle: widen it to whole bundles,
        // and let a section's first cue start by itself.
        auto follows = [&](std::size_t i) { return section.cues[i].follow == Follow::withPrevious; };
        while (first > 0 && follows(first)) --first, ++length;
        while (first + length < section.cues.size() && follows(first + length)) ++length;
        if (first == 0 && follows(0)) section.cues.edit(0).follow = Follow::manual;
        for (std::size_t i = first; i < first + length; ++i) {
            group.cueIDs.push_back(section.cues[i].id);
            if (random.chance(0.5)) section.cues.edit(i).groupDuration = random.amount(2, 30, 0.5);
        }
        groups.push_back(std::move(group));
    }
    return groups;
}

std::vector<LayerKind> randomLayers(SeededRandom& random) {
    std::vector<LayerKind> layers;
    for (std::size_t i = 0; i < enumCount<LayerKind>(); ++i) {
        if (random.chance(0.7)) layers.push_back(static_cast<LayerKind>(i));
    }
    return layers;
}

std::optional<int> maybeLyricLines(SeededRandom& random) {
    if (!random.chance(0.5)) return std::nullopt;
    return random.between(1, 8); // the range that survives reading unclamped
}

// Logical screens on displays, NDI feeds and placeholders, with looks.
OutputSetup makeOutputs(const BenchmarkShowShape& shape, SeededRandom& random) {
    OutputSetup setup;
    setup.usesLogicalScreens = true;

    static constexpr std::array<std::string_view, 3> lookNames = {"Full", "Lyrics only",
                                                                  "Stage confidence"};
    for (std::string_view name : lookNames) {
        setup.looks.push_back({random.uuid(), std::string(name), randomLayers(random),
                               maybeLyricLines(random)});
    }

    std::vector<Uuid> feedIDs;
    for (int f = 0; f < shape.feedCount; ++f) feedIDs.push_back(random.uuid());

    static constexpr std::array<std::string_view, 4> screenNames = {"Auditorium", "Stage",
                                                                    "Livestream", "Foyer"};
    for (int s = 0; s < shape.screenCount; ++s) {
        LogicalScreen screen;
        screen.id = "screen-" + std::to_string(s + 1);
        const auto index = static_cast<std::size_t>(s);
        screen.name = std::string(screenNames[index % screenNames.size()]);
        if (index >= screenNames.size()) screen.name += " " + std::to_string(s + 1);
        screen.role = static_cast<ScreenRole>(index % enumCount<ScreenRole>());
        // Two displays, then a feed, then a screen not placed yet; and again.
        const int slot = s < 4 ? s : s % 3 + 1;
        if (slot == 2 && !feedIDs.empty()) {
            screen.destination = destination::Ndi{feedIDs[index % feedIDs.size()]};
        } else if (slot == 3) {
            screen.destination = destination::Placeholder{};
        } else {
            screen.destination = destination::Display{"DP-" + std::to_string(s + 1)};
        }
        screen.layers = randomLayers(random);
        screen.lyricLines = maybeLyricLines(random);
        if (random.chance(0.6)) screen.lookID = random.pick(setup.looks).id;
        setup.screens.push_back(std::move(screen));
    }

    for (std::size_t f = 0; f < feedIDs.size(); ++f) {
        NetworkFeed feed;
        feed.id = feedIDs[f];
        feed.name = "VELARION (" + std::string(f == 0 ? "Livestream" : "Recording") + ")";
        feed.layers = randomLayers(random);
        switch (f % 3) {
        case 0: feed.source = feedSource::Screen{setup.screens.front().id}; break;
        case 1: feed.source = feedSource::Audience{}; break;
        default: feed.source = feedSource::Stage{}; break;
        }
        feed.alphaMode = static_cast<NDIAlphaMode>(f % enumCount<NDIAlphaMode>());
        feed.frameRate = f % 2 == 0 ? VideoFrameRate{30000, 1001} : VideoFrameRate{50, 1};
        if (f % 2 == 1) {
            feed.width = 1280;
            feed.height = 720;
        }
        feed.lyricLines = maybeLyricLines(random);
        setup.feeds.push_back(std::move(feed));
    }

    // The older per-display form, still read and written beside the screens.
    setup.audienceDisplayIDs = {"DP-1"};
    setup.confidenceDisplayID = "DP-2";
    setup.screenLayers["DP-1"] = randomLayers(random);
    setup.screenLyricLines["DP-2"] = random.between(1, 8);
    setup.defaultVisualOutputIDs = std::vector<std::string>{setup.screens.front().id};
    return setup;
}

} // namespace

BenchmarkShowShape smallShowShape(std::uint64_t seed) {
    BenchmarkShowShape shape;
    shape.seed = seed;
    shape.sectionCount = 3;
    shape.cueCount = static_cast<int>(coveringRecipes.size()) + 7;
    shape.libraryItemCount = 20;
    shape.songDeckCount = 1;
    shape.slidesPerSongDeck = 5;
    shape.screenCount = 4;
    shape.feedCount = 2;
    shape.cueGroupCount = 2;
    return shape;
}

Show makeBenchmarkShow(const BenchmarkShowShape& shape) {
    if (shape.sectionCount < 1 || shape.cueCount < shape.sectionCount ||
        shape.cueCount < static_cast<int>(coveringRecipes.size()) || shape.screenCount < 1 ||
        shape.feedCount < 0) {
        throw std::invalid_argument("a generated show needs a section, a screen and at least " +
                                    std::to_string(coveringRecipes.size()) +
                                    " cues, no fewer than its sections");
    }
    SeededRandom random(shape.seed);
    GeneratedLibrary library = makeLibrary(shape, random);
    OutputSetup outputs = makeOutputs(shape, random);
    std::vector<std::string> screenIDs;
    for (const LogicalScreen& screen : outputs.screens) screenIDs.push_back(screen.id);

    CueContext context{random, library.index, screenIDs, {}};
    std::vector<Section> sections = makeSections(shape, context);
    std::vector<CueGroup> groups = makeGroups(shape, sections, random);

    Show show;
    show.id = random.uuid();
    show.title = "Sunday Service – Pentecost / Pfingstgottesdienst";
    show.subtitle = "Main auditorium, 10:00 · ☀";
    for (Section& section : sections) show.sections.emplace_back(std::move(section));
    show.library.items() = std::move(library.items);
    show.outputs = std::move(outputs);
    show.audio.houseDeviceID = "alsa_output.pci-0000_00_1f.3.analog-stereo";
    show.audio.headphonesDeviceID = "alsa_output.usb-Focusrite_Scarlett_2i2-00.analog-stereo";
    show.audio.houseLevel = 0.8;
    show.audio.newSoundFadesOld = true;
    show.holding = {random.pick(library.index.images), "Welcome", "We begin at 10:00"};
    show.slideDissolve = 0.3;
    if (!groups.empty()) show.cueGroups = std::move(groups);
    return show;
}

} // namespace velarion::bench
