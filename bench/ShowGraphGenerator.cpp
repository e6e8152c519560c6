#include "ShowGraphGenerator.h"

#include "SeededRandom.h"

#include <string>
#include <variant>

namespace velarion::bench {

using namespace showcore;

namespace {

DurationValue seconds(double value) { return DurationValue::make(value); }

class Generator {
public:
    explicit Generator(const ShowGraphSize& size) : size_(size), random_(size.seed) {}

    ShowDocument make() {
        doc_.id = random_.uuid();
        doc_.title = "Generated show — " + std::to_string(size_.acts) + " acts";
        doc_.modelRevision = 42;
        doc_.createdAt = ShowDate{1'795'000'000'123};
        doc_.modifiedAt = ShowDate{1'795'086'400'000};
        doc_.notes = "Made for tests ✨\nSecond line with \"quotes\".";
        resources();
        run();
        references();
        return std::move(doc_);
    }

private:
    Uuid id() { return random_.uuid(); }
    template <class T> const Uuid& any(const std::vector<T>& list) { return list[random_.below(list.size())].id; }

    VisualPlacement placement() {
        VisualPlacement p;
        p.x = random_.amount(0, 0.5, 0.05);
        p.y = random_.amount(0, 0.5, 0.05);
        p.width = random_.amount(0.1, 0.5, 0.05);
        p.height = random_.amount(0.1, 0.5, 0.05);
        p.scaling = static_cast<VisualScalingMode>(random_.below(4));
        p.crop = {0.05, 0, 0.1, 0.025};
        p.opacity = random_.amount(0.5, 1, 0.1);
        if (random_.chance(0.5)) p.rotationDegrees = random_.amount(-45, 45, 0.5);
        return p;
    }

    void resources() {
        for (int i = 0; i < 6; ++i) {
            doc_.transitions.push_back({id(), "Transition " + std::to_string(i), static_cast<TransitionStyle>(i),
                                        seconds(i == 0 ? 0 : 0.25 * i), static_cast<TransitionDirection>(i % 4)});
        }
        doc_.defaultTransitionID = doc_.transitions[1].id;
        for (int i = 0; i < 4; ++i) {
            doc_.connections.push_back({id(), static_cast<DestinationConnectionKind>(i),
                                        i == 1 ? std::optional<std::string>("HDMI-A-1") : std::nullopt,
                                        "Connection " + std::to_string(i)});
        }
        const auto layerRanks = SortRank::spread(3);
        for (int i = 0; i < 3; ++i) {
            ShowDestination d{id(), "Screen " + std::to_string(i), static_cast<DestinationRole>(i)};
            d.format = {1920 - 640 * (i == 2), 1080 - 360 * (i == 2), i == 2 ? 29.97 : 60};
            d.clearPolicy = static_cast<DestinationClearPolicy>(i);
            d.connectionID = doc_.connections[static_cast<std::size_t>(i)].id;
            if (i == 0) d.transitionID = doc_.transitions[2].id;
            for (int j = 0; j < 3; ++j) {
                d.layers.push_back({id(), d.id, "Layer " + std::to_string(j), layerRanks[static_cast<std::size_t>(j)],
                                    static_cast<ActionConcurrencyPolicy>((i + j) % 7)});
            }
            doc_.destinations.push_back(std::move(d));
        }
        for (int i = 0; i < 2; ++i) {
            ShowLook look{id(), "Look " + std::to_string(i)};
            for (const auto& destination : doc_.destinations) {
                look.rules.push_back({id(), destination.id, i == 0 ? "#000000" : "#1A2B3C",
                                      {destination.layers[static_cast<std::size_t>(i)].id}});
            }
            doc_.looks.push_back(std::move(look));
        }
        doc_.destinations[0].lookID = doc_.looks[0].id;
        for (int i = 0; i < 40; ++i) {
            ShowAsset asset{id(), "sha256:" + std::to_string(1000 + i), static_cast<AssetMediaKind>(i % 7)};
            if (i % 4 == 3) {
                asset.storagePolicy = AssetStoragePolicy::linked;
                asset.locator = locator::Linked{{"file:///home/ana/Media/clip%20" + std::to_string(i) + ".mov"},
                                                "size=" + std::to_string(i * 4096)};
            } else {
                asset.locator = locator::Managed{asset.contentHash, "asset-" + std::to_string(i) + ".bin"};
            }
            if (i % 3 == 0) asset.metadata = {{"codec", "h264"}, {"origin", "Import — Sunday"}};
            doc_.assets.push_back(std::move(asset));
        }
        for (int i = 0; i < 10; ++i) {
            doc_.derivedAssets.push_back({id(), doc_.assets[static_cast<std::size_t>(i)].id,
                                          static_cast<DerivedAssetKind>(i % 2), "sha256:d" + std::to_string(i),
                                          "render-3", "page-" + std::to_string(i) + ".png"});
        }
        for (int i = 0; i < 2; ++i) {
            doc_.presentationThemes.push_back({id(), "Theme " + std::to_string(i), 1920, 1080, "#101010", "#F0F0F0"});
        }
        for (int i = 0; i < 4; ++i) presentation(i);
        providers();
        controls();
        timers();
        for (int i = 0; i < 4; ++i) {
            doc_.audioBuses.push_back({id(), "Bus " + std::to_string(i), static_cast<AudioBusRole>(i), 0.8, i == 3,
                                       i == 0 ? std::optional<std::string>("alsa_output.usb") : std::nullopt});
        }
        doc_.audioDuckingRules.push_back(
            {id(), doc_.audioBuses[1].id, doc_.audioBuses[0].id, 9.5, seconds(0.2), seconds(1.5), true});
        doc_.audioDuckingRules.push_back(
            {id(), doc_.audioBuses[2].id, doc_.audioBuses[0].id, 6, seconds(0.1), seconds(0.8), false});
    }

