#include "write/track_headers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "support/box_builder.h"
#include "support/temp_folder.h"
#include "write/track_film.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

using Path = std::vector<std::string_view>;
const Path tkhd = {"tkhd"};
const Path mdhd = {"mdia", "mdhd"};
constexpr std::size_t dates = 4;
constexpr std::size_t language = 20;
const Bytes und = {0x55, 0xC4};
const Bytes today(8, 0xE5);

class TrackHeadersTest : public testing::Test {
protected:
    /// A picture, English and French sound.
    static Movie movie() {
        Movie movie;
        movie.tracks = {evenTrack("vide", 3, 50, 40), evenTrack("soun", 4, 20, 30),
                        evenTrack("soun", 4, 20, 30)};
        movie.tracks[1].language = "eng";
        movie.tracks[2].language = "fre";
        return movie;
    }
    static MovieTrack withStream(const Bytes& entry, std::string_view handler = "soun",
                                 std::string_view codec = "mp4a") {
        MovieTrack track = evenTrack(handler, 2, 20, 30);
        track.codec = codec;
        track.entry = entry;
        return track;
    }
    static Bytes filmOf(const MovieTrack& track) {
        Movie movie;
        movie.tracks = {track};
        return buildMovie(movie);
    }

    std::vector<std::string> restore(const std::optional<std::vector<int>>& keep = {}) {
        original_ = folder_.write("original.mp4", before_);
        candidate_ = folder_.write("candidate.mp4", after_);
        auto notes = TrackHeaders::restore(original_, candidate_, keep);
        result_ = readFile(candidate_);
        return notes;
    }
    std::string failure() {
        try {
            restore();
            return "";
        } catch (const MFError& error) {
            return error.description();
        }
    }
    void expectNothingDone() {
        EXPECT_THAT(restore(), IsEmpty());
        EXPECT_EQ(result_, after_);
    }
    /// One sound track with these two entries, one in each file.
    void setEntries(const Bytes& before, const Bytes& after) {
        before_ = filmOf(withStream(before));
        after_ = filmOf(withStream(after));
    }

    TempFolder folder_;
    fs::path original_;
    fs::path candidate_;
    Bytes before_ = buildMovie(movie());
    Bytes after_ = before_;
    Bytes result_;
};

TEST_F(TrackHeadersTest, EqualHeadersGiveNoNoteAndNoWrite) {
    const Sys::Fault fault(Sys::Call::Write, EIO, 1, true);
    original_ = folder_ / "original.mp4";
    writeFile(original_, before_);
    EXPECT_THAT(TrackHeaders::restore(original_, original_), IsEmpty());
}

TEST_F(TrackHeadersTest, TodaysMediaDatesGoBackToTheOriginals) {
    patchTrack(after_, 1, mdhd, dates, today);
    EXPECT_THAT(restore(), ElementsAre("restored media dates"));
    EXPECT_EQ(result_, before_);
}

TEST_F(TrackHeadersTest, TheDatesOfTheTrackHeaderGoBackToo) {
    patchTrack(after_, 0, tkhd, dates, today);
    EXPECT_THAT(restore(), ElementsAre("restored track modification date"));
    EXPECT_EQ(result_, before_);
}

TEST_F(TrackHeadersTest, ALanguageThatBecameUnknownGoesBackAndTheNoteNamesBoth) {
    patchTrack(after_, 2, mdhd, language, und);
    EXPECT_THAT(restore(), ElementsAre("restored language (French, MP4Box wrote Unknown)"));
    EXPECT_EQ(result_, before_);
}

TEST_F(TrackHeadersTest, AnUnsetLanguageIsNamedAsUnknown) {
    patchTrack(before_, 1, mdhd, language, Bytes{0, 0});
    EXPECT_THAT(restore(), ElementsAre("restored language (Unknown, MP4Box wrote English)"));
    EXPECT_EQ(result_, before_);
}

TEST_F(TrackHeadersTest, TheNoteNamesEachFieldOnceAndInOrder) {
    for (int track = 0; track < 3; track++) {
        patchTrack(after_, track, tkhd, dates, today);
        patchTrack(after_, track, mdhd, dates, today);
    }
    patchTrack(after_, 1, mdhd, language, und);
    patchTrack(after_, 2, mdhd, language, und);
    EXPECT_THAT(restore(), ElementsAre("restored language (English, MP4Box wrote Unknown), "
                                       "language (French, MP4Box wrote Unknown), media dates, "
                                       "track modification date"));
    EXPECT_EQ(result_, before_);
}

TEST_F(TrackHeadersTest, TheFieldsAreFoundWhereverTheIndexLies) {
    Movie last = movie();
    last.index = Movie::Index::Last;
    last.padding = 100;
    after_ = buildMovie(last);
    const Bytes wanted = after_;
    patchTrack(after_, 1, mdhd, dates, today);
    EXPECT_THAT(restore(), ElementsAre("restored media dates"));
    EXPECT_EQ(result_, wanted);
}

