// The tools that read, run the show as the operator's console does, and
// look after the application itself. Each run tool sends one engine command,
// notes it in the live history and answers with what is live now.

#include "LiveAgent/AgentServiceTools.h"

#include "LiveAgent/AgentService.h"

#include <string>

namespace velarion::agentService {

namespace {

JSONValue perform(AgentCall& call, const EngineCommand& command, const std::string& words) {
    call.host.agentPerform(command);
    call.note("Agent: " + words);
    return stateSummary(call);
}

bool onOff(const JSONValue& arguments) {
    const JSONValue* on = arguments["on"];
    const std::optional<bool> value = on ? on->boolValue() : std::nullopt;
    if (!value) throw AgentFailure("on must be true or false.");
    return *value;
}

JSONValue quit(AgentCall& call, const JSONValue& arguments, bool restart) {
    const std::optional<EngineState> state = call.host.engineState();
    const std::size_t playing = state ? state->running.size() : 0;
    if (playing != 0 && !flag(arguments["force"], false)) {
        throw AgentFailure(std::to_string(playing) + (playing == 1 ? " cue is" : " cues are") + " playing; " +
                           (restart ? "restarting" : "quitting") +
                           " would stop the screens and sound. Pass force: true to do it anyway.");
    }
    call.note(restart ? "Agent restarted Velarion" : "Agent quit Velarion");
    // The answer has to reach the agent before the process ends.
    call.scheduler.after(AgentService::quitDelaySeconds, [host = call.weakHost, restart] {
        if (const auto alive = host.lock()) alive->agentQuit(restart);
    });
    return JSONValue::Object{{restart ? "restarting" : "quitting", true}};
}

} // namespace

// The summary of a large show takes tens of milliseconds to build: the main
// loop only takes the snapshot, which shares the show's lists.
JSONValue getShow(AgentCall& call, const JSONValue&) {
    call.offMainLoop = [snapshot = showSnapshot(call)] { return showSummary(snapshot); };
    return JSONValue();
}

JSONValue getState(AgentCall& call, const JSONValue&) { return stateSummary(call); }

JSONValue readyCheck(AgentCall& call, const JSONValue&) {
    JSONValue::Array items;
    for (const ReadyItem& item : call.host.agentReadyItems()) {
        items.emplace_back(JSONValue::Object{{"group", toString(item.group)},
                                             {"status", toString(item.status)},
                                             {"title", item.title},
                                             {"detail", item.detail}});
    }
    return items;
}

JSONValue listDisplays(AgentCall& call, const JSONValue&) {
    JSONValue::Array displays;
    for (const DisplayInfo& display : call.host.agentDisplays()) {
        displays.emplace_back(JSONValue::Object{
            {"id", display.id},
            {"name", display.name},
            {"pixels", std::to_string(display.pixelWidth) + "×" + std::to_string(display.pixelHeight)},
            {"is_this_macs_main_screen", display.isMain},
        });
    }
    return displays;
}

JSONValue launchApp(AgentCall&, const JSONValue&) {
    // Reaching the application at all means it is running.
    return JSONValue::Object{{"running", true}};
}

JSONValue go(AgentCall& call, const JSONValue&) { return perform(call, command::Go{}, "GO"); }

JSONValue fireCue(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    const Cue& cue = findCue(arguments["cue"], show);
    return perform(call, command::Fire{cue.id}, "fired " + cue.name);
}

JSONValue setNext(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    const Cue& cue = findCue(arguments["cue"], show);
    return perform(call, command::SetNext{cue.id}, "set Next to " + cue.name);
}

JSONValue panic(AgentCall& call, const JSONValue&) { return perform(call, command::Panic{}, "Panic"); }

JSONValue pauseAll(AgentCall& call, const JSONValue&) {
    return perform(call, command::PauseAll{}, "paused all");
}

JSONValue resumeAll(AgentCall& call, const JSONValue&) {
    return perform(call, command::ResumeAll{}, "resumed all");
}

JSONValue talkOver(AgentCall& call, const JSONValue& arguments) {
    const bool on = onOff(arguments);
    return perform(call, command::SetTalkOver{on},
                   on ? "dipped the music to talk over it" : "brought the music back up");
}

JSONValue clear(AgentCall& call, const JSONValue& arguments) {
    const ClearTarget target = choice(arguments["target"], "target");
    const JSONValue* fade = arguments["fade"];
    const double seconds = std::max(0.0, fade ? fade->doubleValue().value_or(1) : 1);
    return perform(call, command::Clear{target, seconds}, "cleared " + std::string(toString(target)));
}

JSONValue safeSlide(AgentCall& call, const JSONValue& arguments) {
    const bool on = onOff(arguments);
    return perform(call, command::SetHolding{on}, on ? "safe slide up" : "safe slide down");
}

JSONValue slide(AgentCall& call, const JSONValue& arguments) {
    const std::string action = arguments["action"] ? arguments["action"]->stringValue().value_or("") : "";
    if (action == "next") return perform(call, command::NextSlide{}, "next slide");
    if (action == "previous") return perform(call, command::PreviousSlide{}, "previous slide");
    if (action == "goto") {
        const JSONValue* index = arguments["index"];
        const std::optional<std::int64_t> number = index ? index->intValue() : std::nullopt;
        if (!number || *number < 1 || *number > 1'000'000) throw AgentFailure("Give the slide number, from 1.");
        return perform(call, command::GoToSlide{static_cast<int>(*number - 1)}, "slide " + std::to_string(*number));
    }
    if (action == "section") {
        const Show show = call.show();
        const std::optional<EngineState> state = call.host.engineState();
        const Cue* cue = state && state->activeDeckCueID ? show.cue(*state->activeDeckCueID) : nullptr;
        const auto* slides = cue ? std::get_if<SlidesCue>(&cue->kind) : nullptr;
        const MediaItem* item = slides ? show.media(slides->deckID) : nullptr;
        if (!item || !item->deck || item->deck->groups.empty()) throw AgentFailure("No deck with sections is live.");
        const std::string key = text(arguments["section"], "section");
        const std::optional<int> index = item->deck->slide(key, state->activeSlide.value_or(0));
        if (!index) throw AgentFailure("The live deck has no section \"" + key + "\".");
        return perform(call, command::GoToDeckSlide{cue->id, *index}, "jumped to " + key);
    }
    throw AgentFailure("action must be next, previous, goto, or section.");
}

JSONValue sendMessage(AgentCall& call, const JSONValue& arguments) {
    const std::string words = arguments["text"] ? arguments["text"]->stringValue().value_or("") : "";
    const std::string to = arguments["to"] ? arguments["to"]->stringValue().value_or("") : "";
    const MessageTarget target = to == "audience" ? MessageTarget::audience : MessageTarget::stage;
    if (words.find_first_not_of(" \t\r\n") == std::string::npos) {
        return perform(call, command::ClearMessage{target}, "cleared message");
    }
    return perform(call, command::SendMessage{words, target}, "message: " + words);
}

JSONValue adjustTimer(AgentCall& call, const JSONValue& arguments) {
    const double seconds = arguments["seconds"]->doubleValue().value_or(0);
    return perform(call, command::AdjustTimer{seconds}, "adjusted the timer");
}

JSONValue quitApp(AgentCall& call, const JSONValue& arguments) { return quit(call, arguments, false); }

JSONValue restartApp(AgentCall& call, const JSONValue& arguments) { return quit(call, arguments, true); }

JSONValue lockShow(AgentCall& call, const JSONValue&) {
    call.host.agentLock();
    call.note("Agent entered Show Mode");
    return JSONValue::Object{{"locked", true}};
}

} // namespace velarion::agentService
