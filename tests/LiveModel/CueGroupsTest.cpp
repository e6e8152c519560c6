// Moments, the validity of playback groups, their steps, and which cue Next
// points at when one is armed.

#include "LiveModel/CueGroups.h"

#include "ShowEditFixtures.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

using namespace editTesting;

constexpr Follow with = Follow::withPrevious;
constexpr Follow afterPrev = Follow::afterPrevious;

std::string momentOf(const Show& show, const std::string& name) {
    return names(moment(show, named(show, name).id));
}

std::string validationOf(const Show& show, const CueGroup& group) {
    return refusal([&] { validatedCueGroup(show, group); });
}

CueGroup groupOf(const Show& show, std::vector<std::string> cueNames) {
    std::vector<Uuid> ids;
    for (const auto& name : cueNames)
        ids.push_back(named(show, name).id);
    return makeGroup("Group", ids);
}

// Each step as its cue names, the driver after a colon: "A B:A C:C".
std::string stepsOf(const Show& show, const CueGroup& group) {
    std::string text;
    for (const CueGroupStep& step : playbackSteps(show, group)) {
        if (!text.empty())
            text += " | ";
        for (const Cue& cue : step.cues)
            text += cue.name + " ";
        text += ":" + step.driver.name;
    }
    return text;
}

TEST(Moment, LinkedCuesBundleAcrossSectionsWhateverTheyPlay) {
    const Show show = makeShow(
        {makeSection("One", {makeCue("A"), makeCue("B", with), makeCue("C", afterPrev, false)}),
         makeSection("Two", {makeCue("D", with), makeCue("E")})});
    EXPECT_EQ(momentOf(show, "A"), "A B C D");
    EXPECT_EQ(momentOf(show, "D"), "A B C D");
    EXPECT_EQ(momentOf(show, "E"), "E");
    EXPECT_TRUE(moment(show, Uuid::random()).empty());
}

TEST(Moment, TheShowsFirstCueStartsAMomentEvenWhenLinked) {
    const Show show =
        makeShow({makeSection("One", {makeCue("P", with), makeCue("Q"), makeCue("R", with)})});
    EXPECT_EQ(momentOf(show, "P"), "P");
    EXPECT_EQ(momentOf(show, "R"), "Q R");
}

TEST(Moment, AGroupIsOneMomentEvenWithManualCues) {
    Show show = makeShow(
        {makeSection("One", {makeCue("A"), makeCue("B"), makeCue("C"), makeCue("D", with)})});
    show.cueGroups = std::vector<CueGroup>{groupOf(show, {"B", "C", "D"})};
    EXPECT_EQ(momentOf(show, "B"), "B C D");
    EXPECT_EQ(momentOf(show, "A"), "A");
    ASSERT_NE(cueGroup(show, named(show, "C").id), nullptr);
    EXPECT_EQ(cueGroup(show, named(show, "A").id), nullptr);
}

TEST(CueGroup, ValidationRefusesWhatCannotPlayAsOneGroup) {
    const Show show = makeShow({makeSection("One", {makeCue("A"), makeCue("B"), makeCue("C"),
                                                    makeCue("D", with), makeCue("E")}),
                                makeSection("Two", {makeCue("F")})});
    const std::string notConsecutive = "Choose consecutive cues in one section.";
    const std::string notWhole = "Include every cue linked to start With Previous.";
    const std::string tooFew = "Select at least two different cues to make a group.";

    CueGroup blank = groupOf(show, {"A", "B"});
    blank.name = " \n ";
    EXPECT_EQ(validationOf(show, blank), "Names can't be empty.");
    EXPECT_EQ(validationOf(show, groupOf(show, {"A"})), tooFew);
    EXPECT_EQ(validationOf(show, groupOf(show, {"A", "B", "A"})), tooFew);
    CueGroup stale = groupOf(show, {"A", "B"});
    stale.cueIDs.push_back(Uuid::random());
    EXPECT_EQ(validationOf(show, stale), "That cue no longer exists.");
    EXPECT_EQ(validationOf(show, groupOf(show, {"A", "C"})), notConsecutive);
    EXPECT_EQ(validationOf(show, groupOf(show, {"E", "F"})), notConsecutive);
    EXPECT_EQ(validationOf(show, groupOf(show, {"B", "C"})), notWhole);
    EXPECT_EQ(validationOf(show, groupOf(show, {"D", "E"})), notWhole);
    EXPECT_EQ(validationOf(show, groupOf(show, {"C", "D", "E"})), "accepted");

    Show grouped = show;
    grouped.cueGroups = std::vector<CueGroup>{groupOf(show, {"A", "B"})};
    EXPECT_EQ(validationOf(grouped, groupOf(show, {"B", "C", "D"})),
              "A cue can belong to only one playback group.");
    // The group may be checked against itself.
    EXPECT_EQ(validationOf(grouped, grouped.cueGroups->front()), "accepted");
}

TEST(CueGroup, ValidationAllowsAfterPreviousNeighboursAndALinkedFirstCue) {
    const Show show =
        makeShow({makeSection("One", {makeCue("A", with), makeCue("B"), makeCue("C", afterPrev)})});
    CueGroup group = groupOf(show, {"B", "A"});
    group.name = "\tIntro ";
    group.repeats = true;
    const CueGroup valid = validatedCueGroup(show, group);
    EXPECT_EQ(valid.name, "Intro");
    EXPECT_EQ(valid.id, group.id);
    EXPECT_TRUE(valid.repeats);
    EXPECT_EQ(valid.cueIDs, (std::vector<Uuid>{named(show, "A").id, named(show, "B").id}));
}

TEST(CueGroup, StepsStartTogetherAndTheDriverIsWhatTheNextStepWaitsFor) {
    Show show = makeShow({makeSection("One", {makeCue("A"), makeCue("B", with), makeCue("C")})});
    const CueGroup group = groupOf(show, {"A", "B", "C"});
    EXPECT_EQ(stepsOf(show, group), "A B :A | C :C");

    Cue c = named(show, "C");
    c.follow = afterPrev;
    show = apply(edit::UpdateCue{c}, show);
    EXPECT_EQ(stepsOf(show, group), "A B :B | C :C");

    // An After Previous cue opens a step of its own.
    const Show chained =
        makeShow({makeSection("One", {makeCue("A"), makeCue("B", afterPrev), makeCue("C")})});
    EXPECT_EQ(stepsOf(chained, groupOf(chained, {"A", "B", "C"})), "A :A | B :B | C :C");
}

TEST(CueGroup, ArmingPointsAtTheFirstPlayableCueOfTheBundle) {
    Show show = makeShow(
        {makeSection("One",
                     {makeCue("A", Follow::manual, false), makeCue("B", with), makeCue("C", with),
                      makeCue("D", afterPrev), makeCue("E", with, false)}),
         makeSection("Two", {makeCue("F", Follow::manual, false), makeCue("G"), makeCue("H")})});
    auto armed = [&](const std::string& name) -> std::string {
        const auto target = armTarget(show, named(show, name).id);
        if (!target)
            return "none";
        return show.cue(*target)->name;
    };
    EXPECT_EQ(armed("C"), "B");
    EXPECT_EQ(armed("D"), "D");
    EXPECT_EQ(armed("A"), "none");
    EXPECT_EQ(armed("E"), "none"); // disabled, though its bundle plays
    EXPECT_FALSE(armTarget(show, Uuid::random()));

    show.cueGroups = std::vector<CueGroup>{groupOf(show, {"F", "G", "H"})};
    EXPECT_EQ(armed("H"), "G");
}

} // namespace
} // namespace velarion