TEST_F(TrackHeadersTest, AnIndexWithALongHeaderIsPatchedAtTheSameFields) {
    const Bytes trak = box("trak", {tkhdBox(1), box("mdia", {mdhdBox(1000, 10, "eng")})});
    before_ = largeBox("moov", trak);
    after_ = before_;
    patchTrack(after_, 0, mdhd, dates, today);
    EXPECT_THAT(restore(), ElementsAre("restored media dates"));
    EXPECT_EQ(result_, before_);
}

TEST_F(TrackHeadersTest, HeadersOfVersion1HaveDatesOfSixteenBytes) {
    const auto film = [](std::uint8_t stamp, std::string_view letters) {
        const Bytes packed = letters == "eng" ? Bytes{0x15, 0xC7} : und;
        const Bytes media =
            fullBox("mdhd", 1, 0, joined({Bytes(16, stamp), Bytes(12), packed, Bytes(2)}));
        return box("moov",
                   {box("trak", {fullBox("tkhd", 1, 7, joined({Bytes(16, stamp), Bytes(76)})),
                                 box("mdia", {media})})});
    };
    before_ = film(0x11, "eng");
    after_ = film(0x99, "und");
    EXPECT_THAT(restore(), ElementsAre("restored language (English, MP4Box wrote Unknown), "
                                       "media dates, track modification date"));
    EXPECT_EQ(result_, before_);
}

TEST_F(TrackHeadersTest, ABoxOfAnotherVersionIsSkipped) {
    patchTrack(after_, 1, mdhd, dates, today);
    patchTrack(after_, 1, mdhd, 0, Bytes{1});
    expectNothingDone();
}

TEST_F(TrackHeadersTest, ABoxOfAnotherLengthIsSkipped) {
    before_ = box("moov", {box("trak", {tkhdBox(1), box("mdia", {mdhdBox(1000, 10, "eng")})})});
    after_ = box("moov", {box("trak", {fullBox("tkhd", 0, 3, Bytes(200, 9)),
                                       box("mdia", {fullBox("mdhd", 0, 0, Bytes(40, 9))})})});
    expectNothingDone();
}

TEST_F(TrackHeadersTest, BoxesTooShortForTheirFieldsAreLeftAlone) {
    const auto film = [](std::uint8_t value) {
        return box("moov", {box("trak", {fullBox("tkhd", 0, 3, Bytes(5, value)),
                                         box("mdia", {fullBox("mdhd", 0, 0, Bytes(17, value))})})});
    };
    before_ = film(1);
    after_ = film(2);
    // The dates are whole, the language isn't there.
    EXPECT_THAT(restore(), ElementsAre("restored media dates"));
}

TEST_F(TrackHeadersTest, WithADroppedTrackTheDatesReturnToTheRightOnes) {
    patchTrack(before_, 0, mdhd, dates, Bytes(8, 0xA0));
    patchTrack(before_, 1, mdhd, dates, Bytes(8, 0xA1));
    patchTrack(before_, 2, mdhd, dates, Bytes(8, 0xA2));
    Movie fewer = movie();
    fewer.tracks.erase(fewer.tracks.begin() + 1);
    after_ = buildMovie(fewer);
    EXPECT_THAT(restore(std::vector{0, 2}), ElementsAre("restored media dates"));
    EXPECT_EQ(textOf(trackBox(result_, 0, mdhd).subspan(dates, 8)), std::string(8, '\xA0'));
    EXPECT_EQ(textOf(trackBox(result_, 1, mdhd).subspan(dates, 8)), std::string(8, '\xA2'));
}

TEST_F(TrackHeadersTest, CountsThatDoNotFitLeaveTheFileAlone) {
    Movie fewer = movie();
    fewer.tracks.pop_back();
    after_ = buildMovie(fewer);
    patchTrack(after_, 0, mdhd, dates, today);
    expectNothingDone();
    for (const std::vector<int>& keep :
         {std::vector<int>{0}, {0, 1, 2}, {0, 3}, {0, -1}, std::vector<int>{}}) {
        EXPECT_THAT(restore(keep), IsEmpty());
        EXPECT_EQ(result_, after_);
    }
}

TEST_F(TrackHeadersTest, AFileWithoutAnIndexIsLeftAlone) {
    after_ = ftypBox();
    expectNothingDone();
}

TEST_F(TrackHeadersTest, TheStreamIDGoesBack) {
    setEntries(soundEntry(esdsBox(2)), soundEntry(esdsBox(0)));
    EXPECT_THAT(restore(), ElementsAre("restored stream id"));
    EXPECT_EQ(result_, before_);
}

TEST_F(TrackHeadersTest, TheStreamIDIsFoundBehindSizesOfOneByteAndOfFour) {
    setEntries(soundEntry(esdsBox(0x0203, Sizes::Padded)), soundEntry(esdsBox(0, Sizes::Short)));
    const Bytes wanted = filmOf(withStream(soundEntry(esdsBox(0x0203, Sizes::Short))));
    EXPECT_THAT(restore(), ElementsAre("restored stream id"));
    EXPECT_EQ(result_, wanted);
}

