// Where new and moved cues land, so that no moment is ever cut in two, and the
// operator's range selection.

#include "LiveModel/CueInsertionPoint.h"

#include "LiveModel/CueRangeSelection.h"
#include "ShowEditFixtures.h"

#include <gtest/gtest.h>

namespace velarion {
namespace {

using namespace editTesting;

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