    void presentation(int index) {
        ShowPresentation p{id()};
        p.title = "Deck " + std::to_string(index);
        p.importKind = static_cast<PresentationImportKind>(index);
        p.refreshState = static_cast<PresentationRefreshState>(index);
        if (index != 3) p.sourceAssetID = doc_.assets[static_cast<std::size_t>(index)].id;
        p.themeID = doc_.presentationThemes[static_cast<std::size_t>(index % 2)].id;
        if (index == 0) p.transitionID = doc_.transitions[1].id;
        const auto ranks = SortRank::spread(10);
        for (int j = 0; j < 10; ++j) {
            PresentationSlide s{id(), p.id};
            s.fingerprint = "fp-" + std::to_string(index) + "-" + std::to_string(j);
            s.order = ranks[static_cast<std::size_t>(j)];
            s.isSkipped = j == 4;
            s.notes = j % 2 ? "Speaker notes" : "";
            if (j < 3) s.group = "Verse " + std::to_string(j);
            if (p.importKind == PresentationImportKind::native) {
                NativeSlideDocument d;
                d.backgroundAssetID = doc_.assets[2].id;
                d.textElements.push_back({id(), "Welcome", 0.1, 0.1, 0.8, 0.2, "Roboto", 64, "#FFFFFF",
                                          static_cast<NativeTextWeight>(j % 4), static_cast<NativeTextAlignment>(j % 3),
                                          1.2, static_cast<NativeTextListStyle>(j % 3),
                                          static_cast<NativeTextOverflowBehavior>(j % 3)});
                d.imageElements.push_back(
                    {id(), doc_.assets[6].id, 0.5, 0.5, 0.25, 0.25, VisualScalingMode::fill, 0.75});
                d.safeArea = {0.05, 0.05, 0.05, 0.05};
                s.document = std::move(d);
            } else {
                s.sourcePageIndex = j;
                s.pageAssetID = doc_.derivedAssets[static_cast<std::size_t>(j)].id;
            }
            if (j == 1) s.transitionID = doc_.transitions[3].id;
            p.slides.push_back(std::move(s));
        }
        doc_.presentations.push_back(std::move(p));
    }

