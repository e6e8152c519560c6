// What is live (get_state and every run tool's answer) and how the screens
// are set up (part of get_show and the answer of the screen tools).

#include "LiveAgent/AgentServiceTools.h"

#include "LiveModel/TimeText.h"

#include <cmath>
#include <string>
#include <variant>

namespace velarion::agentService {

namespace {

JSONValue cueReference(const ShowLookup& lookup, const std::optional<Uuid>& cueID) {
    if (!cueID) return nullptr;
    const Cue* cue = lookup.show().cue(*cueID);
    if (!cue) return nullptr;
    return JSONValue::Object{{"id", cue->id.text()}, {"number", lookup.number(cue->id)}, {"name", cue->name}};
}

JSONValue lyricLinesValue(const std::optional<int>& lines) {
    if (!lines) return nullptr;
    return *lines;
}

JSONValue destinationObject(const ScreenDestination& destination) {
    if (const auto* display = std::get_if<destination::Display>(&destination)) {
        return JSONValue::Object{{"type", "display"}, {"id", display->id}};
    }
    if (const auto* ndi = std::get_if<destination::Ndi>(&destination)) {
        return JSONValue::Object{{"type", "ndi"}, {"id", ndi->feedID.text()}};
    }
    return JSONValue::Object{{"type", "placeholder"}};
}

JSONValue sourceValue(const NetworkFeedSource& source) {
    if (const auto* screen = std::get_if<feedSource::Screen>(&source)) {
        return JSONValue::Object{{"screen", screen->id}};
    }
    return std::holds_alternative<feedSource::Stage>(source) ? "stage" : "audience";
}

JSONValue feedObject(const NetworkFeed& feed) {
    JSONValue::Object object{
        {"id", feed.id.text()},
        {"name", feed.name},
        {"transparent", feed.alphaMode != NDIAlphaMode::off},
        {"alpha_mode", toString(feed.alphaMode)},
        {"source", sourceValue(feed.source)},
        {"lyric_lines", lyricLinesValue(feed.lyricLines)},
        {"width", feed.width},
        {"height", feed.height},
        {"fps", feed.framesPerSecond()},
        {"sound", feed.sendsSound.value_or(false)},
        {"frame_rate", JSONValue::Object{{"numerator", feed.frameRate.numerator},
                                         {"denominator", feed.frameRate.denominator}}},
    };
    const JSONValue shows = layersValue(feed.layers);
    object[shows.is<std::string>() ? "preset" : "layers"] = shows;
    return object;
}

bool isDisplay(const LogicalScreen& screen, std::string_view id) {
    const auto* display = std::get_if<destination::Display>(&screen.destination);
    return display && display->id == id;
}

} // namespace

JSONValue screensSummary(const OutputSetup& setup) {
    const std::vector<LogicalScreen> screens = setup.effectiveScreens();
    JSONValue::Array audience;
    JSONValue::Array logical;
    JSONValue speakerDisplay = nullptr;
    bool testWindow = false;
    for (const LogicalScreen& screen : screens) {
        const OutputLook look = setup.resolvedLook(screen);
        const auto* display = std::get_if<destination::Display>(&screen.destination);
        if (screen.role == ScreenRole::audience && display) {
            audience.emplace_back(JSONValue::Object{{"id", display->id},
                                                    {"name", screen.name},
                                                    {"shows", layersValue(look.layers)},
                                                    {"lyric_lines", lyricLinesValue(look.lyricLines)}});
        }
        if (screen.role == ScreenRole::stage && display && speakerDisplay.isNull()) speakerDisplay = display->id;
        testWindow = testWindow || isDisplay(screen, OutputSetup::testWindowID);
        logical.emplace_back(JSONValue::Object{
            {"id", screen.id},
            {"name", screen.name},
            {"role", toString(screen.role)},
            {"destination", destinationObject(screen.destination)},
            {"look_id", screen.lookID ? JSONValue(screen.lookID->text()) : JSONValue()},
            {"shows", layersValue(look.layers)},
            {"lyric_lines", lyricLinesValue(look.lyricLines)},
        });
    }
    JSONValue::Array looks;
    for (const OutputLook& look : setup.looks) {
        looks.emplace_back(JSONValue::Object{{"id", look.id.text()},
                                             {"name", look.name},
                                             {"shows", layersValue(look.layers)},
                                             {"lyric_lines", lyricLinesValue(look.lyricLines)}});
    }
    JSONValue::Array defaults;
    if (setup.defaultVisualOutputIDs) {
        for (const std::string& id : *setup.defaultVisualOutputIDs) defaults.emplace_back(id);
    }
    JSONValue::Array destinations;
    for (const std::string& id : setup.visualDestinations()) destinations.emplace_back(id);
    JSONValue::Array feeds;
    for (const NetworkFeed& feed : setup.feeds) feeds.push_back(feedObject(feed));

    return JSONValue::Object{
        {"audience", std::move(audience)},
        {"speaker_display", speakerDisplay},
        {"test_window", testWindow},
        {"uses_logical_screens", setup.usesLogicalScreens},
        {"logical_screens", std::move(logical)},
        {"looks", std::move(looks)},
        {"default_visual_output_ids", setup.defaultVisualOutputIDs ? JSONValue(std::move(defaults)) : JSONValue()},
        {"available_destination_ids", std::move(destinations)},
        {"network_feeds", std::move(feeds)},
    };
}

JSONValue stateSummary(const AgentCall& call) {
    const Show show = call.show();
    const ShowLookup lookup(show);
    const EngineState state = call.host.engineState().value_or(EngineState{});

    JSONValue::Array running;
    for (const RunningCue& cue : state.running) {
        running.emplace_back(JSONValue::Object{
            {"cue", cueReference(lookup, cue.cueID)},
            {"detail", cue.detail},
            {"elapsed", std::round(cue.elapsedSeconds)},
            {"paused", cue.isPaused},
            {"on_screen", cue.isOnScreen},
        });
    }
    JSONValue::Object summary{
        {"next", cueReference(lookup, state.nextCueID)},
        {"running", std::move(running)},
        {"safe_slide_up", state.holdingOn},
        {"locked", call.host.isLocked()},
        {"cue_group", nullptr},
    };
    if (const auto& group = state.cueGroup) {
        summary["cue_group"] = JSONValue::Object{
            {"id", group->groupID.text()},
            {"name", group->name},
            {"cue_id", group->cueID.text()},
            {"cue", cueReference(lookup, group->cueID)},
            {"step", group->step},
            {"step_count", group->stepCount},
            {"repeat", group->repeats},
            {"waiting_for_go", group->waitingForGO},
        };
    }
    if (state.activeDeckCueID) {
        JSONValue deck = cueReference(lookup, state.activeDeckCueID);
        if (const auto* object = deck.objectValue()) {
            JSONValue::Object withSlide = *object;
            withSlide["slide"] = state.activeSlide ? JSONValue(*state.activeSlide + 1) : JSONValue();
            summary["live_deck"] = std::move(withSlide);
        }
    }
    if (const auto& timer = state.timer) {
        summary["timer"] = JSONValue::Object{
            {"name", timer->name},
            {"seconds", TimeText::timerSeconds(timer->valueSeconds, timer->isCountUp)},
            {"counting_up", timer->isCountUp},
            {"paused", timer->isPaused},
        };
    }
    if (state.stageMessage) summary["speaker_message"] = *state.stageMessage;
    if (state.audienceMessage) summary["audience_message"] = *state.audienceMessage;
    if (std::holds_alternative<PanicFading>(state.panic)) summary["panic"] = "fading";
    return summary;
}

} // namespace velarion::agentService
