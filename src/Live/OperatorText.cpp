#include "Live/OperatorText.h"

#include "LiveModel/ShowPackage.h"

#include <cmath>
#include <cstdio>
#include <iterator>
#include <string_view>
#include <system_error>

namespace velarion {

namespace fs = std::filesystem;

std::string errorText(const std::exception& error) {
    if (const auto* package = dynamic_cast<const ShowPackageError*>(&error)) return package->message();
    if (const auto* file = dynamic_cast<const fs::filesystem_error*>(&error)) {
        // Our own file operations raise invalid_argument with a sentence of
        // their own; for the system's errors its words are what helps.
        if (file->code() != std::errc::invalid_argument) return file->code().message();
        std::string_view text = file->what();
        constexpr std::string_view prefix = "filesystem error: ";
        if (text.starts_with(prefix)) text.remove_prefix(prefix.size());
        const std::string suffix = ": " + file->code().message();
        if (const auto end = text.find(suffix); end != std::string_view::npos) text = text.substr(0, end);
        return std::string(text);
    }
    return error.what();
}

std::string fileByteCountText(std::int64_t bytes) {
    if (bytes == 0) return "Zero KB";
    if (bytes == 1) return "1 byte";
    if (bytes < 1000) return std::to_string(bytes) + " bytes";
    struct Unit {
        const char* name;
        double size;
        int decimals;
    };
    constexpr Unit units[] = {{"KB", 1e3, 0}, {"MB", 1e6, 1}, {"GB", 1e9, 2}, {"TB", 1e12, 2}};
    constexpr std::size_t unitCount = std::size(units);
    const auto value = static_cast<double>(bytes);
    std::size_t index = 0;
    while (index + 1 < unitCount && value >= units[index + 1].size) ++index;
    // 999,999 bytes would read "1000 KB": that is 1 MB.
    const double scale = std::pow(10.0, units[index].decimals);
    if (index + 1 < unitCount && std::round(value / units[index].size * scale) / scale >= 1000) ++index;
    const Unit* unit = &units[index];
    char text[64];
    std::snprintf(text, sizeof text, "%.*f %s", unit->decimals, value / unit->size, unit->name);
    return text;
}

std::string displayName(const fs::path& location) {
    return standardized(location).stem().string();
}

fs::path standardized(const fs::path& location) {
    std::error_code error;
    fs::path path = fs::absolute(location, error);
    if (error) path = location;
    path = path.lexically_normal();
    if (!path.has_filename() && path.has_parent_path() && path != path.root_path())
        path = path.parent_path();
    return path;
}

} // namespace velarion
