// The rules and refusals of each show edit, and the group check that ends
// every one of them.

#include "LiveModel/CueGroups.h"
#include "LiveModel/CueInsertionPoint.h"
#include "LiveModel/CueLimits.h"
#include "LiveModel/CueRangeSelection.h"
#include "LiveModel/EditHistory.h"
#include "ShowEditFixtures.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace velarion {
namespace {

using namespace editTesting;

const char* const emptyName = "Names can't be empty.";
const char* const cueMissing = "That cue no longer exists.";
const char* const sectionMissing = "That section no longer exists.";

// Two sections: "A B C" and "D E".
Show twoSections() {
    return makeShow({makeSection("Opening", {makeCue("A"), makeCue("B"), makeCue("C")}),
                     makeSection("Message", {makeCue("D"), makeCue("E")})});
}

Uuid sectionID(const Show& show, std::size_t index) {
    return show.sections[index].id;
}

TEST(ShowEdit, AnEditOfSomethingGoneIsRefusedInWords) {
    const Show show = twoSections();
    const Uuid gone = Uuid::random(), section = sectionID(show, 0), cue = named(show, "B").id;
    const std::vector<Cue> block = {makeCue("X")};
    const std::pair<ShowEdit, const char*> cases[] = {
        {edit::RenameSection{gone, "Welcome"}, sectionMissing},
        {edit::MoveSection{gone, 0}, sectionMissing},
        {edit::DeleteSection{gone}, sectionMissing},
        {edit::SetSectionSchedule{gone, 1, 1}, sectionMissing},
        {edit::InsertCue{makeCue("X"), gone, std::nullopt}, sectionMissing},
        {edit::InsertCues{block, std::nullopt, gone}, cueMissing},
        {edit::InsertCues{block, gone, std::nullopt}, sectionMissing},
        {edit::UpdateCue{makeCue("Stranger")}, cueMissing},
        {edit::DeleteCue{gone}, cueMissing},
        {edit::MoveCue{gone, section, 0}, cueMissing},
        {edit::MoveCue{cue, gone, 0}, sectionMissing},
        {edit::MoveMoment{gone, std::nullopt}, cueMissing},
        {edit::MoveMoment{cue, gone}, cueMissing},
        {edit::MoveMomentToSection{cue, gone, std::nullopt}, sectionMissing},
        {edit::MoveMomentToSection{gone, section, std::nullopt}, cueMissing},
        {edit::UpdateMedia{MediaItem{}}, "That media is missing from the show."},
        {edit::RemoveMedia{gone}, "That media is missing from the show."},
        {edit::UpdateCueGroup{makeGroup("G", {cue})}, "That cue group no longer exists."},
        {edit::RemoveCueGroup{gone}, "That cue group no longer exists."},
    };
    for (const auto& [change, words] : cases) {
        SCOPED_TRACE(words);
        EXPECT_EQ(refusal(change, show), words);
    }
}

TEST(ShowEditDocument, TitleAndSectionNamesAreTrimmedAndNeverEmpty) {
    const Show show = twoSections();
    const Show titled = apply(edit::SetTitle{"  Easter\n", " \u00A0Sunrise\t"}, show);
    EXPECT_EQ(titled.title, "Easter");
    EXPECT_EQ(titled.subtitle, "Sunrise");
    EXPECT_EQ(apply(edit::SetTitle{"Easter", "  "}, show).subtitle, "");
    EXPECT_EQ(refusal(edit::SetTitle{" \n\u2028 ", "x"}, show), emptyName);

    const Uuid first = sectionID(show, 0);
    EXPECT_EQ(apply(edit::RenameSection{first, " Welcome "}, show).sections[0].title, "Welcome");
    EXPECT_EQ(refusal(edit::RenameSection{first, "   "}, show), emptyName);
}

TEST(ShowEditDocument, SectionsAreAddedMovedAndRemovedWithClampedIndices) {
    const Show show = twoSections();
    const Section extra = makeSection("Extra", {makeCue("X")});
    EXPECT_EQ(layout(apply(edit::AddSection{extra, std::nullopt}, show)), "A B C|D E|X");
    EXPECT_EQ(layout(apply(edit::AddSection{extra, -5}, show)), "X|A B C|D E");

    const Show three = apply(edit::AddSection{extra, std::nullopt}, show);
    const Uuid middle = sectionID(three, 1);
    EXPECT_EQ(layout(apply(edit::MoveSection{middle, -3}, three)), "D E|A B C|X");
    EXPECT_EQ(layout(apply(edit::MoveSection{middle, 99}, three)), "A B C|X|D E");
    EXPECT_EQ(layout(apply(edit::MoveSection{sectionID(three, 0), 1}, three)), "D E|A B C|X");

    EXPECT_EQ(layout(apply(edit::DeleteSection{middle}, three)), "A B C|X");
}

TEST(ShowEditCues, InsertCueGoesBehindItsAnchorOrToTheEnd) {
    const Show show = twoSections();
    const Cue x = makeCue("X");
    EXPECT_EQ(layout(apply(edit::InsertCue{x, std::nullopt, named(show, "B").id}, show)),
              "A B X C|D E");
    // An anchor that is gone falls back to the section, then to the last one.
    EXPECT_EQ(layout(apply(edit::InsertCue{x, sectionID(show, 0), Uuid::random()}, show)),
              "A B C X|D E");
    EXPECT_EQ(layout(apply(edit::InsertCue{x, std::nullopt, std::nullopt}, show)), "A B C|D E X");

    const Show empty = makeShow({});
    const Show started = apply(edit::InsertCue{x, std::nullopt, std::nullopt}, empty);
    ASSERT_EQ(started.sections.size(), 1u);
    EXPECT_EQ(started.sections[0].title, "Run of show");
    EXPECT_EQ(layout(started), "X");
}

TEST(ShowEditCues, InsertCuesLandInFrontOfAWholeMomentInOrder) {
    const Show show = makeShow(
        {makeSection("One", {makeCue("A"), makeCue("B"), makeCue("C", Follow::withPrevious)}),
         makeSection("Two", {makeCue("D")})});
    const std::vector<Cue> block = {makeCue("X"), makeCue("Y")};
    EXPECT_EQ(layout(apply(edit::InsertCues{block, std::nullopt, named(show, "C").id}, show)),
              "A X Y B C|D");
    EXPECT_EQ(layout(apply(edit::InsertCues{block, std::nullopt, std::nullopt}, show)),
              "A B C|D X Y");
    EXPECT_EQ(apply(edit::InsertCues{{}, Uuid::random(), Uuid::random()}, show), show);
    EXPECT_EQ(layout(apply(edit::InsertCues{block, std::nullopt, std::nullopt}, makeShow({}))),
              "X Y");
}

TEST(ShowEditCues, UpdateCueReplacesItAndRefusesABadGroupDuration) {
    const Show show = twoSections();
    Cue changed = named(show, "D");
    changed.notes = "Lights down";
    const Show updated = apply(edit::UpdateCue{changed}, show);
    EXPECT_EQ(named(updated, "D"), changed);
    EXPECT_TRUE(updated.sections.shared(0).sharesStorageWith(show.sections.shared(0)));

    for (double bad : {0.0, -2.0, std::numeric_limits<double>::quiet_NaN(),
                       std::numeric_limits<double>::infinity()}) {
        changed.groupDuration = bad;
        EXPECT_EQ(refusal(edit::UpdateCue{changed}, show),
                  "Group duration must be greater than zero seconds.");
    }
    changed.groupDuration = 12.5;
    EXPECT_EQ(named(apply(edit::UpdateCue{changed}, show), "D").groupDuration, 12.5);
}

TEST(ShowEditCues, DeleteCueKeepsReferencesOfClearCues) {
    Show show = twoSections();
    const Uuid target = named(show, "B").id;
    show = apply(edit::InsertCue{makeCue("Stop B", Follow::manual, true,
                                         ClearCue{ClearTarget::media, 1, target}),
                                 std::nullopt, std::nullopt},
                 show);
    const Show deleted = apply(edit::DeleteCue{target}, show);
    EXPECT_EQ(layout(deleted), "A C|D E Stop B");
    EXPECT_EQ(std::get<ClearCue>(named(deleted, "Stop B").kind).cueID, target);
    EXPECT_EQ(refusal(edit::DeleteCue{target}, deleted), cueMissing);
}

// "A B+C|D E+F": B-C and E-F are moments (C and F follow With Previous).
Show linkedShow() {
    return makeShow(
        {makeSection("One", {makeCue("A"), makeCue("B"), makeCue("C", Follow::withPrevious)}),
         makeSection("Two", {makeCue("D"), makeCue("E"), makeCue("F", Follow::afterPrevious)})});
}

TEST(ShowEditMoments, MoveMomentCarriesTheWholeBundle) {
    const Show show = linkedShow();
    const Uuid c = named(show, "C").id;
    // Named by its last cue, the bundle still moves whole; the target is the
    // start of the moment holding `before`.
    EXPECT_EQ(layout(apply(edit::MoveMoment{c, named(show, "F").id}, show)), "A|D B C E F");
    EXPECT_EQ(layout(apply(edit::MoveMoment{c, named(show, "A").id}, show)), "B C A|D E F");
    EXPECT_EQ(layout(apply(edit::MoveMoment{c, std::nullopt}, show)), "A|D E F B C");
    // A target inside the moment itself changes nothing.
    EXPECT_EQ(apply(edit::MoveMoment{c, named(show, "B").id}, show), show);
}

TEST(ShowEditMoments, MovesFreezeTheFirstCueRule) {
    // P is the show's first cue and stores With Previous: it plays by GO.
    const Show show = makeShow({makeSection("One", {makeCue("P", Follow::withPrevious),
                                                    makeCue("Q", Follow::withPrevious)}),
                                makeSection("Two", {makeCue("R"), makeCue("S")})});
    const Uuid p = named(show, "P").id;
    const Uuid r = named(show, "R").id;

    const Show moved = apply(edit::MoveMoment{p, std::nullopt}, show);
    EXPECT_EQ(layout(moved), "|R S P Q");
    EXPECT_EQ(named(moved, "P").follow, Follow::manual);
    EXPECT_EQ(named(moved, "Q").follow, Follow::withPrevious);

    // Moving another moment ahead of it: moveMomentToSection freezes P too.
    const Show ahead = apply(edit::MoveMomentToSection{r, sectionID(show, 0), p}, show);
    EXPECT_EQ(layout(ahead), "R P Q|S");
    EXPECT_EQ(named(ahead, "P").follow, Follow::manual);
    EXPECT_EQ(named(ahead, "Q").follow, Follow::withPrevious);
}

TEST(ShowEditMedia, RenamingAnItemRenamesCuesStillCalledAfterIt) {
    MediaItem item;
    item.id = Uuid::random();
    item.kind = MediaKind::video;
    item.name = "Intro";
    Show show = makeShow(
        {makeSection("One", {makeCue("Intro", Follow::manual, true, VideoCue{item.id}),
                             makeCue("Opener", Follow::manual, true, VideoCue{item.id}),
                             makeCue("Intro", Follow::manual, true, PlaylistCue{{item.id}})}),
         makeSection("Two", {makeCue("Other")})});
    show.library.emplace_back(item);
    item.name = "Intro 2024";
    const Show renamed = apply(edit::UpdateMedia{item}, show);
    EXPECT_EQ(layout(renamed), "Intro 2024 Opener Intro|Other");
    EXPECT_EQ(renamed.library[0].name, "Intro 2024");
    EXPECT_TRUE(renamed.sections.shared(1).sharesStorageWith(show.sections.shared(1)));

    // No check for a double id when adding.
    EXPECT_EQ(apply(edit::AddMedia{show.library[0]}, show).library.size(), 2u);
}

TEST(ShowEditMedia, RemovalIsRefusedWhileCuesOrDecksUseTheItem) {
    MediaItem picture;
    picture.id = Uuid::random();
    picture.kind = MediaKind::image;
    picture.name = "Sky";
    MediaItem deck;
    deck.id = Uuid::random();
    deck.kind = MediaKind::deck;
    deck.name = "Lyrics";
    deck.deck = DeckInfo{};
    deck.deck->background = backdrop::Media{picture.id};
    Show show = makeShow(
        {makeSection("One", {makeCue("Sky cue", Follow::manual, true, ImageCue{picture.id})})});
    show.library = {picture, deck};

    EXPECT_EQ(refusal(edit::RemoveMedia{picture.id}, show), "Still used by cues Sky cue, Lyrics.");
    show.library = {picture};
    EXPECT_EQ(refusal(edit::RemoveMedia{picture.id}, show), "Still used by cue Sky cue.");

    // The safe slide is no user: the item goes and the safe slide lets go.
    show = apply(edit::DeleteCue{named(show, "Sky cue").id}, show);
    show.holding.mediaID = picture.id;
    const Show removed = apply(edit::RemoveMedia{picture.id}, show);
    EXPECT_TRUE(removed.library.empty());
    EXPECT_FALSE(removed.holding.mediaID);
}

// Three consecutive cues in a group, in a section of five: "A [B C D] E".
struct GroupedShow {
    Show show;
    CueGroup group;
};

GroupedShow groupedShow() {
    Show show = makeShow({makeSection(
        "One", {makeCue("A"), makeCue("B"), makeCue("C"), makeCue("D"), makeCue("E")})});
    CueGroup group =
        makeGroup("  Walk-in  ", {named(show, "D").id, named(show, "B").id, named(show, "C").id});
    show = apply(edit::CreateCueGroup{group}, show);
    return {show, group};
}

TEST(ShowEditGroups, CreateValidatesAndUpdateAndRemoveNeedTheGroup) {
    auto [show, group] = groupedShow();
    ASSERT_TRUE(show.cueGroups);
    const CueGroup& stored = show.cueGroups->front();
    EXPECT_EQ(stored.name, "Walk-in");
    EXPECT_EQ(names(cues(show, stored)), "B C D");
    EXPECT_EQ(stored.cueIDs.front(), named(show, "B").id);

    EXPECT_EQ(refusal(edit::CreateCueGroup{group}, show), "That cue group already exists.");
    CueGroup other = makeGroup("Other", {named(show, "D").id, named(show, "E").id});
    EXPECT_EQ(refusal(edit::CreateCueGroup{other}, show),
              "A cue can belong to only one playback group.");

    group.repeats = true;
    group.cueIDs = {named(show, "C").id, named(show, "D").id, named(show, "E").id};
    const Show updated = apply(edit::UpdateCueGroup{group}, show);
    EXPECT_TRUE(updated.cueGroups->front().repeats);
    EXPECT_EQ(names(cues(updated, updated.cueGroups->front())), "C D E");
    EXPECT_FALSE(apply(edit::RemoveCueGroup{group.id}, show).cueGroups);
}

TEST(ShowEditGroups, DeletingCuesShrinksAGroupAndEndsItAtOne) {
    auto [show, group] = groupedShow();
    show = apply(edit::DeleteCue{named(show, "C").id}, show);
    ASSERT_TRUE(show.cueGroups);
    EXPECT_EQ(names(cues(show, show.cueGroups->front())), "B D");
    show = apply(edit::DeleteCue{named(show, "B").id}, show);
    EXPECT_FALSE(show.cueGroups);
}

TEST(ShowEditGroups, EditsThatWouldBreakAGroupAreRefused) {
    auto [show, group] = groupedShow();
    const Uuid section = sectionID(show, 0);
    const Uuid c = named(show, "C").id;
    const Uuid a = named(show, "A").id;
    // Splitting the run of cues.
    EXPECT_EQ(refusal(edit::MoveCue{a, section, 2}, show),
              "Choose consecutive cues in one section.");
    EXPECT_EQ(refusal(edit::MoveCue{c, section, 99}, show),
              "Choose consecutive cues in one section.");
    // A cue that starts With Previous right behind the group belongs to it.
    EXPECT_EQ(refusal(edit::InsertCue{makeCue("W", Follow::withPrevious), std::nullopt,
                                      named(show, "D").id},
                      show),
              "Include every cue linked to start With Previous.");
    Cue e = named(show, "E");
    e.follow = Follow::withPrevious;
    EXPECT_EQ(refusal(edit::UpdateCue{e}, show),
              "Include every cue linked to start With Previous.");
    // The group moves whole, as one moment, and stays valid.
    EXPECT_EQ(layout(apply(edit::MoveMoment{c, a}, show)), "B C D A E");
    EXPECT_EQ(layout(apply(edit::MoveCue{a, section, 4}, show)), "B C D E A");
}

// Undo and redo at their edges, the step limit and the Show Mode lock; the
// walk through thousands of random steps follows.

edit::SetTitle titled(int step) {
    return {"Step " + std::to_string(step), ""};
}

TEST(EditHistory, AnEditThatChangesNothingMakesNoStepAndKeepsRedo) {
    EditHistory history(100);
    const Show start = makeShow({makeSection("One", {makeCue("A")})});
    const Show changed = history.apply(titled(1), start);
    const auto undone = history.undo(changed);
    ASSERT_TRUE(undone);

    const Show same = history.apply(edit::SetOutputs{undone->outputs}, *undone);
    EXPECT_EQ(same, start);
    EXPECT_TRUE(history.undoStack().empty());
    EXPECT_EQ(history.redoStack().size(), 1u);

    // A real step after an undo empties redo.
    history.apply(titled(2), same);
    EXPECT_FALSE(history.canRedo());
}

TEST(EditHistory, TheLimitDropsTheOldestStep) {
    EditHistory history(100);
    const Show start = makeShow({});
    Show show = start;
    for (int step = 1; step <= 101; ++step)
        show = history.apply(titled(step), show);
    EXPECT_EQ(history.undoStack().size(), 100u);

    int undos = 0;
    while (auto previous = history.undo(show)) {
        show = *previous;
        ++undos;
    }
    EXPECT_EQ(undos, 100);
    EXPECT_EQ(show.title, "Step 1"); // the step from the start was dropped
    EXPECT_EQ(history.redoStack().size(), 100u);

    EXPECT_EQ(EditHistory(0).limit(), 1);
}

TEST(EditHistory, ShowModeRefusesEditsAndHidesUndo) {
    EditHistory history(100);
    const Show start = makeShow({});
    const Show one = history.apply(titled(1), start);
    const Show two = history.apply(titled(2), one);
    const Show back = *history.undo(two);

    history.isLocked = true;
    EXPECT_EQ(refusal([&] { history.apply(titled(3), back); }),
              "Show Mode is on. Return to Edit to make changes.");
    EXPECT_FALSE(history.canUndo());
    EXPECT_FALSE(history.canRedo());
    EXPECT_FALSE(history.undo(back));
    EXPECT_FALSE(history.redo(back));
    EXPECT_EQ(history.undoStack().size(), 1u);
    EXPECT_EQ(history.redoStack().size(), 1u);

    history.isLocked = false;
    EXPECT_EQ(history.redo(back), two);
}

TEST(EditHistory, EditsTogetherMakeOneStepOrNoneWhenOneIsRefused) {
    EditHistory history(100);
    const Show start = makeShow({makeSection("One", {makeCue("A"), makeCue("B")})});
    Cue a = *start.allCues()[0], b = *start.allCues()[1];
    a.notes = b.notes = "Both";
    const Show both = history.apply({edit::UpdateCue{a}, edit::UpdateCue{b}}, start);
    EXPECT_EQ(both.allCues()[1]->notes, "Both");
    EXPECT_EQ(history.undoStack().size(), 1u);

    Cue gone = makeCue("Gone");
    EXPECT_THROW(history.apply({edit::UpdateCue{a}, edit::UpdateCue{gone}}, start), ShowEditError);
    EXPECT_EQ(history.undoStack().size(), 1u);
}

TEST(CueLimits, TypedValuesLandOnTheirLimits) {
    const auto limited = [](CueKind kind) { return cueLimits::limited(makeCue("Cue", Follow::manual, true, kind)).kind; };
    VideoCue video;
    video.inPoint = -2;
    video.level = 3;
    video.fadeOut = -1;
    EXPECT_EQ(std::get<VideoCue>(limited(video)).inPoint, 0);
    EXPECT_EQ(std::get<VideoCue>(limited(video)).level, 1);
    EXPECT_EQ(std::get<VideoCue>(limited(video)).fadeOut, 0);
    EXPECT_EQ(std::get<PlaylistCue>(limited(PlaylistCue{{}, false, false, 45})).crossfade, 20);
    SpotifyTrack song;
    song.level = 140;
    EXPECT_EQ(std::get<SpotifyTrack>(limited(song)).level, 100);
    EXPECT_EQ(std::get<SlidesCue>(limited(SlidesCue{{}, -3, 12.0})), (SlidesCue{{}, 0, 10.0}));
    EXPECT_EQ(std::get<TimerCue>(limited(TimerCue{CountToMode{2000}})).mode, TimerMode{CountToMode{1439}});
}

// Random edits, valid and refused, through an edit history with undo and
// redo mixed in. After every step a refused edit changed nothing, the show
// passed in never changed and every group still validates; at the end undo
// leads back to the start and redo forward to the end.
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

// Where new and moved cues land, so that no moment is ever cut in two, and the
// operator's range selection.

constexpr Follow with = Follow::withPrevious;

// "A B+C | +D E+F": the moment B-C-D reaches over the section boundary, and
// E-F is a moment of its own.
Show bundledShow() {
    return makeShow({makeSection("One", {makeCue("A"), makeCue("B"), makeCue("C", with)}),
                     makeSection("Two", {makeCue("D", with), makeCue("E"),
                                         makeCue("F", Follow::afterPrevious)}),
                     makeSection("Empty", {})});
}

// A point as "section title / before cue name", "end" for absent parts.
std::string describe(const Show& show, const std::optional<CueInsertionPoint>& point) {
    if (!point)
        return "none";
    std::string section = "end";
    for (const Section& candidate : show.sections) {
        if (point->sectionID == candidate.id)
            section = candidate.title;
    }
    return section + " / " + (point->before ? show.cue(*point->before)->name : "end");
}

std::string nameOf(const Show& show, const std::optional<Uuid>& id) {
    return id ? show.cue(*id)->name : "none";
}

TEST(MomentInsertion, ANewManualCueNeverCutsABundle) {
    const Show show = bundledShow();
    const Cue manual = makeCue("New");
    const Cue linked = makeCue("New", with);
    const Uuid b = named(show, "B").id;
    EXPECT_EQ(nameOf(show, defaultInsertionAnchor(show, manual, b)), "D");
    EXPECT_EQ(nameOf(show, defaultInsertionAnchor(show, linked, b)), "B");
    EXPECT_FALSE(defaultInsertionAnchor(show, manual, std::nullopt));
    const Uuid stranger = Uuid::random();
    EXPECT_EQ(defaultInsertionAnchor(show, manual, stranger), stranger);
}

TEST(MomentInsertion, PointsSitAtTheEdgesOfMoments) {
    const Show show = bundledShow();
    auto near = [&](const std::string& name, bool after) {
        return describe(show, insertionPoint(show, named(show, name).id, after));
    };
    EXPECT_EQ(near("C", false), "One / B");
    EXPECT_EQ(near("B", true), "Two / E");
    EXPECT_EQ(near("A", true), "One / B");
    EXPECT_EQ(near("E", true), "Two / end");
    EXPECT_FALSE(insertionPoint(show, Uuid::random(), true));

    // The end of a section is behind its last moment, wherever that ends.
    EXPECT_EQ(describe(show, insertionPoint(show, show.sections[0].id)), "Two / E");
    EXPECT_EQ(describe(show, insertionPoint(show, show.sections[2].id)), "Empty / end");
    EXPECT_EQ(insertionPoint(show, std::nullopt), CueInsertionPoint{});
    EXPECT_FALSE(insertionPoint(show, std::optional<Uuid>(Uuid::random())));
}

TEST(CueRangeSelection, RangesStayInOneSectionAndTakeWholeBundles) {
    const Show show = makeShow({makeSection("One", {makeCue("A"), makeCue("B", with), makeCue("C"),
                                                    makeCue("D"), makeCue("E", with)}),
                                makeSection("Two", {makeCue("F")})});
    auto ids = [&](std::vector<std::string> cueNames) {
        std::set<Uuid> set;
        for (const auto& name : cueNames)
            set.insert(named(show, name).id);
        return set;
    };
    const Uuid b = named(show, "B").id;
    CueRangeSelection selection;
    selection.select(named(show, "C").id, true, show); // no anchor yet
    EXPECT_EQ(selection.cueIDs, ids({"C"}));
    selection.select(b, false, show);
    EXPECT_EQ(selection.anchor, b);
    selection.select(named(show, "D").id, true, show);
    EXPECT_EQ(selection.anchor, b);
    EXPECT_EQ(selection.cueIDs, ids({"A", "B", "C", "D", "E"}));

    const CueRangeSelection before = selection;
    selection.select(Uuid::random(), true, show);
    EXPECT_EQ(selection, before);

    selection.select(named(show, "F").id, true, show);
    EXPECT_EQ(selection.anchor, named(show, "F").id);
    EXPECT_EQ(selection.cueIDs, ids({"F"}));
}

} // namespace
} // namespace velarion
