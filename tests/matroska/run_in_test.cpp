#include "matroska/run_in.h"

#include <gtest/gtest.h>

namespace marlet::test {
namespace {

constexpr std::int64_t ms = 1'000'000;

RunIn::Start startOf(std::int64_t first, std::int64_t delay, const std::string& codec = "A_AAC",
                     int type = 2) {
    MKVTrack track;
    track.type = type;
    track.codecID = codec;
    track.codecDelayNs = static_cast<std::uint64_t>(delay);
    return RunIn::of(track, first);
}

using Start = RunIn::Start;

TEST(RunIn, IsTakenOffTheTimesAndCutWhereTheyFallBefore0) {
    EXPECT_EQ(startOf(0, 0), (Start{0, 0}));
    EXPECT_EQ(startOf(0, 21 * ms), (Start{0, 21 * ms}));
    EXPECT_EQ(startOf(10 * ms, 21 * ms), (Start{0, 11 * ms}));
    EXPECT_EQ(startOf(21 * ms, 21 * ms), (Start{0, 0}));
    EXPECT_EQ(startOf(500 * ms, 21 * ms), (Start{479 * ms, 0}));
}

TEST(RunIn, OfATrackThatBeginsBefore0KeepsThatDistance) {
    EXPECT_EQ(startOf(-100 * ms, 21 * ms), (Start{-100 * ms, 21 * ms}));
}

TEST(RunIn, OfOpusIsLeftOutByItsDecoders) {
    EXPECT_EQ(startOf(500 * ms, 6 * ms, "A_OPUS"), (Start{500 * ms, 6 * ms}));
}

TEST(RunIn, OfMoreThanASecondIsALie) {
    EXPECT_EQ(startOf(0, 1001 * ms), (Start{0, 0}));
    EXPECT_EQ(startOf(0, -1), (Start{0, 0})) << "the greatest number there is";
}

TEST(RunIn, OfAPictureIsNone) {
    EXPECT_EQ(startOf(40 * ms, 21 * ms, "V_MPEG4/ISO/AVC", 1), (Start{40 * ms, 0}));
}

}  // namespace
}  // namespace marlet::test
