// The graph check: a valid generated graph passes, and each rule, on a graph
// broken for it, reports exactly the expected findings in a stable order.

#include "ShowGraphGenerator.h"

#include "ShowCore/ShowDocument.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace velarion::showcore {
namespace {

using Kind = ShowValidationErrorKind;
using Findings = std::vector<ShowValidationError>;

ShowValidationError finding(Kind kind, std::string subject, const Uuid& id) { return {kind, std::move(subject), id}; }

Cue& cueAt(ShowDocument& d, std::size_t act, std::size_t scene, std::size_t cue) {
    return d.acts.at(act).scenes.at(scene).cues.at(cue);
}

template <class Payload> ShowAction& actionWith(ShowDocument& d) {
    for (auto& action : cueAt(d, 0, 1, 1).actions) {
        if (std::holds_alternative<Payload>(action.payload)) return action;
    }
    throw std::logic_error("the generated cue lacks that payload");
}

struct Breakage {
    const char* name;
    // Breaks the graph and returns what the check must report.
    std::function<Findings(ShowDocument&)> apply;
};

const std::vector<Breakage> breakages = {
    // Identities
    {"two actions in different cues share an id",
     [](ShowDocument& d) {
         const Uuid id = cueAt(d, 0, 0, 1).actions[0].id;
         cueAt(d, 1, 1, 2).actions[3].id = id;
         return Findings{finding(Kind::duplicateIdentity, "action", id)};
     }},
    {"two scenes in different acts share an id, reported at the repeat only",
     [](ShowDocument& d) {
         Scene& repeat = d.acts[1].scenes[0];
         repeat.id = d.acts[0].scenes[1].id;
         for (Cue& cue : repeat.cues) cue.sceneID = repeat.id;
         return Findings{finding(Kind::duplicateIdentity, "scene", repeat.id)};
     }},
    // Parents
    {"a cue whose sceneID isn't the scene holding it",
     [](ShowDocument& d) {
         Cue& cue = cueAt(d, 0, 1, 2);
         cue.sceneID = d.acts[0].scenes[0].id;
         return Findings{finding(Kind::parentMismatch, "cue", cue.id)};
     }},
    {"an act of another show, and an action of another cue",
     [](ShowDocument& d) {
         d.acts[1].showID = Uuid::random();
         ShowAction& action = cueAt(d, 1, 0, 0).actions[5];
         action.cueID = cueAt(d, 1, 0, 1).id;
         return Findings{finding(Kind::parentMismatch, "act", d.acts[1].id),
                         finding(Kind::parentMismatch, "action", action.id)};
     }},
    // Order ranks
    {"a malformed rank, and a rank shared by two sibling cues",
     [](ShowDocument& d) {
         Cue& malformed = cueAt(d, 0, 0, 0);
         malformed.order = SortRank{"a0"};
         Cue& twin = cueAt(d, 1, 0, 2);
         twin.order = cueAt(d, 1, 0, 1).order;
         return Findings{finding(Kind::invalidOrder, "cue", malformed.id), finding(Kind::invalidOrder, "cue", twin.id)};
     }},
    // References
    {"a failure policy falling back to a missing cue",
     [](ShowDocument& d) {
         Cue& cue = cueAt(d, 1, 1, 0);
         cue.failurePolicy = failure::UseVerifiedFallback{Uuid::random()};
         return Findings{finding(Kind::unresolvedReference, "failure fallback cue", cue.id)};
     }},
    {"an action aimed at a layer its destination doesn't have",
     [](ShowDocument& d) {
         ShowAction& action = actionWith<VideoPayload>(d);
         std::get<target::VisualLayer>(action.target).layerID = d.destinations[2].layers[0].id;
         const auto& layer = std::get<target::VisualLayer>(action.target);
         if (layer.destinationID == d.destinations[2].id) throw std::logic_error("pick another destination");
         return Findings{finding(Kind::unresolvedReference, "action visual layer", action.id)};
     }},
    {"local audio: a missing asset and bus, and a loop ending before it starts",
     [](ShowDocument& d) {
         ShowAction& action = actionWith<LocalAudioPayload>(d);
         auto& audio = std::get<LocalAudioPayload>(action.payload);
         audio.assetID = Uuid::random();
         audio.busID = Uuid::random();
         audio.loopEndOffset = DurationValue::make(3);
         return Findings{finding(Kind::unresolvedReference, "local audio asset", action.id),
                         finding(Kind::unresolvedReference, "local audio bus target", action.id),
                         finding(Kind::unresolvedReference, "local audio loop", action.id)};
     }},
    {"a destination's look, connection and transition all missing",
     [](ShowDocument& d) {
         ShowDestination& screen = d.destinations[0];
         screen.lookID = Uuid::random();
         screen.connectionID = Uuid::random();
         screen.transitionID = Uuid::random();
         return Findings{finding(Kind::unresolvedReference, "destination look", screen.id),
                         finding(Kind::unresolvedReference, "destination connection", screen.id),
                         finding(Kind::unresolvedReference, "destination transition", screen.id)};
     }},
    {"a slide with nothing to render, and a native slide's broken parts",
     [](ShowDocument& d) {
         PresentationSlide& bare = d.presentations[0].slides[2];
         bare.pageAssetID.reset();
         PresentationSlide& native = d.presentations[3].slides[0];
         native.document->backgroundAssetID = Uuid::random();
         native.document->textElements[0].fontSize = 0;
         native.document->imageElements[0].assetID = Uuid::random();
         native.document->safeArea.top = 0.6;
         return Findings{finding(Kind::unresolvedReference, "slide render source", bare.id),
                         finding(Kind::unresolvedReference, "native slide background", native.id),
                         finding(Kind::unresolvedReference, "native slide text", native.document->textElements[0].id),
                         finding(Kind::unresolvedReference, "native slide image", native.document->imageElements[0].id),
                         finding(Kind::unresolvedReference, "native slide safe area", native.id)};
     }},
    {"a pad binding to a slot of another page, and a slot target from another profile",
     [](ShowDocument& d) {
         ControlProfile& profile = d.controlProfiles[0];
         ControlBinding& pad = profile.bindings[4];
         std::get<PadControlDescriptor>(pad.source).slotID = profile.padPages[1].slots[0].id;
         ControlBinding& midi = profile.bindings[2];
         midi.target = controlTarget::Slot{d.controlProfiles[1].padPages[0].slots[0].id};
         return Findings{finding(Kind::unresolvedReference, "control pad slot", midi.id),
                         finding(Kind::unresolvedReference, "pad binding source", pad.id)};
     }},
    {"timers: a missing destination, completion cue and completion style",
     [](ShowDocument& d) {
         d.timers[0].destinationIDs.push_back(Uuid::random());
         d.timers[0].completionPolicy = completion::ChangeStyle{Uuid::random()};
         d.timers[1].completionPolicy = completion::FireCue{Uuid::random()};
         return Findings{finding(Kind::unresolvedReference, "timer destination", d.timers[0].id),
                         finding(Kind::unresolvedReference, "timer completion style", d.timers[0].id),
                         finding(Kind::unresolvedReference, "timer completion cue", d.timers[1].id)};
     }},
    // Managed assets
    {"managed assets leaving their folder, disagreeing with their policy or their hash",
     [](ShowDocument& d) {
         std::get<locator::Managed>(d.assets[0].locator).filename = "../show.json";
         d.assets[1].storagePolicy = AssetStoragePolicy::linked;
         std::get<locator::Managed>(d.assets[2].locator).contentHash = "sha256:other";
         return Findings{finding(Kind::invalidManagedAsset, "asset", d.assets[0].id),
                         finding(Kind::invalidManagedAsset, "asset", d.assets[1].id),
                         finding(Kind::invalidManagedAsset, "asset", d.assets[2].id)};
     }},
    // Values
    {"music whose playback window ends before it starts",
     [](ShowDocument& d) {
         ShowAction& action = actionWith<ProviderAudioPayload>(d);
         std::get<ProviderAudioPayload>(action.payload).playbackWindow = {DurationValue::make(30), DurationValue::make(30)};
         return Findings{finding(Kind::invalidValue, "Provider playback end must be after start", action.id)};
     }},
    {"unsafe settings and a retention of zero days",
     [](ShowDocument& d) {
         d.settings.uiScale = std::nan("");
         d.settings.backupRetention.dailyDays = 0;
         return Findings{finding(Kind::invalidValue, "Show settings contain unsafe values", d.id),
                         finding(Kind::invalidValue, "Backup retention must use positive values", d.id)};
     }},
    {"every rule at once reports in rule order, identities first",
     [](ShowDocument& d) {
         d.settings.goRepeatLockoutMilliseconds = -1;
         d.defaultTransitionID = Uuid::random();
         Cue& cue = cueAt(d, 1, 1, 1);
         cue.order = SortRank{""};
         d.operatorMessages[1].id = d.operatorMessages[0].id;
         return Findings{finding(Kind::duplicateIdentity, "operator message", d.operatorMessages[0].id),
                         finding(Kind::invalidOrder, "cue", cue.id),
                         finding(Kind::unresolvedReference, "default transition", d.id),
                         finding(Kind::invalidValue, "Show settings contain unsafe values", d.id)};
     }},
};

TEST(ShowValidationTest, GeneratedGraphIsValid) {
    const ShowDocument graph = bench::makeShowGraph();
    EXPECT_EQ(validationFindings(graph), Findings{});
    EXPECT_NO_THROW(graph.validateForPersistence());
}

TEST(ShowValidationTest, EachRuleReportsWhatBrokeIt) {
    for (const Breakage& breakage : breakages) {
        SCOPED_TRACE(breakage.name);
        ShowDocument graph = bench::makeShowGraph();
        const Findings expected = breakage.apply(graph);
        const Findings found = validationFindings(graph);
        ASSERT_EQ(found.size(), expected.size());
        for (std::size_t i = 0; i < found.size(); ++i) {
            EXPECT_EQ(found[i], expected[i]) << "got " << toString(found[i].kind) << " \"" << found[i].subject
                                             << "\" " << found[i].id.text() << ": " << found[i].what();
        }
        try {
            graph.validateForPersistence();
            ADD_FAILURE() << "the broken graph passed";
        } catch (const ShowValidationError& thrown) {
            EXPECT_EQ(thrown, expected.front());
        }
    }
}

TEST(ShowValidationTest, ManagedAssetsAreLookedForInThePackageFolder) {
    const ShowDocument graph = bench::makeShowGraph();
    std::vector<std::string> asked;
    const auto findings = validationFindings(graph, [&](const std::string& path) {
        asked.push_back(path);
        return path != "Assets/Managed/asset-1.bin";
    });
    ASSERT_EQ(findings, Findings{finding(Kind::invalidManagedAsset, "asset", graph.assets[1].id)});
    EXPECT_EQ(asked.front(), "Assets/Managed/asset-0.bin");
    EXPECT_EQ(asked.size(), 30u); // every managed asset, none of the linked ones
}

} // namespace
} // namespace velarion::showcore
