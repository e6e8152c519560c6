// The tools for the whole show (new, open, save, title, safe slide, undo and
// redo) and for its sections.

#include "LiveAgent/AgentServiceTools.h"

#include "LiveModel/TextTrimming.h"

#include <algorithm>
#include <string>

namespace velarion::agentService {

namespace {

JSONValue sectionResult(AgentCall& call, const Uuid& id) {
    const Show show = call.show();
    for (const Section& section : show.sections) {
        if (section.id == id) return sectionObject(ShowLookup(show), section);
    }
    throw AgentFailure("The section went before it could be read. get_show lists the sections.");
}

std::optional<int> wholeNumber(const JSONValue* value) {
    if (!value) return std::nullopt;
    const std::optional<std::int64_t> number = value->intValue();
    if (!number) return std::nullopt;
    return static_cast<int>(std::clamp<std::int64_t>(*number, -1'000'000, 1'000'000));
}

// A position from 1, made zero-based and kept inside 0 ... count.
int position(int fromOne, std::size_t count) {
    return std::clamp(fromOne - 1, 0, static_cast<int>(count));
}

JSONValue titles(const Show& show) {
    return JSONValue::Object{{"title", show.title}, {"subtitle", show.subtitle}};
}

} // namespace

JSONValue newShow(AgentCall& call, const JSONValue& arguments) {
    const std::string title = text(arguments["title"], "title");
    ShowTemplate showTemplate = ShowTemplate::blank;
    if (const JSONValue* given = arguments["template"]) {
        const auto parsed = parseEnum<ShowTemplate>(given->stringValue().value_or(""));
        if (!parsed) throw AgentFailure("template isn't one of the allowed values.");
        showTemplate = *parsed;
    }
    std::optional<std::filesystem::path> saveTo;
    if (arguments["path"]) saveTo = url(text(arguments["path"], "path"), true);
    call.host.agentNewShow(title, showTemplate, saveTo);
    call.note("Agent started the show " + title);
    return showSummary(call);
}

JSONValue openShow(AgentCall& call, const JSONValue& arguments) {
    const std::optional<std::string> given = arguments["path"] ? arguments["path"]->stringValue() : std::nullopt;
    const std::string path = given ? trimmingWhitespace(*given) : std::string();
    if (path.empty()) throw AgentFailure("Give the show's path.");
    call.host.agentOpenShow(url(path, true));
    call.note("Agent opened " + call.show().title);
    return showSummary(call);
}

JSONValue saveShow(AgentCall& call, const JSONValue& arguments) {
    std::optional<std::filesystem::path> to;
    if (arguments["path"]) to = url(text(arguments["path"], "path"), true);
    call.host.agentSaveShow(to);
    call.note("Agent saved the show");
    const std::optional<ShowPackage> package = call.host.package();
    return JSONValue::Object{{"saved", true},
                             {"file", package ? JSONValue(package->url().string()) : JSONValue()}};
}

JSONValue setTitle(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    const std::string title = text(arguments["title"], "title");
    std::string subtitle = show.subtitle;
    if (const JSONValue* given = arguments["subtitle"]) subtitle = trimmingWhitespace(given->stringValue().value_or(""));
    apply(call, edit::SetTitle{title, subtitle});
    return titles(call.show());
}

JSONValue setSafeSlide(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    HoldingScreen holding = show.holding;
    if (const JSONValue* title = arguments["title"]) holding.title = trimmingWhitespace(title->stringValue().value_or(""));
    if (const JSONValue* subtitle = arguments["subtitle"]) {
        holding.subtitle = trimmingWhitespace(subtitle->stringValue().value_or(""));
    }
    if (const JSONValue* image = arguments["image"]) {
        if (trimmingWhitespace(image->stringValue().value_or("")).empty()) {
            holding.mediaID.reset();
        } else {
            holding.mediaID = findMedia(image, show, "image", MediaKind::image).id;
        }
    }
    apply(call, edit::SetHolding{holding});
    const Show changed = call.show();
    return JSONValue::Object{{"title", changed.holding.title}, {"subtitle", changed.holding.subtitle}};
}

JSONValue undo(AgentCall& call, const JSONValue&) {
    if (!call.host.agentUndo()) throw AgentFailure("There's nothing to undo.");
    call.note("Agent undid the last change");
    return showSummary(call);
}

JSONValue redo(AgentCall& call, const JSONValue&) {
    if (!call.host.agentRedo()) throw AgentFailure("There's nothing to redo.");
    call.note("Agent redid the last change");
    return showSummary(call);
}

JSONValue addSection(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    Section section;
    section.id = Uuid::random();
    section.title = text(arguments["title"], "title");
    const std::optional<int> start = clock(arguments["start"]);
    std::optional<int> minutes = wholeNumber(arguments["minutes"]);
    if (minutes && *minutes <= 0) minutes.reset();
    std::optional<int> at;
    if (const std::optional<int> index = wholeNumber(arguments["index"])) at = position(*index, show.sections.size());

    apply(call, edit::AddSection{section, at});
    if (start || minutes) apply(call, edit::SetSectionSchedule{section.id, start, minutes});
    return sectionResult(call, section.id);
}

JSONValue updateSection(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    const Section& section = findSection(arguments["section"], show);
    const Uuid id = section.id;
    // Everything is read before the first edit goes in.
    std::optional<std::string> title;
    if (arguments["title"]) title = text(arguments["title"], "title");
    const bool reschedules = arguments["start"] || arguments["minutes"];
    std::optional<int> start = section.plannedStart;
    std::optional<int> minutes = section.plannedMinutes;
    if (arguments["start"]) start = clock(arguments["start"]);
    if (arguments["minutes"]) {
        minutes = wholeNumber(arguments["minutes"]);
        if (minutes && *minutes <= 0) minutes.reset();
    }
    const std::optional<int> index = wholeNumber(arguments["index"]);

    if (title) apply(call, edit::RenameSection{id, *title});
    if (reschedules) apply(call, edit::SetSectionSchedule{id, start, minutes});
    if (index) apply(call, edit::MoveSection{id, position(*index, show.sections.size() - 1)});
    return sectionResult(call, id);
}

JSONValue deleteSection(AgentCall& call, const JSONValue& arguments) {
    const Show show = call.show();
    const Section& section = findSection(arguments["section"], show);
    const std::string title = section.title;
    apply(call, edit::DeleteSection{section.id});
    return JSONValue::Object{{"deleted", true}, {"title", title}};
}

} // namespace velarion::agentService
