#pragma once
// The demo show as a package: walk-in music made here, a song as lyric
// slides, a lower third, a countdown, a message and a clear, in the
// presentation template's sections; with a video cue when a clip is given.
// Used by `make run` (velarion-demo-show) and the console's snapshots.
//
// Thread: any; writes only under `out`, which it replaces. Throws on a
// failed write.

#include <filesystem>
#include <optional>

namespace velarion {

std::filesystem::path buildDemoShow(const std::filesystem::path& out,
                                    const std::optional<std::filesystem::path>& clip = std::nullopt);

} // namespace velarion
