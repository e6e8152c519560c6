// Thousands of random edits, valid and refused, of every case, through an
// edit history, with undo and redo mixed in. After every step: a refused
// edit changed nothing, the show passed in never changed, every group still
// validates, unchanged sections and items share storage with the snapshot,
// and the stacks stay within the limit. At the end, undo leads back to the
// start and redo forward to the end.

#include "LiveModel/CueGroups.h"
#include "LiveModel/EditHistory.h"
#include "RandomShowEdits.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <variant>

namespace velarion {
namespace {

using editTesting::RandomShowEdits;

constexpr std::size_t caseCount = std::variant_size_v<ShowEdit>;

// A copy with storage of its own, so that a change made in place to shared
// storage can't hide by changing both sides.
Show deepCopy(const Show& show) {
    Show copy = show;
    for (std::size_t i = 0; i < copy.sections.size(); ++i) {
        Section section = copy.sections[i];
        section.cues = SharedList<Cue>(std::vector<Cue>(section.cues.begin(), section.cues.end()));
        copy.sections.set(i, std::move(section));
    }
    for (std::size_t i = 0; i < copy.library.size(); ++i) copy.library.set(i, copy.library[i]);
    return copy;
}

// Parts of `after` equal to a part of `before` with the same id must be that
// part's storage, not a copy of it.
template <class T>
void expectEqualPartsShared(const SharedList<T>& afterList, const SharedList<T>& beforeList,
                            const std::string& what) {
    const auto& before = beforeList.sharedItems();
    for (const Shared<T>& part : afterList.sharedItems()) {
        for (const Shared<T>& old : before) {
            if (old->id != part->id)
                continue;
            if (old.get() == part.get()) {
                EXPECT_TRUE(part.sharesStorageWith(old)) << what << " copied though unchanged";
            }
            break;
        }
    }
}

void expectGroupsValid(const Show& show) {
    if (!show.cueGroups)
        return;
    EXPECT_FALSE(show.cueGroups->empty()) << "an empty group list stays absent";
    for (const CueGroup& group : *show.cueGroups) {
        try {
            EXPECT_EQ(validatedCueGroup(show, group), group);
        } catch (const ShowEditError& error) {
            ADD_FAILURE() << "group no longer valid: " << error.errorDescription();
        }
    }
}

struct Tally {
    std::array<int, caseCount> applied{};
    std::array<int, caseCount> refused{};
};

void runSeed(std::uint64_t seed, int steps, int limit, Tally& tally) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomShowEdits random(seed);
    const Show start = random.show();
    EditHistory history(limit);
    Show show = start;
    int recorded = 0;
    std::size_t maxUndoDepth = 0;

    for (int step = 0; step < steps && !::testing::Test::HasFailure(); ++step) {
        const int roll = random.below(20);
        if (roll == 0 || roll == 1) {
            if (auto previous = history.undo(show))
                show = *previous;
            continue;
        }
        if (roll == 2) {
            if (auto next = history.redo(show))
                show = *next;
            continue;
        }
        // Groups are made more often than chance would, so that the group
        // check has groups to keep whole most of the time.
        const std::size_t caseIndex =
            roll == 3 ? 20 : static_cast<std::size_t>(random.below(caseCount));
        const ShowEdit edit = random.edit(caseIndex, show);
        const Show before = deepCopy(show);
        const std::size_t undoDepth = history.undoStack().size();
        const std::size_t redoDepth = history.redoStack().size();
        try {
            const Show after = history.apply(edit, show);
            ++tally.applied[caseIndex];
            EXPECT_EQ(show, before) << "the show passed in changed, case " << caseIndex;
            expectGroupsValid(after);
            if (after != show) {
                ++recorded;
                const Show& snapshot = history.undoStack().back();
                EXPECT_EQ(snapshot, before);
                expectEqualPartsShared(after.sections, snapshot.sections, "section");
                expectEqualPartsShared(after.library, snapshot.library, "library item");
            } else {
                EXPECT_EQ(history.undoStack().size(), undoDepth) << "a step that changed nothing";
            }
            show = after;
        } catch (const ShowEditError&) {
            ++tally.refused[caseIndex];
            EXPECT_EQ(show, before) << "a refused edit changed the show, case " << caseIndex;
            EXPECT_EQ(history.undoStack().size(), undoDepth);
            EXPECT_EQ(history.redoStack().size(), redoDepth);
        }
        maxUndoDepth = std::max(maxUndoDepth, history.undoStack().size());
        EXPECT_LE(history.undoStack().size(), static_cast<std::size_t>(limit));
        EXPECT_LE(history.redoStack().size(), static_cast<std::size_t>(limit));
    }

    // Runs may stop after an undo: the end is as far as redo goes.
    while (auto next = history.redo(show))
        show = *next;
    const Show end = show;
    while (auto previous = history.undo(show))
        show = *previous;
    if (recorded <= limit) {
        EXPECT_EQ(show, start) << "undo all the way did not lead back to the start";
    } else {
        EXPECT_EQ(maxUndoDepth, static_cast<std::size_t>(limit)) << "the limit was never reached";
    }
    while (auto next = history.redo(show))
        show = *next;
    EXPECT_EQ(show, end) << "redo all the way did not lead to the end";
}

TEST(ShowEditFuzz, RandomEditsKeepEveryRuleAndUndoExactly) {
    Tally tally;
    // Seeds with room for every step, then seeds whose limit keeps cutting.
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
        const bool roomy = seed <= 6;
        runSeed(seed, roomy ? 500 : 150, roomy ? 500 : 12, tally);
        if (HasFailure())
            return; // the first broken rule says enough
    }

    int refusals = 0;
    for (std::size_t i = 0; i < caseCount; ++i) {
        EXPECT_GT(tally.applied[i], 0) << "case " << i << " never went through";
        refusals += tally.refused[i];
    }
    // Cases with a refusal of their own must have met it.
    for (std::size_t i : {0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 14, 15, 20, 21, 22}) {
        EXPECT_GT(tally.refused[i], 0) << "case " << i << " was never refused";
    }
    EXPECT_GT(refusals, 200);
}

} // namespace
} // namespace velarion
