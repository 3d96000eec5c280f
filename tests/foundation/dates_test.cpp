#include "foundation/dates.h"

#include <gtest/gtest.h>

#include "support/temp_folder.h"

namespace marlet {
namespace {

using namespace std::chrono;
using test::ScopedEnv;

constexpr Moment sample = sys_days(2026y / November / 21) + 10h + 15min;

TEST(Dates, AMomentIsWrittenInUtcToTheSecond) {
    EXPECT_EQ(Dates::iso8601(sample), "2026-11-21T10:15:00Z");
    EXPECT_EQ(Dates::iso8601(Moment()), "1970-01-01T00:00:00Z");
    EXPECT_EQ(Dates::iso8601(Moment(seconds(-1))), "1969-12-31T23:59:59Z");
}

TEST(Dates, WhatWasWrittenReadsBackAsTheSameMoment) {
    for (const auto back : {0s, 1s, 86'399s, 4'000'000'000s}) {
        const Moment moment = sample - back;
        EXPECT_EQ(Dates::parseIso8601(Dates::iso8601(moment)), moment);
    }
}

TEST(Dates, AnOffsetIsTakenOff) {
    EXPECT_EQ(Dates::parseIso8601("2026-11-21T11:15:00+01:00"), sample);
    EXPECT_EQ(Dates::parseIso8601("2026-11-21T06:45:00-0330"), sample);
}

TEST(Dates, ATextThatIsNoIsoMomentIsNone) {
    for (const char* const bad :
         {"", "2026-11-21", "2026-11-21T10:15:00", "2026-11-21 10:15:00Z", "2026-13-21T10:15:00Z",
          "2026-02-30T10:15:00Z", "2026-11-21T24:15:00Z", "2026-11-21T10:60:00Z",
          "2026-11-21T10:15:60Z", "2026-11-21T10:15:00Zx", "2026-11-21T10:15:00+1",
          "٢026-11-21T10:15:00Z"}) {
        EXPECT_EQ(Dates::parseIso8601(bad), std::nullopt) << bad;
    }
}

TEST(Dates, AnHttpDateIsReadInItsOneForm) {
    EXPECT_EQ(Dates::parseHttpDate("Sat, 21 Nov 2026 10:15:00 GMT"), sample);
    EXPECT_EQ(Dates::parseHttpDate("Thu, 01 Jan 1970 00:00:00 GMT"), Moment());
    EXPECT_EQ(Dates::parseHttpDate("Thu, 29 Feb 2024 23:59:59 GMT"),
              Moment(sys_days(2024y / February / 29) + 23h + 59min + 59s));
}

TEST(Dates, AnyOtherHttpDateIsNone) {
    for (const char* const bad :
         {"", "120", "Sat, 21 Nov 2026 10:15:00 UTC", "Sat, 21 Nov 2026 10:15:00 +0000",
          "Saturday, 21-Nov-26 10:15:00 GMT", "Sat Nov 21 10:15:00 2026",
          "Sat, 1 Nov 2026 10:15:00 GMT", "Xyz, 21 Nov 2026 10:15:00 GMT",
          "Sat, 21 Foo 2026 10:15:00 GMT", "Sat, 31 Nov 2026 10:15:00 GMT",
          "Sat, 21 Nov 2026 25:15:00 GMT", " Sat, 21 Nov 2026 10:15:00 GMT",
          "Sat, 21 Nov 2026 10:15:00 GMT "}) {
        EXPECT_EQ(Dates::parseHttpDate(bad), std::nullopt) << bad;
    }
}

TEST(Dates, LocalTimeIsWrittenInEnglishByAPattern) {
    const ScopedEnv zone("TZ", "UTC");
    EXPECT_EQ(Dates::local(sample, "yyyy-MM-dd HH:mm:ss"), "2026-11-21 10:15:00");
    EXPECT_EQ(Dates::local(sample, "EEEE, MMMM d"), "Saturday, November 21");
}

TEST(Dates, LocalTimeFollowsTheZoneAndItsSummerTime) {
    const ScopedEnv zone("TZ", "Europe/Berlin");
    EXPECT_EQ(Dates::local(sample, "yyyy-MM-dd HH:mm"), "2026-11-21 11:15");
    EXPECT_EQ(Dates::local(Moment(sys_days(2026y / July / 1)), "HH:mm"), "02:00");
}

TEST(Dates, LocalTimeIsEnglishUnderAnotherLocale) {
    const ScopedEnv zone("TZ", "UTC");
    const ScopedEnv locale("LC_ALL", "de_DE.UTF-8");
    EXPECT_EQ(Dates::local(sample, "MMMM"), "November");
    EXPECT_EQ(Dates::local(sample, "EEE"), "Sat");
}

TEST(Dates, ADayStartsAtLocalMidnight) {
    const ScopedEnv zone("TZ", "America/New_York");
    const Moment midnight = Moment(sys_days(2026y / November / 21) + 5h);
    EXPECT_EQ(Dates::startOfLocalDay(sample), midnight);
    EXPECT_EQ(Dates::startOfLocalDay(midnight), midnight);
    EXPECT_EQ(Dates::startOfLocalDay(midnight - 1s), midnight - 24h);
}

TEST(Dates, ADayWithoutAMidnightStartsAtItsFirstSecond) {
    // Clocks went from 23:59:59 on 3 November 2018 to 01:00:00 on the 4th.
    const ScopedEnv zone("TZ", "America/Sao_Paulo");
    const Moment firstSecond = Moment(sys_days(2018y / November / 4) + 3h);
    EXPECT_EQ(Dates::startOfLocalDay(firstSecond + 9h), firstSecond);
    EXPECT_EQ(Dates::local(firstSecond, "yyyy-MM-dd HH:mm"), "2018-11-04 01:00");
}

TEST(Dates, ADayWithTwoMidnightsStartsAtTheFirst) {
    // Clocks went back from 01:00 to 00:00 on 1 November 2020.
    const ScopedEnv zone("TZ", "America/Havana");
    const Moment first = Moment(sys_days(2020y / November / 1) + 4h);
    EXPECT_EQ(Dates::startOfLocalDay(first + 12h), first);
    EXPECT_EQ(Dates::startOfLocalDay(first + 90min), first);
}

TEST(Dates, EveryHourOfADayBelongsToTheSameDay) {
    const ScopedEnv zone("TZ", "Europe/Berlin");
    const Moment start = Dates::startOfLocalDay(Moment(sys_days(2026y / March / 29) + 12h));
    for (auto at = 0h; at < 23h; ++at) EXPECT_EQ(Dates::startOfLocalDay(start + at), start);
    EXPECT_EQ(Dates::startOfLocalDay(start + 23h), start + 23h);  // summer time takes an hour
}

TEST(Dates, NowLiesInThisCentury) {
    EXPECT_GT(Dates::now(), Moment(sys_days(2024y / January / 1)));
    EXPECT_LT(Dates::now(), Moment(sys_days(2100y / January / 1)));
}

}  // namespace
}  // namespace marlet
