// The tools for cues and cue groups. Each checks and builds everything
// first, then makes one edit.

#include "LiveAgent/AgentServiceTools.h"

#include "LiveModel/CueGroups.h"
#include "LiveModel/ShowEditError.h"

#include <algorithm>
#include <string>
#include <vector>

namespace velarion::agentService {

namespace {

JSONValue groupResult(AgentCall& call, const Uuid& id) {
    const Show show = call.show();
    if (show.cueGroups) {
        for (const CueGroup& group : *show.cueGroups) {
            if (group.id == id) return groupObject(group);
        }
    }
    throw AgentFailure("The cue group went before it could be read. get_show lists the groups.");
}

} // namespace

JSONValue addCue(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    const std::string type = text(arguments["type"], "type");
    validateCueArguments(arguments, type);
    Cue cue;
    cue.id = Uuid::random();
    cue.kind = makeKind(arguments, type, show, std::nullopt);
    cue.name = defaultName(type, cue.kind, arguments, show);
    cue.follow = Follow::manual;
    applyCommon(arguments, cue, show);

    std::optional<Uuid> section;
    std::optional<Uuid> after;
    if (arguments["section"]) section = findSection(arguments["section"], show).id;
    if (arguments["after"]) after = findCue(arguments["after"], show).id;
    apply(call, edit::InsertCue{cue, section, after});
    return cueObject(call.show(), cue.id);
}

JSONValue updateCue(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    Cue cue = findCue(arguments["cue"], show);
    const std::string_view type = cueType(cue.kind);
    validateCueArguments(arguments, type);
    cue.kind = makeKind(arguments, type, show, cue.kind);
    applyCommon(arguments, cue, show);
    apply(call, edit::UpdateCue{cue});

    JSONValue::Object result = *cueObject(call.show(), cue.id).objectValue();
    JSONValue::Object accepted = *arguments.objectValue();
    accepted.erase("cue");
    result["accepted_changes"] = std::move(accepted);
    return result;
}

JSONValue deleteCue(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    const Cue& cue = findCue(arguments["cue"], show);
    const std::string name = cue.name;
    apply(call, edit::DeleteCue{cue.id});
    return JSONValue::Object{{"deleted", true}, {"name", name}};
}

JSONValue moveCue(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    const Cue& cue = findCue(arguments["cue"], show);
    const Section& section = findSection(arguments["section"], show);
    const std::int64_t index = std::clamp<std::int64_t>(arguments["index"]->intValue().value_or(1), 1, 1'000'000);
    apply(call, edit::MoveCue{cue.id, section.id, static_cast<int>(index - 1)});
    return cueObject(call.show(), cue.id);
}

JSONValue createCueGroup(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    CueGroup group;
    group.id = Uuid::random();
    group.name = text(arguments["name"], "group name");
    // Every reference is resolved first, so an unknown cue is named as such.
    for (const JSONValue& reference : *arguments["cues"]->arrayValue())
        group.cueIDs.push_back(findCue(&reference, show).id);
    if (group.cueIDs.size() < 2) throw AgentFailure("A cue group needs at least two cues.");
    for (auto id = group.cueIDs.begin(); id != group.cueIDs.end(); ++id) {
        if (std::find(std::next(id), group.cueIDs.end(), *id) != group.cueIDs.end())
            throw AgentFailure("A cue was selected more than once. Give each group member once.");
    }
    group.repeats = flag(arguments["repeat"], false);
    try {
        group = validatedCueGroup(show, group);
    } catch (const ShowEditError& refused) {
        throw AgentFailure(refused.errorDescription());
    }
    apply(call, edit::CreateCueGroup{group});
    return groupResult(call, group.id);
}

JSONValue updateCueGroup(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    CueGroup group = findCueGroup(arguments["group"], show);
    if (arguments["name"]) group.name = text(arguments["name"], "group name");
    group.repeats = flag(arguments["repeat"], group.repeats);
    apply(call, edit::UpdateCueGroup{group});
    return groupResult(call, group.id);
}

JSONValue removeCueGroup(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    const CueGroup group = findCueGroup(arguments["group"], show);
    apply(call, edit::RemoveCueGroup{group.id});
    JSONValue::Array ids;
    for (const Uuid& id : group.cueIDs) ids.emplace_back(id.text());
    return JSONValue::Object{{"removed", true}, {"name", group.name}, {"cue_ids", std::move(ids)}};
}

} // namespace velarion::agentService
