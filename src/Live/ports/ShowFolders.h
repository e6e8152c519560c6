#pragma once
// ShowFolders: where shows live outside any package.
//
// - `showsFolder`: "Velarion Shows" in the user's documents folder (the
//   XDG documents folder, the home folder when there is none); the place
//   save panels offer. AppModel creates it at start, ignoring a failure.
// - `unsavedFolder`: the scratch area, "Velarion/Unsaved" under
//   $XDG_DATA_HOME (default ~/.local/share). New shows get a package here
//   so that autosave and crash reopening work from the first minute. Its
//   path must end in "Velarion/Unsaved": that text is how a package is known
//   to be scratch.
//
// Contract. Answers are computed on each call from the environment and may
// name folders that don't exist yet; nothing is created here. Any thread.
//
// Implementations: StandardShowFolders below; tests point both into a
// temporary folder.

#include <filesystem>

namespace velarion {

class ShowFolders {
public:
    virtual ~ShowFolders() = default;

    virtual std::filesystem::path showsFolder() const = 0;
    virtual std::filesystem::path unsavedFolder() const = 0;
};

// The user's real folders, as ShowPackage finds them.
class StandardShowFolders final : public ShowFolders {
public:
    std::filesystem::path showsFolder() const override;
    std::filesystem::path unsavedFolder() const override;
};

} // namespace velarion
