// Show templates: every one is a sound show that survives being written and
// read back, with new identities each time.

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

TEST(ShowTemplate, TheWelcomeSlideGreetsWithTheShowsTitleInFreeBoxes) {
    const Show show = showTemplate::make(ShowTemplate::presentation, " Product launch ");
    EXPECT_EQ(slideTexts(show, show.sections[0].cues[0]),
              (std::vector<std::vector<std::string>>{{"Product launch", ""}}));
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
