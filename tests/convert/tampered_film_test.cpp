// A media tool that makes another film than the source's: it is refused, in words that tell what is
// wrong, and nothing is delivered.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "convert/film_conversion.h"
#include "convert/mkv_files.h"
#include "mp4/summary.h"
#include "support/media.h"
#include "verify/conversion_parts.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Strings = std::vector<std::string>;

/// plainFilm() with frames of one track changed by a filter of FFmpeg's.
Bytes changedFilm(const std::string& stream, const std::string& filter) {
    const TempFolder folder;
    const std::string source = folder.write("s.mkv", plainFilm()).string();
    const fs::path made = folder / "changed.mkv";
    ffmpeg({"-i", source, "-map", "0:v", "-map", "0:a", "-c", "copy", "-bsf:" + stream, filter,
            made.string()});
    return readFile(made);
}

/// What `marlet-mux` makes of its picture and both of its sound tracks.
Bytes built(const Bytes& film, const Strings& sound) {
    const TempFolder folder;
    const std::string source = folder.write("s.mkv", film).string();
    const std::string made = (folder / "b.mp4").string();
    Strings command = {builtProgram("marlet-mux").string(), "-tmp", folder.path().string(), "-add",
                       source + "#1:name=Video"};
    for (const std::string& each : sound) command.insert(command.end(), {"-add", source + each});
    command.insert(command.end(), {"-inter", "500", "-moovpad", "9000", "-new", made});
    runTool(command);
    return readFile(made);
}

const Strings asPlanned = {"#2:lang=eng:name=English:group=1",
                           "#3:lang=ger:name=German:group=1:disable"};

class TamperedFilm : public testing::Test {
protected:
    TamperedFilm() {
        film_.plan().subs.clear();
        film_.plan().hasChapters = false;
        ConvertPlanSnapshot::Audio german = film_.plan().audio.at(0);
        german.track = 3;
        german.language = "ger";
        german.isDefault = false;
        film_.plan().audio.resize(1);
        film_.plan().audio.push_back(german);
    }
    /// Why the film that the tool makes is refused; empty: it isn't.
    std::string refusalOf(const Bytes& made) {
        film_.toolMakes({{0, made}});
        const WriteOutcome outcome = film_.run();
        if (outcome.status == WriteOutcome::Status::done) return "";
        EXPECT_EQ(outcome.status, WriteOutcome::Status::failed);
        EXPECT_FALSE(outcome.output);
        EXPECT_THAT(film_.delivered(), IsEmpty());
        EXPECT_TRUE(film_.isUntouched());
        return outcome.message;
    }
    FilmConversion film_;
};

TEST_F(TamperedFilm, WithNothingChangedItIsDelivered) {
    EXPECT_EQ(refusalOf(built(plainFilm(), asPlanned)), "");
}

TEST_F(TamperedFilm, AChangedByteOfAnySliceOrOfCopiedSoundIsRefused) {
    const Bytes right = built(plainFilm(), asPlanned);
    const TempFolder folder;
    const fs::path file = folder.write("b.mp4", right);
    const MP4Summary summary = parseSummary(loadMoov(file), file, Detail::Yes);
    ASSERT_EQ(summary.tracks.size(), 3U);
    std::mt19937 random(20261121);
    for (std::size_t track = 0; track < 3; track++) {
        const auto samples = ConvertVerify::refs(summary.tracks[track]);
        const char* label = track == 0 ? "video: 1 of 50 frames differ from the original"
                                       : "frames differ from the original";
        for (int i = 0; i < (track == 0 ? 10 : 3); i++) {
            const auto& sample = samples.at(random() % samples.size());
            // Behind the length of the last unit: in the slice, whatever stands before it.
            const std::uint64_t at = sample.offset + sample.size - 1 - random() % 4;
            Bytes wrong = right;
            wrong.at(at) ^= static_cast<std::uint8_t>(1U << random() % 8);
            EXPECT_THAT(refusalOf(wrong),
                        AllOf(StartsWith("verification failed: "), HasSubstr(label)))
                << "byte " << at << " of track " << track;
        }
    }
}

TEST_F(TamperedFilm, AFrameThatIsLeftOutIsRefused) {
    // The last but one and one in the middle of the picture, and one of the sound.
    for (const char* dropped : {"noise=drop=eq(n\\,25)", "noise=drop=eq(n\\,48)"})
        EXPECT_THAT(refusalOf(built(changedFilm("v", dropped), asPlanned)),
                    AllOf(StartsWith("verification failed: "), HasSubstr("49"), HasSubstr("50")));
    EXPECT_THAT(refusalOf(built(changedFilm("a:0", "noise=drop=eq(n\\,30)"), asPlanned)),
                StartsWith("verification failed: "));
}

TEST_F(TamperedFilm, ATimeThatIsMovedByThreeMillisecondsIsRefused) {
    // Matroska counts in milliseconds.
    for (const char* moved : {"setts=pts=PTS+3*eq(N\\,20)", "setts=pts=PTS-3*eq(N\\,33)"})
        EXPECT_THAT(refusalOf(built(changedFilm("v", moved), asPlanned)),
                    AllOf(StartsWith("verification failed: "), HasSubstr("time")));
}

TEST_F(TamperedFilm, ASoundThatBeginsThreeMillisecondsLaterIsRefused) {
    const Strings late = {asPlanned[0] + ":delay=3", asPlanned[1]};
    EXPECT_THAT(refusalOf(built(plainFilm(), late)), StartsWith("verification failed: "));
}

TEST_F(TamperedFilm, TwoEnabledSoundTracksAreRefused) {
    const Strings both = {asPlanned[0], "#3:lang=ger:name=German:group=1"};
    EXPECT_EQ(refusalOf(built(plainFilm(), both)),
              "verification failed: alternate group 1 has 2 enabled tracks");
}

TEST_F(TamperedFilm, NoEnabledSoundTrackIsRefused) {
    const Strings none = {asPlanned[0] + ":disable", asPlanned[1]};
    EXPECT_EQ(refusalOf(built(plainFilm(), none)),
              "verification failed: alternate group 1 has 0 enabled tracks");
}

TEST_F(TamperedFilm, ATrackTooManyOrTooFewOrInAnotherOrderIsRefused) {
    const Strings more = {asPlanned[0], asPlanned[1], asPlanned[1]};
    EXPECT_EQ(refusalOf(built(plainFilm(), more)),
              "verification failed: the new file has 4 tracks, expected 3");
    EXPECT_EQ(refusalOf(built(plainFilm(), {asPlanned[0]})),
              "verification failed: the new file has 2 tracks, expected 3");
    EXPECT_THAT(refusalOf(built(plainFilm(), {asPlanned[1], asPlanned[0]})),
                StartsWith("verification failed: "));
}

}  // namespace
}  // namespace marlet::test
