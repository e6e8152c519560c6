// Clears: taking pictures, sound and messages off by target.

#include "LiveEngine/LiveEngine.h"

namespace velarion {

void LiveEngine::clear(ClearTarget target, double fadeSeconds, bool preservingGroup,
                       const std::optional<Uuid>& sparing) {
    log(HistoryEntry::Kind::clear, "Cleared " + std::string(toString(target)));
    const auto stopWhere = [&](auto&& matches) {
        std::vector<Uuid> chosen;
        for (const Uuid& id : runOrder_)
            if (const Run* run = findRun(id); run && id != sparing && matches(*run))
                chosen.push_back(id);
        for (const Uuid& id : chosen) stop(id, fadeSeconds);
    };
    switch (target) {
    case ClearTarget::slides: clearLayer(LayerKind::slides, fadeSeconds); break;
    case ClearTarget::media: clearLayer(LayerKind::media, fadeSeconds); break;
    case ClearTarget::graphics: clearLayer(LayerKind::graphics, fadeSeconds); break;
    case ClearTarget::music:
        stopWhere([&](const Run& run) { return index_.soundRole(run.cue) == SoundRole::music; });
        break;
    case ClearTarget::messages:
        stopWhere([](const Run& run) { return std::holds_alternative<MessageCue>(run.cue.kind); });
        clearMessage(MessageTarget::stage);
        clearMessage(MessageTarget::audience);
        break;
    case ClearTarget::everything:
        if (!preservingGroup) cancelPlaybackGroup();
        ports_.outputs.clearDiagnostics();
        stopWhere([](const Run&) { return true; });
        stack_.clearAll(fadeSeconds);
        clearMessage(MessageTarget::stage);
        clearMessage(MessageTarget::audience);
        break;
    }
}

void LiveEngine::clearLayer(LayerKind kind, double fadeSeconds) {
    // Any entry of the run on that layer counts, not only its lowest: a deck
    // also holds the background, a full-screen countdown its backdrop.
    std::vector<Uuid> shown;
    for (const Uuid& id : runOrder_)
        if (stack_.entry(id, kind) != nullptr) shown.push_back(id);
    for (const Uuid& id : shown) stop(id, fadeSeconds);
    // What has no run, such as a held last frame, goes too.
    stack_.clear(kind, fadeSeconds);
}

} // namespace velarion