    void providers() {
        for (int i = 0; i < 5; ++i) {
            ProviderReference r{id(), static_cast<MusicProvider>(i % 2), "catalog-" + std::to_string(i)};
            if (i % 2 == 0) r.storefront = "us";
            r.metadataSnapshot = {"Song " + std::to_string(i), "Artist", std::nullopt, seconds(180 + i)};
            if (i == 1) r.metadataSnapshot.album = "Album";
            doc_.providerReferences.push_back(std::move(r));
        }
    }

    void controls() {
        for (int p = 0; p < 2; ++p) {
            ControlProfile profile{id(), "Profile " + std::to_string(p)};
            const auto ranks = SortRank::spread(2);
            for (int g = 0; g < 2; ++g) {
                ControlPadPage page{id(), "Page " + std::to_string(g), ranks[static_cast<std::size_t>(g)], g == 1};
                const auto slotRanks = SortRank::spread(4);
                for (int s = 0; s < 4; ++s) {
                    page.slots.push_back({id(), "Slot " + std::to_string(s), slotRanks[static_cast<std::size_t>(s)],
                                          controlTarget::Command{static_cast<ControlCommandKind>(s)}});
                }
                profile.padPages.push_back(std::move(page));
            }
            const auto& page = profile.padPages[0];
            profile.bindings.push_back({id(), "Space", KeyboardControlDescriptor{" ", {ControlModifier::shift}},
                                        controlTarget::Command{ControlCommandKind::go}, behavior::Momentary{}});
            profile.bindings.push_back({id(), "Clicker", ClickerControlDescriptor{"usb-1234", "PageDown"},
                                        controlTarget::Command{ControlCommandKind::hold}, behavior::Toggle{}});
            profile.bindings.push_back(
                {id(), "Pad note", MIDIControlDescriptor{"midi-pad", 10, MIDIControlMessageType::noteOn, 36},
                 controlTarget::Slot{page.slots[1].id}, behavior::Velocity{20}});
            profile.bindings.push_back({id(), "OSC", OSCControlDescriptor{"/show/go", "Go"},
                                        controlTarget::Command{ControlCommandKind::allStop}, behavior::Continuous{},
                                        false});
            profile.bindings.push_back({id(), "Pad", PadControlDescriptor{page.id, page.slots[2].id},
                                        controlTarget::Command{ControlCommandKind::clearMain},
                                        behavior::Momentary{ControlTriggerPhase::ended}});
            doc_.controlProfiles.push_back(std::move(profile));
        }
        doc_.activeControlProfileID = doc_.controlProfiles[0].id;
    }

    void timers() {
        for (int i = 0; i < 2; ++i) doc_.timerStyles.push_back({id(), "Style " + std::to_string(i)});
        const std::vector<ShowTimerKind> kinds = {timerKind::Countdown{seconds(300)},
                                                  timerKind::TargetTime{ShowDate{1'795'040'000'000}},
                                                  timerKind::CountUp{}, timerKind::Stopwatch{}, timerKind::TimeOfDay{}};
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            ShowTimer t{id(), "Timer " + std::to_string(i), kinds[i]};
            if (i == 0) t.completionPolicy = completion::ChangeStyle{doc_.timerStyles[1].id};
            if (i == 2) t.completionPolicy = completion::ContinueNegative{};
            if (i % 2 == 0) t.styleID = doc_.timerStyles[0].id;
            t.destinationIDs = {doc_.destinations[1].id};
            t.isOperatorOnly = i == 4;
            doc_.timers.push_back(std::move(t));
        }
        doc_.operatorMessages.push_back({id(), "Five minutes", {doc_.destinations[1].id}, ShowDate{1'795'000'000'000}});
        doc_.operatorMessages.push_back({id(), "Wrap up", {}, ShowDate{1'795'000'000'000}, ShowDate{1'795'000'600'000}});
    }

