#include "LibraryGenerator.h"

#include "GeneratedText.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

namespace velarion::bench {

namespace {

enum class Slot { video, image, sound, deck, songDeck };

constexpr std::array<std::string_view, 6> bins = {"Walk-in", "Worship", "Sermon",
                                                  "Kids",    "Notices", "Stings"};

std::optional<std::string> maybeBin(SeededRandom& random) {
    if (!random.chance(0.3)) return std::nullopt;
    return std::string(bins[random.below(bins.size())]);
}

int randomColor(SeededRandom& random) { return static_cast<int>(random.next() & 0xFFFFFF); }

TextBox makeTextBox(SeededRandom& random, std::string text) {
    TextBox box;
    box.id = random.uuid();
    box.text = std::move(text);
    box.x = random.amount(0.0, 0.2, 0.01);
    box.y = random.amount(0.05, 0.6, 0.01);
    box.width = random.amount(0.6, 1.0 - box.x, 0.01);
    box.height = random.amount(0.1, 0.35, 0.01);
    if (random.chance(0.4)) box.font = random.chance(0.5) ? "Source Sans 3" : "Noto Serif";
    box.size = random.amount(36, 96, 2);
    box.bold = random.chance(0.3);
    if (random.chance(0.5)) box.color = randomColor(random);
    box.align = static_cast<TextAlign>(random.below(enumCount<TextAlign>()));
    box.bullets = random.chance(0.05);
    return box;
}

MediaItem makeFileItem(MediaKind kind, SeededRandom& random) {
    MediaItem item;
    item.id = random.uuid();
    item.kind = kind;
    item.name = titleText(random, 1, 4);
    item.bin = maybeBin(random);
    switch (kind) {
    case MediaKind::video:
        if (random.chance(0.03)) {
            // A live network input rather than a file.
            item.ndiSource = NDISource{"CAMERA-" + std::to_string(random.between(1, 9)) +
                                           " (Stage Cam)",
                                       std::nullopt};
            if (random.chance(0.5)) item.ndiSource->url = "192.168.10.41:5961";
            break;
        }
        item.fileName = "Video/" + fileStem(random);
        item.fileName += random.chance(0.7) ? ".mp4" : ".mov";
        item.duration = random.amount(4, 900, 0.001);
        if (random.chance(0.4)) item.posterSeconds = random.amount(0, *item.duration, 0.04);
        break;
    case MediaKind::image:
        item.fileName = "Images/" + fileStem(random);
        item.fileName += random.chance(0.6) ? ".jpg" : ".png";
        break;
    case MediaKind::audio:
        item.fileName = "Audio/" + fileStem(random);
        item.fileName += random.chance(0.5) ? ".m4a" : ".wav";
        item.duration = random.amount(1, 420, 0.001);
        break;
    case MediaKind::deck: break;
    }
    return item;
}

// Pages exported from a presentation or PDF.
MediaItem makeImportedDeck(SeededRandom& random, const LibraryIndex& library) {
    MediaItem item;
    item.id = random.uuid();
    item.kind = MediaKind::deck;
    item.name = titleText(random, 1, 4);
    const std::string stem = fileStem(random);
    item.fileName = "Decks/" + stem + ".pdf";
    item.bin = maybeBin(random);
    DeckInfo deck;
    deck.source = stem + (random.chance(0.6) ? ".pptx" : ".pdf");
    const int pageCount = random.between(3, 30);
    for (int page = 1; page <= pageCount; ++page) {
        deck.pages.push_back("Decks/" + stem + "/page-" + std::to_string(page) + ".png");
        deck.notes.push_back(random.chance(0.4) ? noteText(random) : std::string());
    }
    for (int first = 0; first < pageCount; first += random.between(4, 12)) {
        deck.groups.push_back({titleText(random, 1, 2), first});
    }
    if (random.chance(0.3)) deck.background = makeBackdrop(random.below(4), random, library);
    item.deck = std::move(deck);
    return item;
}

// Slides made inside the application: announcements, titles, statements.
MediaItem makeMadeDeck(SeededRandom& random, const LibraryIndex& library) {
    MediaItem item;
    item.id = random.uuid();
    item.kind = MediaKind::deck;
    item.name = titleText(random, 1, 3);
    item.fileName = std::string(MediaItem::madeFileName);
    DeckInfo deck;
    deck.source = "Velarion";
    std::vector<MadeSlide> slides;
    const int slideCount = random.between(2, 10);
    for (int i = 0; i < slideCount; ++i) {
        MadeSlide slide;
        slide.id = random.uuid();
        slide.layout = static_cast<MadeSlideLayout>(random.below(enumCount<MadeSlideLayout>()));
        slide.title = titleText(random, 1, 5);
        slide.text = random.chance(0.6) ? noteText(random) : std::string();
        slide.color = randomColor(random);
        if (random.chance(0.3)) slide.imageID = random.pick(library.images);
        slide.notes = random.chance(0.3) ? noteText(random) : std::string();
        if (random.chance(0.5)) {
            slide.boxes = std::vector<TextBox>{makeTextBox(random, slide.title)};
            if (random.chance(0.5)) slide.boxes->push_back(makeTextBox(random, noteText(random)));
        }
        if (random.chance(0.1)) slide.isClear = true;
        if (random.chance(0.1)) slide.importedPage = "page-" + std::to_string(i + 1) + ".png";
        slides.push_back(std::move(slide));
        deck.notes.push_back(slides.back().notes);
    }
    deck.made = std::move(slides);
    if (random.chance(0.5)) deck.background = makeBackdrop(random.below(4), random, library);
    item.deck = std::move(deck);
    return item;
}

Song makeSong(SeededRandom& random, int linesPerSlide) {
    Song song;
    song.title = titleText(random, 2, 5);
    song.author = personName(random);
    if (random.chance(0.5)) song.author += " & " + personName(random);
    song.copyright = "© " + std::to_string(random.between(1990, 2025)) + " ";
    song.copyright += titleText(random, 1, 2) + " Music";
    song.ccli = std::to_string(random.between(1000000, 7999999));
    static constexpr std::array<std::string_view, 6> sectionNames = {
        "Verse 1", "Chorus", "Verse 2", "Bridge", "Verse 3", "Tag"};
    const int sectionCount = random.between(3, 6);
    for (int s = 0; s < sectionCount; ++s) {
        SongSection section{random.uuid(), std::string(sectionNames[s]), {}};
        const int pages = random.between(1, 3);
        for (int page = 0; page < pages; ++page) {
            if (page > 0) section.text += "\n\n";
            for (int line = 0; line < linesPerSlide; ++line) {
                if (line > 0) section.text += '\n';
                section.text += lyricLine(random);
            }
        }
        song.sections.push_back(std::move(section));
    }
    // Verse, chorus, verse, chorus, … with the chorus repeated at the end.
    const Uuid chorus = song.sections[1].id;
    for (int s = 0; s < sectionCount; ++s) {
        if (s == 1) continue;
        song.order.push_back(song.sections[s].id);
        song.order.push_back(chorus);
    }
    song.order.push_back(chorus);
    song.look = static_cast<LyricLook>(random.below(enumCount<LyricLook>()));
    song.linesPerSlide = linesPerSlide;
    song.showsCredits = random.chance(0.8);
    return song;
}

// A section's slides: its text split at blank lines.
std::vector<std::string> pagesOf(const SongSection& section) {
    std::vector<std::string> pages;
    std::size_t start = 0;
    for (std::size_t at = section.text.find("\n\n"); at != std::string::npos;
         at = section.text.find("\n\n", start)) {
        pages.push_back(section.text.substr(start, at - start));
        start = at + 2;
    }
    pages.push_back(section.text.substr(start));
    return pages;
}

// Lyric slides made from the song in sung order, repeating the order until
// the deck holds `slideCount` slides, each remembering how it was generated.
MediaItem makeSongDeck(SeededRandom& random, const LibraryIndex& library, int slideCount) {
    MediaItem item;
    item.id = random.uuid();
    item.kind = MediaKind::deck;
    item.fileName = std::string(MediaItem::madeFileName);
    item.bin = "Songs";
    Song song = makeSong(random, random.between(2, 4));
    item.name = song.title;

    DeckInfo deck;
    deck.source = "Velarion";
    std::vector<MadeSlide> slides;
    std::vector<int> occurrences(song.sections.size(), 0);
    const int color = randomColor(random);
    for (std::size_t step = 0; static_cast<int>(slides.size()) < slideCount; ++step) {
        const Uuid& sectionID = song.order[step % song.order.size()];
        const auto found = std::find_if(song.sections.begin(), song.sections.end(),
                                        [&](const SongSection& s) { return s.id == sectionID; });
        const auto sectionIndex = static_cast<std::size_t>(found - song.sections.begin());
        const SongSection& section = *found;
        if (step % song.order.size() == 0) {
            deck.groups.push_back({section.name, static_cast<int>(slides.size())});
        }
        const std::vector<std::string> pages = pagesOf(section);
        for (std::size_t page = 0;
             page < pages.size() && static_cast<int>(slides.size()) < slideCount; ++page) {
            MadeSlide slide;
            slide.id = random.uuid();
            slide.layout = MadeSlideLayout::statement;
            slide.color = color;
            slide.sectionName = section.name;
            const std::string& text = pages[page];
            std::vector<TextBox> boxes{makeTextBox(random, text)};
            if (song.showsCredits && page == 0) {
                boxes.push_back(makeTextBox(random, song.title + " — " + song.author));
            }
            slide.text = text;
            slide.boxes = boxes;
            if (random.chance(0.2)) slide.sectionNames = std::vector<std::string>{section.name};
            LyricSlideSource source;
            source.id = slide.id;
            source.sectionID = section.id;
            source.occurrence = occurrences[sectionIndex];
            source.page = static_cast<int>(page);
            source.baseline = {color, false, {}, section.name, std::move(boxes)};
            // Now and then the operator has since retouched the slide.
            if (random.chance(0.1)) slide.boxes->front().size += 4;
            slide.lyricSource = std::move(source);
            slides.push_back(std::move(slide));
            deck.notes.emplace_back();
        }
        ++occurrences[sectionIndex];
    }
    if (random.chance(0.2)) {
        deck.lyricSources = std::vector<LyricSlideSource>{*slides.front().lyricSource};
    }
    deck.made = std::move(slides);
    deck.background = makeBackdrop(random.below(4), random, library);
    item.deck = std::move(deck);
    item.song = std::move(song);
    return item;
}

} // namespace

Backdrop makeBackdrop(std::size_t caseIndex, SeededRandom& random, const LibraryIndex& library) {
    switch (caseIndex % std::variant_size_v<Backdrop>) {
    case 0: return backdrop::Color{randomColor(random)};
    case 1: return backdrop::Media{random.pick(library.images)};
    case 2:
        return backdrop::BuiltIn{
            static_cast<BuiltInBackdrop>(random.below(enumCount<BuiltInBackdrop>()))};
    default: return backdrop::None{};
    }
}

GeneratedLibrary makeLibrary(const BenchmarkShowShape& shape, SeededRandom& random) {
    const int songDecks = std::max(shape.songDeckCount, 0);
    const int files = shape.libraryItemCount - songDecks;
    // About one in twenty of the rest are imported or made decks.
    const int otherDecks = std::max(1, files / 20);
    const int videos = (files - otherDecks) * 35 / 100;
    const int images = (files - otherDecks) * 35 / 100;
    const int sounds = files - otherDecks - videos - images;
    if (videos < 1 || images < 1 || sounds < 1) {
        throw std::invalid_argument("a generated show needs room for at least one video, image, "
                                    "sound and deck besides its song decks");
    }

    // Files first so that decks, backdrops and cues can point at them; the
    // library itself lists everything in a mixed, import-like order.
    std::vector<Slot> slots;
    slots.insert(slots.end(), static_cast<std::size_t>(videos), Slot::video);
    slots.insert(slots.end(), static_cast<std::size_t>(images), Slot::image);
    slots.insert(slots.end(), static_cast<std::size_t>(sounds), Slot::sound);
    slots.insert(slots.end(), static_cast<std::size_t>(otherDecks), Slot::deck);
    slots.insert(slots.end(), static_cast<std::size_t>(songDecks), Slot::songDeck);

    GeneratedLibrary library;
    std::vector<MediaItem> items;
    items.reserve(slots.size());
    for (Slot slot : slots) {
        switch (slot) {
        case Slot::video:
            items.push_back(makeFileItem(MediaKind::video, random));
            library.index.videos.push_back(items.back().id);
            break;
        case Slot::image:
            items.push_back(makeFileItem(MediaKind::image, random));
            library.index.images.push_back(items.back().id);
            break;
        case Slot::sound:
            items.push_back(makeFileItem(MediaKind::audio, random));
            library.index.sounds.push_back(items.back().id);
            break;
        case Slot::deck:
            items.push_back(random.chance(0.5) ? makeImportedDeck(random, library.index)
                                               : makeMadeDeck(random, library.index));
            break;
        case Slot::songDeck:
            items.push_back(
                makeSongDeck(random, library.index, std::max(shape.slidesPerSongDeck, 1)));
            break;
        }
        if (items.back().kind == MediaKind::deck) {
            const DeckInfo& deck = *items.back().deck;
            const auto slides = deck.made ? deck.made->size() : deck.pages.size();
            library.index.decks.push_back({items.back().id, static_cast<int>(slides)});
        }
    }

    for (std::size_t i = items.size(); i > 1; --i) std::swap(items[i - 1], items[random.below(i)]);
    library.items.reserve(items.size());
    for (MediaItem& item : items) library.items.emplace_back(std::move(item));
    return library;
}

} // namespace velarion::bench
