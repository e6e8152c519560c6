#pragma once
// Small shows, cues and helpers shared by the edit, history and group tests.

#include "ShowBuilder.h"

#include "LiveModel/ShowEdit.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace velarion::editTesting {

inline Cue makeCue(std::string name, Follow follow = Follow::manual, bool enabled = true,
                   CueKind kind = GraphicCue{}) {
    return testing::makeCue(std::move(name), std::move(kind), follow, enabled);
}
using testing::makeSection;
inline Show makeShow(std::vector<Section> sections) { return testing::makeShow("Sunday", std::move(sections)); }

inline CueGroup makeGroup(std::string name, std::vector<Uuid> cueIDs) {
    return CueGroup{Uuid::random(), std::move(name), std::move(cueIDs), false};
}

// Cue names in show order, section by section joined with "|": "A B|C".
inline std::string layout(const Show& show) {
    std::string text;
    for (std::size_t s = 0; s < show.sections.size(); ++s) {
        if (s > 0) text += "|";
        const auto& cues = show.sections[s].cues;
        for (std::size_t i = 0; i < cues.size(); ++i) {
            if (i > 0) text += " ";
            text += cues[i].name;
        }
    }
    return text;
}

inline std::string names(const std::vector<const Cue*>& cues) {
    std::string text;
    for (const Cue* cue : cues) text += (text.empty() ? "" : " ") + cue->name;
    return text;
}

inline const Cue& named(const Show& show, const std::string& name) {
    for (const Cue* cue : show.allCues()) {
        if (cue->name == name) return *cue;
    }
    throw std::invalid_argument("no cue named " + name);
}

// The operator's words for a refused call, or "accepted".
inline std::string refusal(const std::function<void()>& call) {
    try {
        call();
    } catch (const ShowEditError& error) {
        return error.errorDescription();
    }
    return "accepted";
}

inline std::string refusal(const ShowEdit& edit, const Show& show) {
    return refusal([&] { apply(edit, show); });
}

} // namespace velarion::editTesting