    void run() {
        const auto actRanks = SortRank::spread(static_cast<std::size_t>(size_.acts));
        const auto sceneRanks = SortRank::spread(static_cast<std::size_t>(size_.scenesPerAct));
        const auto cueRanks = SortRank::spread(static_cast<std::size_t>(size_.cuesPerScene));
        const auto actionRanks = SortRank::spread(static_cast<std::size_t>(size_.actionsPerCue));
        for (int a = 0; a < size_.acts; ++a) {
            ShowAct act{id(), doc_.id, "Act " + std::to_string(a + 1), actRanks[static_cast<std::size_t>(a)]};
            for (int s = 0; s < size_.scenesPerAct; ++s) {
                Scene scene{id(), act.id, "Scene " + std::to_string(s + 1), sceneRanks[static_cast<std::size_t>(s)]};
                scene.triggerMode = static_cast<SceneTriggerMode>(s % 3);
                scene.failurePolicy = s % 2 ? ShowFailurePolicy{failure::StopScene{}}
                                            : ShowFailurePolicy{failure::HoldOnRequiredFailure{}};
                for (int c = 0; c < size_.cuesPerScene; ++c) {
                    scene.cues.push_back(cue(scene.id, cueRanks[static_cast<std::size_t>(c)], actionRanks));
                }
                act.scenes.push_back(std::move(scene));
            }
            doc_.acts.push_back(std::move(act));
        }
    }

    CueTiming timing() {
        CueTiming t;
        t.preWait = seconds(random_.amount(0, 2, 0.25));
        if (random_.chance(0.3)) t.playDuration = seconds(random_.amount(1, 60, 0.5));
        t.postWait = seconds(random_.amount(0, 1, 0.25));
        switch (random_.below(3)) {
        case 0: t.progression = progression::StartWithNext{seconds(random_.amount(0, 1, 0.1))}; break;
        case 1: t.progression = progression::StartAfterThis{seconds(0.5)}; break;
        default: t.progression = progression::Manual{};
        }
        t.timebase = random_.chance(0.1) ? CueTimebase::wallClock : CueTimebase::monotonic;
        return t;
    }

    Cue cue(const Uuid& sceneID, const SortRank& order, const std::vector<SortRank>& actionRanks) {
        Cue c{id(), sceneID, static_cast<CueType>(cueCount_ % 12), "Cue " + std::to_string(cueCount_), order};
        ++cueCount_;
        c.isEnabled = random_.chance(0.95);
        if (random_.chance(0.2)) c.notes = "Wait for the pastor's nod";
        if (random_.chance(0.3)) c.tags = {"music", "band"};
        c.timing = timing();
        for (int i = 0; i < size_.actionsPerCue; ++i) {
            c.actions.push_back(action(c.id, actionRanks[static_cast<std::size_t>(i)]));
        }
        return c;
    }

