// Random edits, valid and refused, through an edit history with undo and
// redo mixed in. After every step a refused edit changed nothing, the show
// passed in never changed and every group still validates; at the end undo
// leads back to the start and redo forward to the end.

#include "LiveModel/CueGroups.h"
#include "LiveModel/EditHistory.h"

#include <gtest/gtest.h>
#include <random>

namespace velarion {
namespace {

class RandomEdits {
public:
    explicit RandomEdits(std::uint64_t seed) : random_(seed) {}

    int below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random_); }
    bool chance(double p) { return std::bernoulli_distribution(p)(random_); }

    // Mostly aimed at things that exist, sometimes at things that don't.
    ShowEdit edit(const Show& show) {
        const int count = static_cast<int>(show.sections.size());
        switch (below(12)) {
        case 0: return edit::SetTitle{name(), name()};
        case 1: return edit::AddSection{section(show), below(count + 3) - 1};
        case 2: return edit::RenameSection{sectionID(show), name()};
        case 3: return edit::DeleteSection{sectionID(show)};
        case 4: return edit::MoveSection{sectionID(show), below(count + 3) - 1};
        case 5: return edit::InsertCue{cue(show), sectionID(show), cueID(show)};
        case 6: {
            const Cue* stored = show.cue(cueID(show));
            Cue changed = stored != nullptr ? *stored : cue(show);
            changed.follow = static_cast<Follow>(below(3));
            return edit::UpdateCue{changed};
        }
        case 7: return edit::DeleteCue{cueID(show)};
        case 8: return edit::MoveCue{cueID(show), sectionID(show), below(8) - 1};
        case 9: return edit::AddMedia{item()};
        case 10: return edit::RemoveMedia{mediaID(show)};
        default: return edit::CreateCueGroup{group(show)};
        }
    }

    Show show() {
        Show show;
        show.id = newID();
        for (int n = 2 + below(4); n > 0; --n) show.library.emplace_back(item());
        for (int n = 1 + below(4); n > 0; --n) show.sections.emplace_back(section(show));
        return show;
    }

private:
    Uuid newID() {
        Uuid id;
        for (auto& byte : id.bytes) byte = static_cast<std::uint8_t>(random_());
        return id;
    }
    std::string name() { return std::array{"Welcome", "Song", "  ", "Sermon"}[below(4)]; }
    template <class List> const typename List::value_type* pick(const List& items) {
        return items.empty() ? nullptr
                             : &items[static_cast<std::size_t>(below(static_cast<int>(items.size())))];
    }
    Uuid cueID(const Show& show) {
        const auto all = show.allCues();
        return all.empty() || chance(0.15) ? newID() : (*pick(all))->id;
    }
    Uuid sectionID(const Show& show) {
        return show.sections.empty() || chance(0.15) ? newID() : pick(show.sections)->id;
    }
    Uuid mediaID(const Show& show) {
        return show.library.empty() || chance(0.15) ? newID() : pick(show.library)->id;
    }
    MediaItem item() {
        MediaItem item;
        item.id = newID();
        item.kind = chance(0.5) ? MediaKind::video : MediaKind::audio;
        item.name = name();
        item.fileName = "Media/" + item.id.text();
        return item;
    }
    Cue cue(const Show& show) {
        Cue cue;
        cue.id = newID();
        cue.name = name();
        cue.follow = static_cast<Follow>(below(3));
        const MediaItem* item = pick(show.library);
        if (item != nullptr && chance(0.7))
            cue.kind = AudioCue{item->id};
        else
            cue.kind = GraphicCue{"Title", "", std::nullopt};
        return cue;
    }
    Section section(const Show& show) {
        Section section;
        section.id = newID();
        section.title = name();
        for (int n = below(6); n > 0; --n) section.cues.push_back(cue(show));
        return section;
    }
    // A run of neighbouring cues widened over With Previous links: often valid.
    CueGroup group(const Show& show) {
        CueGroup group{newID(), "Group", {}, chance(0.5)};
        if (show.sections.empty())
            return group;
        const auto& cues = pick(show.sections)->cues;
        const int size = static_cast<int>(cues.size());
        if (size == 0)
            return group;
        auto follows = [&](int i) { return cues[static_cast<std::size_t>(i)].follow; };
        int first = below(std::max(size - 1, 1));
        int last = std::min(size - 1, first + 1 + below(3));
        while (first > 0 && follows(first) == Follow::withPrevious) --first;
        while (last + 1 < size && follows(last + 1) == Follow::withPrevious) ++last;
        for (int i = first; i <= last; ++i) group.cueIDs.push_back(cues[static_cast<std::size_t>(i)].id);
        return group;
    }

    std::mt19937_64 random_;
};

TEST(ShowEditFuzz, RandomEditsKeepEveryRuleAndUndoExactly) {
    int applied = 0;
    int refused = 0;
    for (std::uint64_t seed = 1; seed <= 6 && !HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomEdits random(seed);
        const Show start = random.show();
        EditHistory history(1000);
        Show show = start;
        for (int step = 0; step < 300 && !HasFailure(); ++step) {
            const int roll = random.below(10);
            if (roll == 0) {
                if (auto previous = history.undo(show)) show = *previous;
                continue;
            }
            if (roll == 1) {
                if (auto next = history.redo(show)) show = *next;
                continue;
            }
            const Show before = show;
            const std::size_t undoDepth = history.undoStack().size();
            try {
                const Show after = history.apply(random.edit(show), show);
                ++applied;
                EXPECT_EQ(show, before) << "the show passed in changed";
                for (const CueGroup& group : after.cueGroups.value_or(std::vector<CueGroup>{}))
                    EXPECT_NO_THROW(validatedCueGroup(after, group));
                show = after;
            } catch (const ShowEditError&) {
                ++refused;
                EXPECT_EQ(show, before) << "a refused edit changed the show";
                EXPECT_EQ(history.undoStack().size(), undoDepth);
            }
        }
        while (auto next = history.redo(show)) show = *next;
        const Show end = show;
        while (auto previous = history.undo(show)) show = *previous;
        EXPECT_EQ(show, start) << "undo all the way did not lead back to the start";
        while (auto next = history.redo(show)) show = *next;
        EXPECT_EQ(show, end) << "redo all the way did not lead to the end";
    }
    EXPECT_GT(applied, 300);
    EXPECT_GT(refused, 100);
}

} // namespace
} // namespace velarion
