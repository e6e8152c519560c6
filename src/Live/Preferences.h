#pragma once
// Preferences: the operator's settings, one JSON object in one file,
// $XDG_CONFIG_HOME/Velarion/preferences.json (default ~/.config). Its
// top-level keys are the "live.*" keys below; a person may write the file
// before a start, e.g. {"live.agent.run": true, "live.agent.edit": true}.
//
// Contract.
// - Reading never throws. A missing file reads as all defaults; so does an
//   unreadable or damaged one, which is left in place and not overwritten
//   until a key is set. A stored value of the wrong type reads as absent.
//   Keys this build doesn't know are kept as they are.
// - Every `set` and `remove` rewrites the whole file atomically (temporary
//   file, flushed to disk, renamed over the old one). The value holds in
//   memory even when the write fails; the call then returns false and
//   `lastWriteError` says why.
// - The file is read once, at construction; later changes by others are not
//   seen. Main thread only.

#include <nlohmann/json.hpp>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace velarion {

// A key with the type of its value and the value it reads as when absent.
template <class T> struct PreferenceKey {
    std::string_view name;
    T fallback;
};

namespace preferenceKeys {
// The package open now; see ShowSession. Absent by default (empty text).
inline const PreferenceKey<std::string> openShow{"live.session.openShow", ""};
inline const PreferenceKey<std::vector<std::string>> recents{"live.recents", {}};
inline const PreferenceKey<bool> agentRun{"live.agent.run", false};
inline const PreferenceKey<bool> agentEdit{"live.agent.edit", false};
inline const PreferenceKey<bool> showLibrary{"live.showLibrary", true};
inline const PreferenceKey<bool> showInspector{"live.showInspector", true};
inline const PreferenceKey<bool> previewShowsSpeaker{"live.previewShowsSpeaker", false};
inline const PreferenceKey<double> libraryWidth{"live.libraryWidth", 300};
inline const PreferenceKey<double> inspectorHeight{"live.inspectorHeight", 300};
inline const PreferenceKey<double> railWidth{"live.railWidth", 440};
// The rail's panels top to bottom, their names joined by commas.
inline const PreferenceKey<std::string> railOrder{"live.railOrder", "program,preview,timer"};
// The MIDI settings as one JSON object, kept as it is until MIDI reads it.
inline const PreferenceKey<nlohmann::json> midi{"live.midi", nlohmann::json::object()};
// The operator's music player for `music` cues: an MPRIS bus name or its last
// part ("rhythmbox"); empty for the first player running other than Spotify.
inline const PreferenceKey<std::string> musicPlayer{"live.musicPlayer", ""};
} // namespace preferenceKeys

class Preferences {
public:
    // Reads `file` now.
    explicit Preferences(std::filesystem::path file);

    // $XDG_CONFIG_HOME/Velarion/preferences.json, ~/.config when unset.
    static std::filesystem::path standardFile();

    const std::filesystem::path& file() const { return file_; }
    // True when the file was there but couldn't be read or wasn't a JSON
    // object: it is left alone until the first `set`.
    bool wasDamaged() const { return wasDamaged_; }

    // The stored value, none when absent or of the wrong type.
    template <class T> std::optional<T> stored(const PreferenceKey<T>& key) const;
    // The stored value, else the key's fallback.
    template <class T> T value(const PreferenceKey<T>& key) const {
        return stored(key).value_or(key.fallback);
    }

    template <class T> bool set(const PreferenceKey<T>& key, const std::type_identity_t<T>& value);
    bool remove(std::string_view name);

    const std::string& lastWriteError() const { return lastWriteError_; }

private:
    bool write();

    std::filesystem::path file_;
    nlohmann::json values_ = nlohmann::json::object();
    bool wasDamaged_ = false;
    std::string lastWriteError_;
};

} // namespace velarion
