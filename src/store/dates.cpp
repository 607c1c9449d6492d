#include "store/dates.hpp"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>

namespace velmora {

namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::sys_seconds;

constexpr double firstSecond = -62135596800.0;  // 0001-01-01T00:00:00Z
constexpr double lastSecond = 253402300799.0;   // 9999-12-31T23:59:59Z

double wholeSecondsInRange(double secs) {
    const double whole = std::floor(secs);
    if (!(whole >= firstSecond)) return firstSecond;  // also NaN
    return whole > lastSecond ? lastSecond : whole;
}

// `count` decimal digits at `pos`, or -1.
int digitsAt(std::string_view text, std::size_t pos, std::size_t count) {
    int value = 0;
    for (std::size_t i = pos; i < pos + count; ++i) {
        const char c = text[i];
        if (c < '0' || c > '9') return -1;
        value = value * 10 + (c - '0');
    }
    return value;
}

// Seconds east of UTC for "Z" or "+HH:MM"/"-HH:MM"; nothing for anything else.
std::optional<int> zoneOffset(std::string_view zone) {
    if (zone == "Z") return 0;
    if (zone.size() != 6 || (zone[0] != '+' && zone[0] != '-') || zone[3] != ':') {
        return std::nullopt;
    }
    const int hours = digitsAt(zone, 1, 2);
    const int minutes = digitsAt(zone, 4, 2);
    if (hours < 0 || hours > 23 || minutes < 0 || minutes > 59) return std::nullopt;
    const int offset = hours * 3600 + minutes * 60;
    return zone[0] == '-' ? -offset : offset;
}

bool separatorsMatch(std::string_view text) {
    return text[4] == '-' && text[7] == '-' && text[10] == 'T' && text[13] == ':' &&
           text[16] == ':';
}

}  // namespace

std::string rfc3339(Timestamp instant) {
    const auto whole = static_cast<std::int64_t>(wholeSecondsInRange(instant.secondsSinceEpoch));
    const sys_seconds tp{seconds{whole}};
    const auto day = std::chrono::floor<days>(tp);
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss time{tp - day};
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", int{date.year()},
                  unsigned{date.month()}, unsigned{date.day()},
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text;
}

std::optional<Timestamp> parseRFC3339(std::string_view text) {
    constexpr std::size_t zoneStart = 19;
    if (text.size() <= zoneStart || !separatorsMatch(text)) return std::nullopt;
    const auto offset = zoneOffset(text.substr(zoneStart));
    const int year = digitsAt(text, 0, 4);
    const int month = digitsAt(text, 5, 2);
    const int day = digitsAt(text, 8, 2);
    const int hour = digitsAt(text, 11, 2);
    const int minute = digitsAt(text, 14, 2);
    const int second = digitsAt(text, 17, 2);
    if (!offset || year < 1 || month < 1 || month > 12 || day < 1 || day > 31 || hour < 0 ||
        hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year{year},
                                           std::chrono::month{static_cast<unsigned>(month)},
                                           std::chrono::day{static_cast<unsigned>(day)}};
    if (!date.ok()) return std::nullopt;  // 30 February and the like
    const sys_seconds instant = std::chrono::sys_days{date} + std::chrono::hours{hour} +
                                std::chrono::minutes{minute} + seconds{second} - seconds{*offset};
    return Timestamp::fromSeconds(static_cast<double>(instant.time_since_epoch().count()));
}

}  // namespace velmora
