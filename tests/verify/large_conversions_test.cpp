// Films whose size decides how they are read, or whether they are read at all.

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <thread>

#include "foundation/errors.h"
#include "verify/conversion_test.h"
#include "verify/side_by_side.h"

namespace marlet::test {
namespace {

/// Tasks of this process.
std::ptrdiff_t threads() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

/// What is reached by another thread, for tests that would wait forever when it isn't. The time is
/// no part of what is tested.
bool comes(const std::function<bool()>& condition) {
    constexpr int patience = 60'000;
    for (int i = 0; i < patience && !condition(); i++)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return condition();
}

// --- large ones ---

/// The small film, its pictures blown up beyond what one thread reads alone.
class LargeConversion : public ConversionTest {
protected:
    LargeConversion() {
        const std::string much(worthAThread / source_.picture.size(), 'x');
        for (SourceFrame& frame : source_.picture) append(frame.data, nalUnit(slice, much));
        movie_ = builtFilm(source_);
    }
};

TEST_F(LargeConversion, SourceAndNewFileAreReadAtTheSameTime) {
    control_.pause();  // so that both wait at their first block
    const std::ptrdiff_t before = threads();
    std::atomic<bool> areTwo = false;
    std::thread watcher([&] {
        areTwo = comes([&] { return threads() >= before + 2; });  // this one, and the other reading
        control_.resume();
    });
    const std::vector<std::string> found = reasons();
    watcher.join();
    EXPECT_THAT(found, IsEmpty());
    EXPECT_TRUE(areTwo);
}

TEST_F(LargeConversion, IsProvedWithTheNotesAndTheProgressOfASmallOne) {
    std::vector<double> shares;
    const auto here = std::this_thread::get_id();
    progress_ = [&](const std::string& label, double share) {
        EXPECT_EQ(label, "Verifying");
        EXPECT_EQ(std::this_thread::get_id(), here);
        shares.push_back(share);
    };
    const Report report = verify();
    EXPECT_THAT(report.reasons, IsEmpty());
    EXPECT_THAT(report.notes, ElementsAre("video: 8 frames identical to the original",
                                          "sound track 2: 10 frames identical to the original"));
    ASSERT_FALSE(shares.empty());
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_DOUBLE_EQ(shares.front(), 0.7);
    EXPECT_DOUBLE_EQ(shares.back(), 0.86);
}

TEST_F(LargeConversion, AChangedByteDeepInAPictureIsOneFrameThatDiffers) {
    movie_.tracks[0].samples[4].back() ^= 1;
    EXPECT_THAT(reasons(),
                ElementsAre("video: 1 of 8 frames differ from the original (first at 4)"));
}

TEST_F(LargeConversion, ACancelEndsBothReadings) {
    control_.pause();
    const std::ptrdiff_t before = threads();
    std::thread watcher([&] {
        comes([&] { return threads() >= before + 2; });
        control_.cancel();
    });
    EXPECT_THROW(verify(), CancelError);
    watcher.join();
    EXPECT_TRUE(comes([&] { return threads() == before; })) << "none is left behind";
}

TEST_F(LargeConversion, AClaimOfMoreThanTheFileHoldsEndsTheReadingOfTheSource) {
    // The tables are last in their list, and so the ones that count; the file itself is small.
    const SourceFilm small = sourceFilm();
    movie_ = builtFilm(small);
    movie_.tracks[0].tables.push_back(stszBox(0x7000000, 8));
    const Bytes source = mkvBytes(source_);
    try {
        verify(source, built());
        FAIL();
    } catch (const MFError& error) {
        EXPECT_EQ(error.description(), "the tracks claim far more data than the file holds");
    }
}

TEST(SideBySide, AFailureOfEitherReadingEndsTheOther) {
    const StepProgress silent;
    for (const bool failsOnThread : {true, false}) {
        ReadShare share(1, 0, 1, silent);
        const Reading fails = [](const auto&) { throw MFError("the disk is gone"); };
        const Reading goesOn = [](const auto& done) {
            for (;;) done(1);
        };
        try {
            sideBySide(failsOnThread ? fails : goesOn, failsOnThread ? goesOn : fails, share);
            FAIL();
        } catch (const MFError& error) {
            EXPECT_EQ(error.description(), "the disk is gone");
        }
    }
}

// --- long ones ---

/// Picture and sound of so many samples, told in a few rows.
class LongConversion : public ConversionTest {
protected:
    std::string failure(std::uint32_t pictures, std::uint32_t sounds) {
        const auto lengthen = [](MovieTrack& track, std::uint32_t samples) {
            for (const Bytes& table : {stszBox(1, samples), sttsBox({{samples, 1}}),
                                       stscBox({{1, samples}}), stcoBox({64})})
                track.tables.push_back(table);
        };
        movie_ = builtFilm(source_);
        movie_.tracks[0].tables.clear();  // ctts and stss of the few
        lengthen(movie_.tracks[0], pictures);
        lengthen(movie_.tracks[1], sounds);
        try {
            verify();
        } catch (const MFError& error) {
            return error.description();
        }
        return {};
    }
};

TEST_F(LongConversion, MoreThanFourMillionFramesAreNotProved) {
    constexpr std::uint32_t most = 4'000'000;
    constexpr const char* tooMany = "the new file has too many frames to be proved";
    EXPECT_EQ(failure(most + 1 - 10, 10), tooMany);
    EXPECT_EQ(failure(10, most + 1 - 10), tooMany);
    EXPECT_EQ(failure(most / 2, most / 2 + 1), tooMany) << "all tracks together";
}

TEST_F(LongConversion, FourMillionFramesAreRead) {
    // Their bytes aren't there, which only reading tells.
    EXPECT_EQ(failure(2'000'000, 2'000'000), "the tracks claim far more data than the file holds");
}

}  // namespace
}  // namespace marlet::test
