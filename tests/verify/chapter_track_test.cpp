#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/box_reader.h"
#include "verify/rebuild_test.h"

namespace marlet::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class RebuiltChapters : public RebuildVerifier {
protected:
    VerifyReport verifyTexts(const std::vector<Bytes>& samples,
                             const std::vector<std::uint32_t>& durations = {2000, 2000}) {
        Movie movie = interleaved(film());
        MovieTrack& text = movie.tracks[2];
        text.samples = samples;
        text.durations = durations;
        text.sizes.clear();
        for (const Bytes& sample : samples)
            text.sizes.push_back(static_cast<std::uint32_t>(sample.size()));
        return verify(original_, buildMovie(movie));
    }
    static Bytes sample(const std::string& text) {
        return joined({be16(static_cast<std::uint16_t>(text.size())), bytesOf(text)});
    }
    static constexpr const char* differ = "chapter titles or times differ in track 3";
    static constexpr const char* repaired =
        "chapter text track 3 was repaired by MP4Box; chapter titles and times are unchanged";
};

TEST_F(RebuiltChapters, ARepairedTextTrackIsANoteAsLongAsItsChaptersMatch) {
    const Bytes style = box("encd", be32(0x100));
    const VerifyReport report =
        verifyTexts({joined({sample("First"), style}), joined({sample("Second"), style})});
    EXPECT_THAT(report.reasons, IsEmpty());
    EXPECT_THAT(report.notes, ElementsAre(repaired));
}

TEST_F(RebuiltChapters, AnotherTitleIsAReason) {
    EXPECT_THAT(verifyTexts({sample("First"), sample("Secund")}).reasons, ElementsAre(differ));
}

TEST_F(RebuiltChapters, AMissingOrAddedChapterIsAReason) {
    EXPECT_THAT(verifyTexts({sample("First")}, {2000}).reasons, Contains(differ));
    EXPECT_THAT(
        verifyTexts({sample("First"), sample("Second"), sample("x")}, {2000, 1000, 1000}).reasons,
        Contains(differ));
}

TEST_F(RebuiltChapters, TimesMayDifferByTenMilliseconds) {
    EXPECT_THAT(verifyTexts({sample("First"), sample("Second")}, {2009, 1991}).reasons, IsEmpty());
    EXPECT_THAT(verifyTexts({sample("First"), sample("Second")}, {2011, 1989}).reasons,
                ElementsAre(differ));
}

TEST_F(RebuiltChapters, TitlesAreTextWhateverTheirEncoding) {
    const Bytes big = joined({be16(0xFEFF), be16('F'), be16('i'), be16('r'), be16('s'), be16('t')});
    const Bytes little = {0xFF, 0xFE, 'F', 0, 'i', 0, 'r', 0, 's', 0, 't', 0};
    for (const Bytes& first : {big, little}) {
        const VerifyReport report = verifyTexts({joined({be16(12), first}), sample("Second")});
        EXPECT_THAT(report.reasons, IsEmpty());
        EXPECT_THAT(report.notes, ElementsAre(repaired));
    }
}

TEST_F(RebuiltChapters, ASampleShorterThanItsLengthIsReadAsFarAsItGoes) {
    EXPECT_THAT(verifyTexts({joined({be16(500), bytesOf("First")}), sample("Second")}).reasons,
                IsEmpty());
    EXPECT_THAT(verifyTexts({Bytes{0}, sample("Second")}).reasons, ElementsAre(differ));
}

TEST_F(RebuiltChapters, TheEditListCountsForTheTimes) {
    Movie later = interleaved(film());
    later.tracks[2].edits = {{100, -1}, {4000, 0}};
    EXPECT_THAT(verify(original_, buildMovie(later)).reasons, ElementsAre(differ));
    later.tracks[2].edits = {{4000, 0}};
    EXPECT_THAT(verify(original_, buildMovie(later)).reasons, IsEmpty());
}

TEST_F(RebuiltChapters, TheChapterListIsCompared) {
    Movie movie = interleaved(film());
    movie.userData = {chplBox({{0, "First"}, {2009, "Second"}})};
    EXPECT_THAT(verify(original_, buildMovie(movie)).reasons, IsEmpty());
    movie.userData = {chplBox({{0, "First"}, {2011, "Second"}})};
    EXPECT_THAT(verify(original_, buildMovie(movie)).reasons,
                ElementsAre("chapter list (chpl) differs"));
    movie.userData = {};
    EXPECT_THAT(verify(original_, buildMovie(movie)).reasons,
                ElementsAre("chapter list (chpl) differs"));
}

TEST_F(RebuiltChapters, AFilmNamedAsItsOwnChapterTrackIsProvedLikeAnyTrack) {
    Movie movie = film();
    movie.tracks[0].boxes = {box("tref", {box("chap", joined({be32(3), be32(1), be32(2)}))})};
    const Bytes rebuilt = buildMovie(interleaved(movie));
    const std::size_t place = chunksOf(rebuilt, 0).at(3).offset;
    EXPECT_THAT(verify(buildMovie(movie), flipped(rebuilt, place)).reasons,
                ElementsAre("track 1 (vide avc1): sample data differs"));
}

TEST_F(RebuiltChapters, MoreTextThanAnyFilmHasIsAFailure) {
    Movie movie = film();
    movie.tracks[2] = textTrack(std::vector<std::string>(300, std::string(60'000, 'x')), 10);
    EXPECT_EQ(failureOf(buildMovie(movie), buildMovie(movie)), "too many chapters to compare");
}

}  // namespace
}  // namespace marlet::test
