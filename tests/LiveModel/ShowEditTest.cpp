// The rules and refusals of each show edit, and the group check that ends
// every one of them.

#include "LiveModel/CueGroups.h"
#include "ShowEditFixtures.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

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

} // namespace
} // namespace velarion
