// Songs: parsing pasted lyrics into a song and drawing its slides, and
// redrawing a song deck after the operator changed one word. Both run while
// the operator types in the lyrics sheet and, for a live song, while the
// audience watches, so they must stay far below a frame.
//
// The song is 120 lyric lines under headings, with credits, repeats and slide
// breaks, made from a seed so that every run draws the same song.

#include "GeneratedText.h"
#include "LiveModel/SongRedraw.h"

#include <benchmark/benchmark.h>
#include <string>
#include <utility>
#include <vector>

namespace velarion::bench {

namespace {

// The word the one-word change replaces: the chorus's first.
constexpr const char* changedWordMarker = "Chorus]\n";

// The same text with the first word of the chorus replaced.
std::string withOneWordChanged(std::string text) {
    const std::size_t chorus = text.find(changedWordMarker) + std::string(changedWordMarker).size();
    const std::size_t wordEnd = text.find_first_of(" \n", chorus);
    text.replace(chorus, wordEnd - chorus, "Hallelujah");
    return text;
}

const std::string& originalText() {
    static const std::string text = songLyrics();
    return text;
}

MediaItem songDeck(const Song& song) {
    MediaItem item;
    item.id = Uuid::random();
    item.kind = MediaKind::deck;
    item.name = song.title;
    item.fileName = std::string(MediaItem::madeFileName);
    return updatingSong(item, song);
}

// The operator's touch: every fifth slide's lyrics recoloured, and two slides
// of their own in the deck.
MediaItem handEdited(MediaItem item) {
    std::vector<MadeSlide>& slides = *item.deck->made;
    for (std::size_t i = 0; i < slides.size(); i += 5)
        slides[i].boxes->front().color = 0xFFD700;
    for (std::size_t at : {std::size_t{3}, slides.size() / 2}) {
        MadeSlide own;
        own.id = Uuid::random();
        own.layout = MadeSlide::Layout::statement;
        own.text = "Offering";
        slides.insert(slides.begin() + static_cast<std::ptrdiff_t>(at), std::move(own));
    }
    return item;
}

void counters(benchmark::State& state, const Song& song, std::size_t slideCount) {
    state.counters["lyricLines"] = 120;
    state.counters["sections"] = static_cast<double>(song.sections.size());
    state.counters["slides"] = static_cast<double>(slideCount);
}

void parseBenchmark(benchmark::State& state) {
    const int linesPerSlide = static_cast<int>(state.range(0));
    for (auto _ : state) {
        Song song = Song::parsing(originalText(), LyricLook::overBackground, linesPerSlide);
        benchmark::DoNotOptimize(song.sections.data());
    }
    const Song song = Song::parsing(originalText(), LyricLook::overBackground, linesPerSlide);
    counters(state, song, song.madeSlides().size());
}

void parseAndMakeSlidesBenchmark(benchmark::State& state) {
    const int linesPerSlide = static_cast<int>(state.range(0));
    std::size_t slideCount = 0;
    for (auto _ : state) {
        const Song song = Song::parsing(originalText(), LyricLook::overBackground, linesPerSlide);
        std::vector<MadeSlide> slides = song.madeSlides();
        slideCount = slides.size();
        benchmark::DoNotOptimize(slides.data());
    }
    counters(state, Song::parsing(originalText(), LyricLook::overBackground, linesPerSlide),
             slideCount);
}

// updatingSong alone, with the changed song already parsed.
void redrawBenchmark(benchmark::State& state, bool withHandEdits) {
    const int linesPerSlide = static_cast<int>(state.range(0));
    const Song original = Song::parsing(originalText(), LyricLook::overBackground, linesPerSlide);
    const Song changed =
        Song::parsing(withOneWordChanged(originalText()), LyricLook::overBackground, linesPerSlide);
    MediaItem item = songDeck(original);
    if (withHandEdits)
        item = handEdited(std::move(item));
    std::size_t slideCount = 0;
    for (auto _ : state) {
        MediaItem redrawn = updatingSong(item, changed);
        slideCount = redrawn.deck->made->size();
        benchmark::DoNotOptimize(redrawn.deck->made->data());
    }
    counters(state, changed, slideCount);
}

void redrawUntouchedBenchmark(benchmark::State& state) {
    redrawBenchmark(state, false);
}
void redrawHandEditedBenchmark(benchmark::State& state) {
    redrawBenchmark(state, true);
}

// What the lyrics sheet does on a change: parse the new text, then redraw.
void parseAndRedrawBenchmark(benchmark::State& state) {
    const int linesPerSlide = static_cast<int>(state.range(0));
    const std::string changedText = withOneWordChanged(originalText());
    const MediaItem item = handEdited(
        songDeck(Song::parsing(originalText(), LyricLook::overBackground, linesPerSlide)));
    std::size_t slideCount = 0;
    for (auto _ : state) {
        MediaItem redrawn = updatingSong(
            item, Song::parsing(changedText, LyricLook::overBackground, linesPerSlide));
        slideCount = redrawn.deck->made->size();
        benchmark::DoNotOptimize(redrawn.deck->made->data());
    }
    counters(state, *item.song, slideCount);
}

} // namespace

BENCHMARK(parseBenchmark)->Name("Song/parse")->Arg(2)->Arg(4)->Unit(benchmark::kMicrosecond);
BENCHMARK(parseAndMakeSlidesBenchmark)
    ->Name("Song/parseAndMakeSlides")
    ->Arg(2)
    ->Arg(4)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(redrawUntouchedBenchmark)
    ->Name("Song/redrawAfterOneWord")
    ->Arg(2)
    ->Arg(4)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(redrawHandEditedBenchmark)
    ->Name("Song/redrawAfterOneWordWithHandEdits")
    ->Arg(2)
    ->Arg(4)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(parseAndRedrawBenchmark)
    ->Name("Song/parseAndRedrawAfterOneWord")
    ->Arg(2)
    ->Arg(4)
    ->Unit(benchmark::kMicrosecond);

} // namespace velarion::bench

BENCHMARK_MAIN();
