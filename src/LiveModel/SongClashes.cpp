#include "LiveModel/Show.h"
#include "LiveModel/StreamApp.h"

#include <array>

namespace velarion {

std::vector<SongClash> Show::songClashes() const {
    std::vector<SongClash> clashes;
    // The last enabled cue of each app in the bundle being walked. A bundle
    // is a cue and the With Previous cues after it, as GO fires them: a
    // disabled cue doesn't play but doesn't break the bundle either.
    std::array<const Cue*, enumCount<StreamApp>()> lastOfApp{};
    for (const Cue* cue : allCues()) {
        if (cue->follow != Follow::withPrevious) lastOfApp.fill(nullptr);
        if (!cue->isEnabled) continue;
        const std::optional<StreamApp> app = streamApp(cue->kind);
        if (!app) continue;
        const Cue*& last = lastOfApp[static_cast<std::size_t>(*app)];
        if (last != nullptr) clashes.push_back({last, cue});
        last = cue;
    }
    return clashes;
}

} // namespace velarion
