// Show templates: what each one starts a document with, that every one is a
// sound show, and that it survives being written and read back.

#include "LiveModel/ShowTemplate.h"

#include "LiveModel/ShowJson.h"

#include <gtest/gtest.h>

#include <set>

namespace velarion {
namespace {

std::vector<ShowTemplate> allTemplates() {
    std::vector<ShowTemplate> templates;
    for (std::size_t i = 0; i < enumCount<ShowTemplate>(); ++i) {
        templates.push_back(static_cast<ShowTemplate>(i));
    }
    return templates;
}

std::vector<std::string> sectionTitles(const Show& show) {
    std::vector<std::string> titles;
    for (const Section& section : show.sections)
        titles.push_back(section.title);
    return titles;
}

std::vector<std::string> cueNames(const Section& section) {
    std::vector<std::string> names;
    for (const Cue& cue : section.cues)
        names.push_back(cue.name);
    return names;
}

double countdownSeconds(const Cue& cue) {
    return std::get<CountdownMode>(std::get<TimerCue>(cue.kind).mode).seconds;
}

// The texts of a template deck's slides, box by box.
std::vector<std::vector<std::string>> slideTexts(const Show& show, const Cue& cue) {
    const MediaItem* item = show.media(std::get<SlidesCue>(cue.kind).deckID);
    std::vector<std::vector<std::string>> texts;
    if (!item || !item->deck || !item->deck->made)
        return texts;
    for (const MadeSlide& slide : *item->deck->made) {
        std::vector<std::string> boxes;
        for (const TextBox& box : slide.effectiveBoxes())
            boxes.push_back(box.text);
        texts.push_back(std::move(boxes));
    }
    return texts;
}

TEST(ShowTemplate, EveryTemplateMakesASoundShowThatSurvivesJson) {
    for (ShowTemplate showTemplate : allTemplates()) {
        SCOPED_TRACE(std::string(toString(showTemplate)));
        const Show show = showTemplate::make(showTemplate, "Launch");
        EXPECT_EQ(show.formatVersion, Show::currentFormatVersion);
        EXPECT_FALSE(show.sections.empty());

        std::set<Uuid> ids{show.id};
        std::size_t idCount = 1;
        for (const Section& section : show.sections) {
            ids.insert(section.id);
            ++idCount;
            for (const Cue& cue : section.cues) {
                ids.insert(cue.id);
                ++idCount;
                if (const auto* timer = std::get_if<TimerCue>(&cue.kind)) {
                    EXPECT_EQ(timer->warnAt, 120);
                }
                if (const auto deckID = cueKind::mediaID(cue.kind)) {
                    const MediaItem* item = show.media(*deckID);
                    ASSERT_NE(item, nullptr) << cue.name;
                    EXPECT_EQ(item->kind, MediaKind::deck);
                    EXPECT_EQ(item->fileName, "made");
                    ASSERT_TRUE(item->deck && item->deck->made);
                    EXPECT_EQ(item->deck->source, "Velarion");
                    EXPECT_FALSE(item->deck->made->empty());
                    EXPECT_EQ(item->deck->background,
                              Backdrop(backdrop::BuiltIn{BuiltInBackdrop::drift}));
                    EXPECT_EQ(item->deck->backgroundCoveringPageCount(), 0);
                    // Pages come from drawing the made list, which hasn't happened yet.
                    EXPECT_FALSE(item->deck->hasLegacyNativePages());
                }
            }
        }
        for (const MediaItem& item : show.library) {
            ids.insert(item.id);
            ++idCount;
            for (const MadeSlide& slide : *item.deck->made) {
                ids.insert(slide.id);
                ++idCount;
            }
        }
        EXPECT_EQ(ids.size(), idCount) << "every identity is new and distinct";

        EXPECT_EQ(decodeShow(encodeShow(show)), show);
    }
}

TEST(ShowTemplate, TitleIsTrimmedAndNeverEmpty) {
    EXPECT_EQ(showTemplate::make(ShowTemplate::blank, "  Easter Sunday \n").title, "Easter Sunday");
    EXPECT_EQ(showTemplate::make(ShowTemplate::blank, " \t").title, "Untitled show");
    EXPECT_EQ(showTemplate::make(ShowTemplate::blank, "").title, "Untitled show");
    const Show a = showTemplate::make(ShowTemplate::awards, "A");
    const Show b = showTemplate::make(ShowTemplate::awards, "A");
    EXPECT_NE(a.id, b.id);
    EXPECT_NE(a.sections[0].id, b.sections[0].id);
}

TEST(ShowTemplate, SectionsAndTimersOfTheTemplatesWithoutDecks) {
    using Names = std::vector<std::string>;
    const Show blank = showTemplate::make(ShowTemplate::blank, "x");
    EXPECT_EQ(sectionTitles(blank), Names{"Run of show"});
    EXPECT_TRUE(blank.allCues().empty());
    const Show awards = showTemplate::make(ShowTemplate::awards, "x");
    EXPECT_EQ(sectionTitles(awards),
              (Names{"Opening", "Category 1", "Category 2", "Category 3", "Finale"}));
    EXPECT_TRUE(awards.allCues().empty());

    const Show panel = showTemplate::make(ShowTemplate::panel, "x");
    EXPECT_EQ(sectionTitles(panel), (Names{"Walk-on", "Introductions", "Discussion", "Q&A"}));
    EXPECT_EQ(cueNames(panel.sections[2]), Names{"Panel timer"});
    EXPECT_EQ(countdownSeconds(panel.sections[2].cues[0]), 2400);
    EXPECT_EQ(cueNames(panel.sections[3]), Names{"Q&A timer"});
    EXPECT_EQ(countdownSeconds(panel.sections[3].cues[0]), 900);

    const Show conference = showTemplate::make(ShowTemplate::conference, "x");
    EXPECT_EQ(sectionTitles(conference),
              (Names{"Doors", "Opening", "Keynote", "Break", "Closing"}));
    EXPECT_EQ(cueNames(conference.sections[0]), Names{"Doors countdown"});
    EXPECT_TRUE(std::holds_alternative<TimerCue>(conference.sections[0].cues[0].kind));
    EXPECT_EQ(cueNames(conference.sections[2]), (Names{"Speaker timer", "Back soon"}));
    EXPECT_EQ(countdownSeconds(conference.sections[2].cues[0]), 1200);
    EXPECT_EQ(std::get<MessageCue>(conference.sections[2].cues[1].kind).text,
              "Back in 10 minutes");
    EXPECT_EQ(cueNames(conference.sections[3]), Names{"Break countdown"});
    EXPECT_EQ(countdownSeconds(conference.sections[3].cues[0]), 600);
    EXPECT_EQ(conference.allCues().size(), 4u);
}

TEST(ShowTemplate, PresentationDecksHoldEditableSlides) {
    using Texts = std::vector<std::vector<std::string>>;
    const Show show = showTemplate::make(ShowTemplate::presentation, " Product launch ");
    EXPECT_EQ(sectionTitles(show),
              (std::vector<std::string>{"Welcome", "Presentations", "Closing"}));
    EXPECT_EQ(show.library.size(), 3u);
    for (const Section& section : show.sections)
        ASSERT_EQ(section.cues.size(), 1u);

    // The welcome slide greets with the show's own title.
    EXPECT_EQ(slideTexts(show, show.sections[0].cues[0]), (Texts{{"Product launch", ""}}));
    EXPECT_EQ(slideTexts(show, show.sections[1].cues[0]),
              (Texts{{"Your presentation", "Title and speaker"},
                     {"Key points", "First point\nSecond point\nThird point"},
                     {"Questions?"}}));
    EXPECT_EQ(slideTexts(show, show.sections[2].cues[0]),
              (Texts{{"Thank you", "We're glad you joined us"}}));

    // Editable means free boxes: the editor changes them without converting.
    for (const MediaItem& item : show.library) {
        for (const MadeSlide& slide : *item.deck->made) {
            EXPECT_TRUE(slide.boxes.has_value());
            EXPECT_TRUE(slide.title.empty() && slide.text.empty());
        }
    }
}

} // namespace
} // namespace velarion
