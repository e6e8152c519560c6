#include "LiveModel/TimeText.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <vector>

namespace velarion::TimeText {

namespace {

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front()))) text.remove_prefix(1);
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
    return text;
}

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> fields;
    std::size_t start = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i == text.size() || text[i] == separator) {
            fields.push_back(text.substr(start, i - start));
            start = i + 1;
        }
    }
    return fields;
}

std::optional<double> decimal(std::string_view text) {
    text = trimmed(text);
    if (text.empty()) return std::nullopt;
    double value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

std::optional<int> whole(std::string_view text) {
    text = trimmed(text);
    if (text.empty()) return std::nullopt;
    int value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

} // namespace

std::string duration(double seconds) {
    const char* sign = seconds < 0 ? "\u2212" : "";
    const double magnitude = std::isfinite(seconds) ? std::floor(std::fabs(seconds)) : 0;
    const long long total = static_cast<long long>(magnitude);
    const long long hours = total / 3600, minutes = (total % 3600) / 60, rest = total % 60;
    char text[64];
    if (hours > 0) {
        std::snprintf(text, sizeof text, "%s%lld:%02lld:%02lld", sign, hours, minutes, rest);
    } else {
        std::snprintf(text, sizeof text, "%s%lld:%02lld", sign, minutes, rest);
    }
    return text;
}

std::string clock(int minuteOfDay) {
    const int hour24 = ((minuteOfDay / 60) % 24 + 24) % 24;
    const int minute = ((minuteOfDay % 60) + 60) % 60;
    const int hour12 = hour24 % 12 == 0 ? 12 : hour24 % 12;
    char text[32];
    std::snprintf(text, sizeof text, "%d:%02d %s", hour12, minute, hour24 < 12 ? "AM" : "PM");
    return text;
}

double timerSeconds(double value, bool isCountUp) {
    if (!std::isfinite(value)) return 0;
    return (isCountUp || value < 0) ? std::floor(value) : std::ceil(value);
}

std::optional<double> seconds(std::string_view text) {
    const auto fields = split(trimmed(text), ':');
    if (fields.empty() || fields.size() > 3) return std::nullopt;
    double total = 0;
    for (auto field : fields) {
        auto value = decimal(field);
        if (!value) return std::nullopt;
        total = total * 60 + *value;
    }
    return total;
}

std::optional<int> minuteOfDay(std::string_view text) {
    std::string upper;
    for (char c : trimmed(text)) upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    std::string_view rest = upper;
    std::optional<bool> isPM;
    if (rest.size() >= 2 && (rest.ends_with("AM") || rest.ends_with("PM"))) {
        isPM = rest.ends_with("PM");
        rest.remove_suffix(2);
    }
    const auto fields = split(trimmed(rest), ':');
    if (fields.empty() || fields.size() > 2) return std::nullopt;
    auto hour = whole(fields[0]);
    auto minute = fields.size() == 2 ? whole(fields[1]) : std::optional<int>(0);
    if (!hour || !minute || *minute < 0 || *minute > 59) return std::nullopt;
    if (isPM) {
        if (*hour < 1 || *hour > 12) return std::nullopt;
        *hour = *hour % 12 + (*isPM ? 12 : 0);
    } else if (*hour < 0 || *hour > 23) {
        return std::nullopt;
    }
    return *hour * 60 + *minute;
}

} // namespace velarion::TimeText
