// NDI sources for agents: what discovery finds, and a found source added to
// the library as a live input.
#include "LiveAgent/AgentServiceTools.h"

namespace velarion::agentService {

namespace {
constexpr double defaultWaitSeconds = 2;
constexpr const char* discoveryNote =
    "Discovery does not confirm that a source is ready to play. Rehearse its picture and sound.";
} // namespace

JSONValue listNDISources(AgentCall& call, const JSONValue& arguments) {
    const JSONValue* wait = arguments["wait_seconds"];
    const double seconds = wait && wait->doubleValue() ? *wait->doubleValue() : defaultWaitSeconds;
    // Discovery waits on the network, so the answer is built off the main loop.
    call.offMainLoop = [finder = call.host.agentNDISources(), seconds]() -> JSONValue {
        std::vector<NDISource> found;
        try {
            if (finder) found = finder->sources(seconds);
        } catch (const NDIError& error) {
            throw AgentFailure(error.what());
        }
        JSONValue::Array sources;
        for (const NDISource& source : found)
            sources.emplace_back(JSONValue::Object{{"name", source.name},
                                                   {"url", source.url ? JSONValue(*source.url) : JSONValue()}});
        return JSONValue::Object{{"sources", std::move(sources)}, {"note", discoveryNote}};
    };
    return JSONValue();
}

JSONValue addNDISource(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    NDISource source{text(arguments["name"], "name"), std::nullopt};
    if (const JSONValue* url = arguments["url"]; url && !url->isNull()) {
        if (auto given = url->stringValue(); given && !given->empty()) source.url = *given;
    }
    MediaItem item;
    item.id = Uuid::random();
    item.kind = MediaKind::video;
    item.name = source.name;
    item.ndiSource = source;
    apply(call, edit::AddMedia{item});
    JSONValue::Object result{{"media", mediaObject(item)}};
    if (flag(arguments["add_cue"], false)) {
        Cue cue;
        cue.id = Uuid::random();
        const JSONValue* named = arguments["cue_name"];
        const std::optional<std::string> cueName = named ? named->stringValue() : std::nullopt;
        cue.name = cueName && !cueName->empty() ? *cueName : source.name;
        cue.kind = VideoCue{item.id};
        apply(call, edit::InsertCue{cue, std::nullopt, std::nullopt});
        result["cue"] = cueObject(call.show(), cue.id);
    }
    return result;
}

} // namespace velarion::agentService