    ShowAction action(const Uuid& cueID, const SortRank& order) {
        ShowAction a{id(), cueID, "Action " + std::to_string(actionCount_), order};
        a.timing = timing();
        a.concurrencyPolicy = static_cast<ActionConcurrencyPolicy>(actionCount_ % 7);
        const auto& destination = doc_.destinations[actionCount_ % 3];
        switch (actionCount_ % 13) {
        case 0: a.payload = payload::Wait{seconds(1.5)}; break;
        case 1: a.payload = payload::InternalCommand{"reset-stage"}; break;
        case 2: {
            LocalAudioPayload p{doc_.assets[0].id, {"file:///home/ana/Music/intro.wav"}};
            p.endOffset = seconds(30);
            p.gain = 0.8;
            p.pan = -0.25;
            p.busID = doc_.audioBuses[0].id;
            p.fadeIn = seconds(2);
            p.loops = true;
            p.loopStartOffset = seconds(4);
            p.loopEndOffset = seconds(28);
            a.payload = p;
            a.target = target::AudioBus{doc_.audioBuses[0].id};
            break;
        }
        case 3: {
            const auto& deck = doc_.presentations[actionCount_ % 4];
            a.payload = PresentationSlidePayload{deck.id, deck.slides[actionCount_ % 10].id};
            a.target = target::Destination{destination.id};
            break;
        }
        case 4: a.payload = ProviderAudioPayload{any(doc_.providerReferences), {seconds(10), seconds(70)}, std::nullopt, false}; break;
        case 5: {
            const std::vector<ShowTimerOperation> operations = {
                timerOperation::Adjust{-30}, timerOperation::Set{seconds(120)}, timerOperation::Start{},
                timerOperation::Pause{}, timerOperation::Resume{}, timerOperation::Reset{}, timerOperation::Complete{}};
            a.payload = TimerActionPayload{any(doc_.timers), operations[actionCount_ % 7]};
            a.target = target::Timer{doc_.timers[0].id};
            break;
        }
        case 6: {
            VideoPayload p{any(doc_.assets), seconds(1), seconds(20), true, false, 0.9, seconds(0.5), seconds(1)};
            p.placement = placement();
            p.transitionID = doc_.transitions[1].id;
            a.payload = p;
            a.target = target::VisualLayer{destination.id, destination.layers[1].id};
            break;
        }
        case 7: a.payload = ImagePayload{any(doc_.assets), placement(), std::nullopt}; break;
        case 8: {
            TextPayload p{"Welcome — “friends”", "Roboto", 72, "#FFFFFF", "#00000080", TextAlignment::leading};
            p.placement = placement();
            a.payload = p;
            a.target = target::Destination{destination.id};
            break;
        }
        case 9: a.payload = LookActionPayload{any(doc_.looks)}; break;
        case 10: a.payload = StopCuePayload{cueID, seconds(2)}; break;
        case 11: a.payload = FadeCuePayload{cueID, 0.25, seconds(3), FadeCurve::sCurve}; break;
        default: a.payload = OSCOutPayload{"10.0.0.5", 53000, "/cue/go", 1.0}; a.target = target::Control{id()};
        }
        if (actionCount_ % 17 == 0) a.target = target::ProviderPlayer{id()};
        ++actionCount_;
        return a;
    }

    // References into the run, made once the run exists.
    void references() {
        const Cue& first = doc_.acts.front().scenes.front().cues.front();
        const Cue& last = doc_.acts.back().scenes.back().cues.back();
        for (int i = 0; i < 5; ++i) {
            ProviderFallbackLink link{id(), first.id, std::nullopt, static_cast<ProviderLossPolicy>(i % 3)};
            if (link.policy == ProviderLossPolicy::useVerifiedLocalFallback) {
                link.fallbackCueID = last.id;
                link.lastVerifiedAt = ShowDate{1'795'000'100'000};
            }
            doc_.providerFallbackLinks.push_back(link);
        }
        auto& scene = doc_.acts.front().scenes.front();
        scene.failurePolicy = failure::UseVerifiedFallback{last.id};
        forEachProviderAudio([&](ProviderAudioPayload& p) {
            p.fallbackLinkID = doc_.providerFallbackLinks[0].id;
            p.requiresVerifiedFallbackForShow = true;
        });
        doc_.timers[1].completionPolicy = completion::FireCue{last.id};
        doc_.timers[3].completionPolicy =
            completion::SendControl{controlTarget::Focus{focus::Presentation{doc_.presentations[0].id}}};
        doc_.timers[4].completionPolicy = completion::SendControl{controlTarget::Cue{first.id}};
        doc_.controlProfiles[1].bindings[0].target = controlTarget::Cue{last.id};
    }

    template <class F> void forEachProviderAudio(F&& f) {
        for (auto& act : doc_.acts) {
            for (auto& scene : act.scenes) {
                for (auto& cue : scene.cues) {
                    for (auto& action : cue.actions) {
                        if (auto* p = std::get_if<ProviderAudioPayload>(&action.payload)) f(*p);
                    }
                }
            }
        }
    }

    ShowGraphSize size_;
    SeededRandom random_;
    ShowDocument doc_;
    std::size_t cueCount_ = 0;
    std::size_t actionCount_ = 0;
};

} // namespace

ShowDocument makeShowGraph(const ShowGraphSize& size) { return Generator(size).make(); }

} // namespace velarion::bench
