// Show templates: every one is a sound show that survives being written and
// read back, with new identities each time.

#include "LiveModel/ShowTemplate.h"

#include "LiveModel/ShowJson.h"

#include <gtest/gtest.h>

#include <set>

namespace velarion {
namespace {

TEST(ShowTemplate, EveryTemplateMakesASoundShowThatSurvivesJson) {
    for (std::size_t i = 0; i < enumCount<ShowTemplate>(); ++i) {
        const auto showTemplate = static_cast<ShowTemplate>(i);
        SCOPED_TRACE(std::string(toString(showTemplate)));
        const Show show = showTemplate::make(showTemplate, "Launch");
        EXPECT_FALSE(show.sections.empty());

        std::set<Uuid> ids{show.id};
        std::size_t idCount = 1;
        auto count = [&](const Uuid& id) { ids.insert(id), ++idCount; };
        for (const Section& section : show.sections) {
            count(section.id);
            for (const Cue& cue : section.cues) {
                count(cue.id);
                if (const auto deckID = cueKind::mediaID(cue.kind)) {
                    const MediaItem* item = show.media(*deckID);
                    ASSERT_TRUE(item && item->deck && item->deck->made) << cue.name;
                    EXPECT_FALSE(item->deck->made->empty());
                }
            }
        }
        for (const MediaItem& item : show.library) {
            count(item.id);
            for (const MadeSlide& slide : *item.deck->made) {
                count(slide.id);
                // Editable means free boxes: the editor changes them without converting.
                EXPECT_TRUE(slide.boxes.has_value());
            }
        }
        EXPECT_EQ(ids.size(), idCount) << "every identity is new and distinct";
        EXPECT_EQ(decodeShow(encodeShow(show)), show);
    }
}

} // namespace
} // namespace velarion
