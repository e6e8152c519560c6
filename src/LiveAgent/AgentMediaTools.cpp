// import_media: files copied in by the application's import path, then each
// item added as an edit of its own, and a cue for each at the end when asked.

#include "LiveAgent/AgentServiceTools.h"

namespace velarion::agentService {

namespace {

Cue cueFor(const MediaItem& item) {
    Cue cue;
    cue.id = Uuid::random();
    cue.name = item.name;
    switch (item.kind) {
    case MediaKind::video: cue.kind = VideoCue{item.id}; break;
    case MediaKind::image: cue.kind = ImageCue{item.id}; break;
    case MediaKind::audio: cue.kind = AudioCue{item.id}; break;
    case MediaKind::deck: cue.kind = SlidesCue{item.id, 0}; break;
    }
    return cue;
}

std::string failureLines(const std::vector<ImportFailure>& failures) {
    std::string lines;
    for (const ImportFailure& failure : failures) {
        if (!lines.empty()) lines += "\n";
        lines += failure.fileName + ": " + failure.reason;
    }
    return lines;
}

// Adds what came in, keeping every step that went through when a later one
// is refused.
JSONValue addImported(AgentCall& call, const ImportResult& result, bool addCues) {
    if (result.items.empty() && !result.failures.empty()) {
        throw AgentFailure("No file could be imported.\n" + failureLines(result.failures));
    }
    JSONValue::Array items;
    for (const MediaItem& item : result.items) {
        if (const auto refused = call.host.agentEdit(edit::AddMedia{item})) throw AgentFailure(*refused);
        JSONValue::Object object = *mediaObject(item).objectValue();
        if (addCues) {
            const Cue cue = cueFor(item);
            if (const auto refused = call.host.agentEdit(edit::InsertCue{cue, std::nullopt, std::nullopt})) {
                throw AgentFailure(*refused);
            }
            object["cue_id"] = cue.id.text();
        }
        items.emplace_back(std::move(object));
    }
    const std::size_t count = result.items.size();
    call.note("Agent imported " + std::to_string(count) + " file" + (count == 1 ? "" : "s"));
    JSONValue::Array failed;
    for (const ImportFailure& failure : result.failures) {
        failed.emplace_back(JSONValue::Object{{"file", failure.fileName}, {"reason", failure.reason}});
    }
    return JSONValue::Object{{"imported", std::move(items)}, {"failed", std::move(failed)}};
}

} // namespace

JSONValue importMedia(AgentCall& call, const JSONValue& arguments) {
    call.show();
    std::vector<std::filesystem::path> files;
    if (const JSONValue* paths = arguments["paths"]; paths && paths->arrayValue()) {
        for (const JSONValue& path : *paths->arrayValue()) {
            const std::optional<std::string> text = path.stringValue();
            if (text && !text->empty()) files.push_back(url(*text, false));
        }
    }
    if (files.empty()) throw AgentFailure("Give one or more file paths.");
    const bool addCues = flag(arguments["add_cues"], false);
    call.afterHost = [files = std::move(files), addCues, weakHost = call.weakHost](AgentCall::Finish finish) {
        const std::shared_ptr<AgentHost> host = weakHost.lock();
        if (!host) return finish([](AgentCall&) -> JSONValue { throw AgentFailure("Velarion isn't ready."); });
        host->agentImportMedia(files, [finish, addCues](std::optional<ImportResult> result,
                                                        const std::string& failure) {
            finish([&](AgentCall& later) -> JSONValue {
                if (!result) throw AgentFailure(failure);
                return addImported(later, *result, addCues);
            });
        });
    };
    return nullptr;
}

} // namespace velarion::agentService
