#include "Live/Preferences.h"

#include "Live/OperatorText.h"
#include "LiveModel/FileAccess.h"

#include <cstdlib>
#include <new>
#include <pwd.h>
#include <unistd.h>

namespace velarion {

namespace fs = std::filesystem;

namespace {

// Far beyond any real preferences; a bigger file is taken as damaged.
constexpr std::size_t maxPreferencesBytes = 4u << 20;

template <class T> bool holds(const nlohmann::json& value);
template <> bool holds<bool>(const nlohmann::json& value) { return value.is_boolean(); }
template <> bool holds<double>(const nlohmann::json& value) { return value.is_number(); }
template <> bool holds<std::string>(const nlohmann::json& value) { return value.is_string(); }
template <> bool holds<std::vector<std::string>>(const nlohmann::json& value) {
    if (!value.is_array()) return false;
    for (const auto& entry : value)
        if (!entry.is_string()) return false;
    return true;
}
template <> bool holds<nlohmann::json>(const nlohmann::json& value) { return value.is_object(); }

fs::path homeFolder() {
    if (const char* home = std::getenv("HOME"); home && home[0] == '/') return home;
    if (const passwd* entry = ::getpwuid(::getuid()); entry && entry->pw_dir) return entry->pw_dir;
    return "/";
}

} // namespace

Preferences::Preferences(fs::path file) : file_(std::move(file)) {
    std::error_code error;
    if (!fs::exists(fs::symlink_status(file_, error))) return;
    try {
        auto content = fileAccess::readRegularFile(file_, maxPreferencesBytes);
        if (const auto* text = std::get_if<std::string>(&content)) {
            auto parsed = nlohmann::json::parse(*text, nullptr, /*allow_exceptions=*/false);
            if (parsed.is_object()) {
                values_ = std::move(parsed);
                return;
            }
        }
    } catch (const std::exception&) {
        // Unreadable: read as defaults, like a damaged file.
    }
    wasDamaged_ = true;
}

fs::path Preferences::standardFile() {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    // A relative value is invalid by the XDG rules and ignored.
    const fs::path folder = config && config[0] == '/' ? fs::path(config) : homeFolder() / ".config";
    return folder / "Velarion" / "preferences.json";
}

template <class T> std::optional<T> Preferences::stored(const PreferenceKey<T>& key) const {
    const auto found = values_.find(key.name);
    if (found == values_.end() || !holds<T>(*found)) return std::nullopt;
    return found->template get<T>();
}

template <class T>
bool Preferences::set(const PreferenceKey<T>& key, const std::type_identity_t<T>& value) {
    values_[std::string(key.name)] = value;
    return write();
}

bool Preferences::remove(std::string_view name) {
    if (values_.erase(std::string(name)) == 0) return true;
    return write();
}

bool Preferences::write() {
    try {
        fs::create_directories(file_.parent_path());
        fileAccess::writeAtomically(file_, values_.dump(2) + "\n");
        wasDamaged_ = false;
        lastWriteError_.clear();
        return true;
    } catch (const std::exception& error) {
        lastWriteError_ = errorText(error);
        return false;
    }
}

template std::optional<bool> Preferences::stored(const PreferenceKey<bool>&) const;
template std::optional<double> Preferences::stored(const PreferenceKey<double>&) const;
template std::optional<std::string> Preferences::stored(const PreferenceKey<std::string>&) const;
template std::optional<std::vector<std::string>>
Preferences::stored(const PreferenceKey<std::vector<std::string>>&) const;
template std::optional<nlohmann::json> Preferences::stored(const PreferenceKey<nlohmann::json>&) const;
template bool Preferences::set(const PreferenceKey<bool>&, const bool&);
template bool Preferences::set(const PreferenceKey<double>&, const double&);
template bool Preferences::set(const PreferenceKey<std::string>&, const std::string&);
template bool Preferences::set(const PreferenceKey<std::vector<std::string>>&,
                               const std::vector<std::string>&);
template bool Preferences::set(const PreferenceKey<nlohmann::json>&, const nlohmann::json&);

} // namespace velarion
