#include "LiveModel/ShowTemplate.h"

#include "LiveModel/SlideTemplate.h"
#include "LiveModel/TextTrimming.h"

namespace velarion {

namespace {

// Every timer a template makes turns to warning two minutes before its end.
constexpr double templateWarnAtSeconds = 120;

Cue makeCue(std::string name, CueKind kind) {
    Cue cue;
    cue.id = Uuid::random();
    cue.name = std::move(name);
    cue.kind = std::move(kind);
    return cue;
}

Cue timerCue(std::string name, std::optional<double> seconds = std::nullopt) {
    TimerCue timer;
    if (seconds)
        timer.mode = CountdownMode{*seconds};
    timer.warnAt = templateWarnAtSeconds;
    return makeCue(std::move(name), timer);
}

Section makeSection(std::string title, std::vector<Cue> cues = {}) {
    Section section;
    section.id = Uuid::random();
    section.title = std::move(title);
    section.cues = std::move(cues);
    return section;
}

// Adds a deck of made slides to the library and gives the cue that shows it.
// Its pages are drawn later, from the made list, like any edited deck.
Cue madeDeckCue(Show& show, std::string name, std::vector<MadeSlide> slides) {
    MediaItem item;
    item.id = Uuid::random();
    item.kind = MediaKind::deck;
    item.name = name;
    item.fileName = std::string(MediaItem::madeFileName);
    DeckInfo deck;
    deck.source = "Velarion";
    deck.made = std::move(slides);
    item.deck = std::move(deck);
    show.library.push_back(item.applyingPresentationBackground());
    return makeCue(std::move(name), SlidesCue{item.id});
}

void addPresentation(Show& show) {
    using slideTemplate::makeSlide;
    Cue welcome = madeDeckCue(show, "Welcome", {makeSlide(SlideTemplate::title, show.title, "")});
    Cue presentation =
        madeDeckCue(show, "Presentation",
                    {makeSlide(SlideTemplate::title, "Your presentation", "Title and speaker"),
                     makeSlide(SlideTemplate::titleAndText, "Key points",
                               "First point\nSecond point\nThird point"),
                     makeSlide(SlideTemplate::statement, "", "Questions?")});
    Cue closing =
        madeDeckCue(show, "Closing",
                    {makeSlide(SlideTemplate::thankYou, "Thank you", "We're glad you joined us")});
    show.sections = {makeSection("Welcome", {std::move(welcome)}),
                     makeSection("Presentations", {std::move(presentation)}),
                     makeSection("Closing", {std::move(closing)})};
}

void addConference(Show& show) {
    // The break notice is for the room, not for the speaker.
    MessageCue backSoon{"Back in 10 minutes", MessageTarget::audience};
    show.sections = {
        makeSection("Doors", {timerCue("Doors countdown")}),
        makeSection("Opening"),
        makeSection("Keynote",
                    {timerCue("Speaker timer", 1200), makeCue("Back soon", std::move(backSoon))}),
        makeSection("Break", {timerCue("Break countdown", 600)}),
        makeSection("Closing"),
    };
}

void addPanel(Show& show) {
    show.sections = {
        makeSection("Walk-on"),
        makeSection("Introductions"),
        makeSection("Discussion", {timerCue("Panel timer", 2400)}),
        makeSection("Q&A", {timerCue("Q&A timer", 900)}),
    };
}

void addAwards(Show& show) {
    show.sections = {makeSection("Opening"), makeSection("Category 1"), makeSection("Category 2"),
                     makeSection("Category 3"), makeSection("Finale")};
}

} // namespace

std::string_view showTemplate::name(ShowTemplate showTemplate) {
    constexpr std::string_view names[] = {"Blank", "Presentation", "Conference", "Panel discussion",
                                          "Awards night"};
    return names[static_cast<int>(showTemplate)];
}

std::string_view showTemplate::summary(ShowTemplate showTemplate) {
    constexpr std::string_view summaries[] = {
        "One empty section.",
        "Start in Present with editable welcome, presentation, and closing slides.",
        "Doors, opening, keynote, break, and closing, with countdowns.",
        "Walk-on, introductions, discussion, and Q&A.",
        "Opening, categories with walk-ons, and a finale.",
    };
    return summaries[static_cast<int>(showTemplate)];
}

Show showTemplate::make(ShowTemplate showTemplate, std::string_view title) {
    Show show;
    show.id = Uuid::random();
    show.title = trimmingWhitespace(title);
    if (show.title.empty())
        show.title = "Untitled show";
    switch (showTemplate) {
    case ShowTemplate::blank:
        show.sections = {makeSection("Run of show")};
        break;
    case ShowTemplate::presentation:
        addPresentation(show);
        break;
    case ShowTemplate::conference:
        addConference(show);
        break;
    case ShowTemplate::panel:
        addPanel(show);
        break;
    case ShowTemplate::awards:
        addAwards(show);
        break;
    }
    return show;
}

} // namespace velarion