TEST_F(TrackHeadersTest, TheStreamIDIsFoundInEveryShapeOfEntry) {
    struct Shape {
        std::string_view handler;
        std::string_view codec;
        Bytes (*entry)(const Bytes& esds);
    };
    const Shape shapes[] = {
        {"soun", "mp4a", [](const Bytes& esds) { return soundEntry(esds, 0); }},
        {"soun", "mp4a", [](const Bytes& esds) { return soundEntry(esds, 1); }},
        {"soun", "mp4a", [](const Bytes& esds) { return soundEntry(esds, 2); }},
        {"soun", "mp4a",
         [](const Bytes& esds) {
             return soundEntry(box("wave", {box("frma", viewOf("mp4a")), esds, Bytes(8)}), 1);
         }},
        {"soun", "enca", [](const Bytes& esds) { return soundEntry(esds, 0); }},
        {"vide", "mp4v", [](const Bytes& esds) { return pictureEntry(esds); }},
        {"subp", "mp4s", [](const Bytes& esds) { return systemEntry(esds); }},
    };
    for (const Shape& shape : shapes) {
        before_ = filmOf(withStream(shape.entry(esdsBox(7)), shape.handler, shape.codec));
        after_ = filmOf(withStream(shape.entry(esdsBox(0)), shape.handler, shape.codec));
        ASSERT_NE(before_, after_);
        EXPECT_THAT(restore(), ElementsAre("restored stream id")) << shape.codec;
        EXPECT_EQ(result_, before_) << shape.codec;
    }
}

TEST_F(TrackHeadersTest, AStreamIDThatOneFileLacksIsSkipped) {
    setEntries(soundEntry(esdsBox(2)), soundEntry(box("free", Bytes(20))));
    expectNothingDone();
    std::swap(before_, after_);
    expectNothingDone();
}

TEST_F(TrackHeadersTest, AnEntryOfAnotherTypeIsSkipped) {
    before_ = filmOf(withStream(soundEntry(esdsBox(2)), "soun", "mp4a"));
    after_ = filmOf(withStream(soundEntry(esdsBox(0)), "soun", "enca"));
    expectNothingDone();
}

TEST_F(TrackHeadersTest, ABoxThatIsNoStreamDescriptorIsSkipped) {
    for (const Bytes& payload : {Bytes{}, Bytes{4, 2, 0, 0}, Bytes{3}, Bytes{3, 0x80, 0x80, 0x80},
                                 Bytes{3, 0x80, 0x80, 0x80, 0x80, 1, 2}, Bytes{3, 2, 9}}) {
        setEntries(soundEntry(esdsBox(2)), soundEntry(fullBox("esds", 0, 0, payload)));
        expectNothingDone();
    }
}

TEST_F(TrackHeadersTest, AFileThatCannotBeOpenedForWritingIsToldSo) {
    patchTrack(after_, 1, mdhd, dates, today);
    candidate_ = folder_ / "candidate.mp4";
    // Its top level and its index are read before.
    const Sys::Fault fault(Sys::Call::Open, EACCES, 3, false, candidate_);
    EXPECT_EQ(failure(),
              "cannot open the rebuilt file to restore header fields: Permission denied");
}

TEST_F(TrackHeadersTest, AShortWriteNamesTheTrackAndItsField) {
    const Sys::ShortTransfers most(1);
    patchTrack(after_, 1, mdhd, dates, today);
    EXPECT_EQ(failure(), "could not restore track 2 media dates");
    after_ = before_;
    patchTrack(after_, 0, tkhd, dates, today);
    EXPECT_EQ(failure(), "could not restore track 1 track modification date");
    after_ = before_;
    patchTrack(after_, 2, mdhd, language, und);
    EXPECT_EQ(failure(), "could not restore track 3 language (French, MP4Box wrote Unknown)");
    setEntries(soundEntry(esdsBox(2)), soundEntry(esdsBox(1)));
    after_[streamIDAt(after_, 0)] = 5;
    EXPECT_EQ(failure(), "could not restore track 1 stream id");
}

TEST_F(TrackHeadersTest, AWriteThatFailsReadsTheSame) {
    patchTrack(after_, 1, mdhd, dates, today);
    const Sys::Fault fault(Sys::Call::Write, ENOSPC);
    EXPECT_EQ(failure(), "could not restore track 2 media dates");
}

TEST_F(TrackHeadersTest, AFlushThatFailsIsAFailure) {
    patchTrack(after_, 1, mdhd, dates, today);
    const Sys::Fault fault(Sys::Call::Flush, EIO);
    EXPECT_EQ(failure(), "could not restore header fields: Input/output error");
}

}  // namespace
}  // namespace marlet::test
