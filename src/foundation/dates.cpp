#include "foundation/dates.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <string_view>

#include "foundation/text.h"

namespace marlet::Dates {
namespace {

using namespace std::chrono;

constexpr std::array<std::string_view, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr std::array<std::string_view, 7> weekdays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

/// The ASCII digits of text from `at` on as a number; nothing when another character is there.
std::optional<int> digits(std::string_view text, std::size_t at, std::size_t count) {
    int value = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        if (i >= text.size() || text[i] < '0' || text[i] > '9') return std::nullopt;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

/// Whether text has the shape of a sample in which '0' stands for any digit, 'a' for any letter
/// and every other character for itself.
bool hasShape(std::string_view text, std::string_view sample) {
    return std::equal(text.begin(), text.end(), sample.begin(), sample.end(), [](char c, char s) {
        if (s == '0') return c >= '0' && c <= '9';
        if (s == 'a') return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        return c == s;
    });
}

struct Clock {
    std::optional<int> hour, minute, second;
};

/// "10:15:00" at a place of the text.
Clock clockAt(std::string_view text, std::size_t at) {
    return {digits(text, at, 2), digits(text, at + 3, 2), digits(text, at + 6, 2)};
}

std::optional<Moment> moment(year_month_day day, const Clock& clock) {
    if (!day.ok() || clock.hour > 23 || clock.minute > 59 || clock.second > 59) return std::nullopt;
    return Moment(sys_days(day)) + hours(*clock.hour) + minutes(*clock.minute) +
           seconds(*clock.second);
}

year_month_day dayOf(int y, int m, int d) {
    return year(y) / static_cast<unsigned>(m) / static_cast<unsigned>(d);
}

/// "Z", "+02:00" or "+0200" as seconds east; nothing for anything else.
std::optional<seconds> offsetOf(std::string_view zone) {
    if (zone == "Z") return seconds(0);
    const bool shaped = hasShape(zone, "+00:00") || hasShape(zone, "-00:00") ||
                        hasShape(zone, "+0000") || hasShape(zone, "-0000");
    if (!shaped) return std::nullopt;
    const seconds size = hours(*digits(zone, 1, 2)) + minutes(*digits(zone, zone.size() - 2, 2));
    return zone[0] == '-' ? -size : size;
}

}  // namespace

Moment now() {
    return floor<seconds>(system_clock::now());
}

std::string iso8601(Moment moment) {
    const sys_days day = floor<days>(moment);
    const year_month_day date(day);
    const hh_mm_ss time(moment - day);
    std::array<char, 64> buffer;
    const int length = std::snprintf(
        buffer.data(), buffer.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ",
        static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
        static_cast<unsigned>(date.day()), static_cast<int>(time.hours().count()),
        static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return {buffer.data(), static_cast<std::size_t>(length)};
}

std::optional<Moment> parseIso8601(const std::string& text) {
    constexpr std::string_view shape = "0000-00-00T00:00:00";
    const std::string_view view = text;
    if (!hasShape(view.substr(0, shape.size()), shape)) return std::nullopt;
    const auto offset = offsetOf(view.substr(shape.size()));
    if (!offset) return std::nullopt;
    const auto day = dayOf(*digits(view, 0, 4), *digits(view, 5, 2), *digits(view, 8, 2));
    const auto local = moment(day, clockAt(view, 11));
    if (!local) return std::nullopt;
    return *local - *offset;
}

std::optional<Moment> parseHttpDate(const std::string& text) {
    // RFC 9110, 5.6.7, IMF-fixdate. The day's name must be one, but isn't held against the date:
    // servers get it wrong and mean the date.
    if (!hasShape(text, "aaa, 00 aaa 0000 00:00:00 GMT")) return std::nullopt;
    const std::string_view view = text;
    const auto month = std::find(months.begin(), months.end(), view.substr(8, 3));
    const auto weekday = std::find(weekdays.begin(), weekdays.end(), view.substr(0, 3));
    if (month == months.end() || weekday == weekdays.end()) return std::nullopt;
    const auto number = static_cast<int>(month - months.begin()) + 1;
    return moment(dayOf(*digits(view, 12, 4), number, *digits(view, 5, 2)), clockAt(view, 17));
}

}  // namespace marlet::Dates
