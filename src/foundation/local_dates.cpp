// The part of Dates that knows the person's time zone.
#include <unicode/simpletz.h>
#include <unicode/smpdtfmt.h>

#include <algorithm>
#include <ctime>
#include <map>
#include <memory>

#include "foundation/dates.h"
#include "foundation/icu_text.h"

namespace marlet::Dates {
namespace {

std::time_t secondsOf(Moment moment) {
    return static_cast<std::time_t>(moment.time_since_epoch().count());
}

Moment momentOf(std::time_t time) {
    return Moment(std::chrono::seconds(time));
}

std::tm localTime(std::time_t time) {
    std::tm out{};
    localtime_r(&time, &out);
    return out;
}

/// A local day as a number that grows from day to day.
int dayNumber(const std::tm& local) {
    return local.tm_year * 400 + local.tm_yday;
}

bool isMidnight(const std::tm& local) {
    return local.tm_hour == 0 && local.tm_min == 0 && local.tm_sec == 0;
}

/// Midnight of the day under one reading of summer time (1 or 0), if there is such a moment.
std::optional<std::time_t> midnight(const std::tm& day, int summerTime) {
    std::tm wanted{};
    wanted.tm_year = day.tm_year;
    wanted.tm_mon = day.tm_mon;
    wanted.tm_mday = day.tm_mday;
    wanted.tm_isdst = summerTime;
    const std::time_t time = std::mktime(&wanted);
    const std::tm got = localTime(time);
    if (!isMidnight(got) || dayNumber(got) != dayNumber(day)) return std::nullopt;
    return time;
}

}  // namespace

namespace {

/// Making one takes a hundred times as long as printing a date by it; null for a bad pattern.
icu::SimpleDateFormat* formatOf(const std::string& pattern) {
    thread_local std::map<std::string, std::unique_ptr<icu::SimpleDateFormat>> known;
    auto& format = known[pattern];
    if (!format) {
        UErrorCode status = U_ZERO_ERROR;
        format = std::make_unique<icu::SimpleDateFormat>(IcuText::utf16(pattern),
                                                         icu::Locale::getEnglish(), status);
        if (U_FAILURE(status)) format.reset();
    }
    return format.get();
}

}  // namespace

std::string local(Moment moment, const std::string& pattern) {
    // The offset comes from the C library, as for startOfLocalDay, so that a moment is always
    // printed within the day that it is counted to.
    tzset();
    const std::tm parts = localTime(secondsOf(moment));
    icu::SimpleDateFormat* const format = formatOf(pattern);
    if (format == nullptr) return {};
    constexpr int millisecondsPerSecond = 1000;
    format->adoptTimeZone(new icu::SimpleTimeZone(
        static_cast<std::int32_t>(parts.tm_gmtoff * millisecondsPerSecond), "local"));
    icu::UnicodeString out;
    format->format(static_cast<UDate>(secondsOf(moment)) * millisecondsPerSecond, out);
    return IcuText::utf8(out);
}

Moment startOfLocalDay(Moment moment) {
    tzset();
    const std::time_t time = secondsOf(moment);
    const std::tm day = localTime(time);
    // Where clocks go back at one in the morning, midnight comes twice: the first counts.
    const auto summer = midnight(day, 1);
    const auto winter = midnight(day, 0);
    if (summer && winter) return momentOf(std::min(*summer, *winter));
    if (summer || winter) return momentOf(summer ? *summer : *winter);
    // Where they go forward at midnight it doesn't come at all: the day's first second counts.
    constexpr std::time_t longestDay = 26 * 60 * 60;
    std::time_t before = time - longestDay;
    std::time_t within = time;
    while (within - before > 1) {
        const std::time_t middle = before + (within - before) / 2;
        (dayNumber(localTime(middle)) < dayNumber(day) ? before : within) = middle;
    }
    return momentOf(within);
}

}  // namespace marlet::Dates
