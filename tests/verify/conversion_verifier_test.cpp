#include "verify/conversion_test.h"

#include "foundation/errors.h"

namespace marlet::test {
namespace {

TEST_F(ConversionTest, ACopyIsProvedWithANoteForEachTrack) {
    const Report report = verify();
    EXPECT_THAT(report.reasons, IsEmpty());
    EXPECT_THAT(report.notes, ElementsAre("video: 8 frames identical to the original",
                                          "sound track 2: 10 frames identical to the original"));
}

TEST_F(ConversionTest, ProgressGoesFromWritingDetailsToSaving) {
    std::vector<double> shares;
    progress_ = [&](const std::string& label, double share) {
        EXPECT_EQ(label, "Verifying");
        shares.push_back(share);
    };
    verify();
    ASSERT_FALSE(shares.empty());
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_DOUBLE_EQ(shares.front(), 0.7);
    EXPECT_DOUBLE_EQ(shares.back(), 0.86);
}

TEST_F(ConversionTest, ACancelEndsIt) {
    control_.cancel();
    EXPECT_THROW(verify(), CancelError);
}

TEST_F(ConversionTest, AnotherCountOfTracksEndsTheReport) {
    expected_.push_back({.kind = Expected::Kind::sub});
    movie_.tracks[0].samples[0][5] ^= 1;
    EXPECT_THAT(reasons(), ElementsAre("the new file has 2 tracks, expected 3"));
}

TEST_F(ConversionTest, TracksOfOtherHandlersDoNotCount) {
    MovieTrack text = textTrack({"One", "Two"}, 160);
    text.mediaInfo = {hereBox()};
    movie_.tracks.push_back(text);
    EXPECT_THAT(reasons(), IsEmpty());
}

TEST_F(ConversionTest, AnUnreadableNewFileFails) {
    EXPECT_THROW(verify(mkvBytes(source_), viewOf("no film")), MFError);
    EXPECT_THROW(verify(mkvBytes(source_), {}), MFError);
}

// --- frames ---

TEST_F(ConversionTest, ParameterSetsAndDelimitersMayBeMissingInTheNewFile) {
    const Bytes sets = joined(
        {nalUnit(delimiter, "\xF0"), nalUnit(sequenceUnit, "set"), nalUnit(pictureUnit, "set")});
    source_.record =
        avcRecord(100, {Bytes{sequenceUnit, 's', 'e', 't'}}, {Bytes{pictureUnit, 's', 'e', 't'}});
    movie_.tracks[0].entry = joined({Bytes(78), box("avcC", source_.record)});
    for (SourceFrame& frame : source_.picture) frame.data = joined({sets, frame.data});
    EXPECT_THAT(reasons(), IsEmpty());
}

TEST_F(ConversionTest, AnyChangedByteOfASliceIsOneFrameThatDiffers) {
    const Bytes right = movie_.tracks[0].samples[2];
    for (std::size_t at = 4; at < right.size(); at++) {
        movie_.tracks[0].samples[2] = right;
        movie_.tracks[0].samples[2][at] ^= at == 4 ? 2 : 1;
        EXPECT_THAT(reasons(),
                    ElementsAre("video: 1 of 8 frames differ from the original (first at "
                                "1)"))
            << at;
    }
}

TEST_F(ConversionTest, AChangedByteOfCopiedSoundIsOneFrameThatDiffers) {
    movie_.tracks[1].samples[3][0] ^= 1;
    EXPECT_THAT(reasons(), ElementsAre("sound track 2: 1 of 10 frames differ from the original "
                                       "(first at 3)"));
}

TEST_F(ConversionTest, TheNewFileMayTellTheLengthsOfUnitsInOtherWidths) {
    for (Bytes& sample : movie_.tracks[0].samples) sample.erase(sample.begin(), sample.begin() + 2);
    for (std::uint32_t& size : movie_.tracks[0].sizes) size -= 2;
    Bytes record = source_.record;
    record[4] = 0xFD;
    movie_.tracks[0].entry = joined({Bytes(78), box("avcC", record)});
    EXPECT_THAT(reasons(), IsEmpty());
}

TEST_F(ConversionTest, FramesMeetByTheirTimesWhateverOrderTheyAreStoredIn) {
    SourceFilm stored = source_;
    std::swap(stored.picture[2], stored.picture[3]);
    movie_.tracks[0] = pictureCopy(stored);
    EXPECT_THAT(reasons(), IsEmpty());
    std::swap(movie_.tracks[0].samples[2], movie_.tracks[0].samples[3]);
    EXPECT_THAT(reasons(), ElementsAre("video: 2 of 8 frames differ from the original (first at "
                                       "1)"));
}

TEST_F(ConversionTest, AFrameLeftOutIsTold) {
    movie_.tracks[1].samples.pop_back();
    movie_.tracks[1].sizes.pop_back();
    movie_.tracks[1].durations.pop_back();
    EXPECT_THAT(reasons(), ElementsAre("sound track 2: 9 frames, the original has 10"));
}

TEST_F(ConversionTest, AFrameTwiceIsTold) {
    MovieTrack& sound = movie_.tracks[1];
    sound.samples.push_back(sound.samples.back());
    sound.sizes.push_back(sound.sizes.back());
    sound.durations.push_back(32);
    EXPECT_THAT(reasons(), ElementsAre("sound track 2: 11 frames, the original has 10"));
}

TEST_F(ConversionTest, TwoMillisecondsOffAreTheSameTimeAndThreeAreNot) {
    movie_.tracks[1].durations[4] += 2;
    movie_.tracks[1].durations[5] -= 2;
    EXPECT_THAT(reasons(), IsEmpty());
    movie_.tracks[1].durations[4] += 1;
    movie_.tracks[1].durations[5] -= 1;
    EXPECT_THAT(reasons(), ElementsAre("sound track 2: 1 frames have different times"));
}

TEST_F(ConversionTest, SamplesBeyondTheFileCannotBeRead) {
    Bytes built = buildMovie(movie_);
    built.resize(built.size() - 3);
    EXPECT_THAT(verify(mkvBytes(source_), built).reasons,
                Contains("sound track 2: frame 9 can't be read"));
}

TEST_F(ConversionTest, ASourceTrackThatIsNotThereIsAReason) {
    expected_[1].source = 77;
    EXPECT_THAT(reasons(), ElementsAre("track 2: its source isn't in the original"));
}

TEST_F(ConversionTest, FramesOfALaceFollowAtTheTracksOwnLength) {
    std::vector<Bytes> frames;
    for (const SourceFrame& frame : source_.sound) frames.push_back(frame.data);
    source_.soundMore = {mkv::number(0x23E383, 32'000'000)};
    for (const auto lace : {mkv::Lace::Xiph, mkv::Lace::Fixed, mkv::Lace::EBML}) {
        source_.soundBlocks = {mkv::lacedBlock(2, 0, lace, frames)};
        EXPECT_THAT(reasons(), IsEmpty());
    }
}

TEST_F(ConversionTest, WithoutALengthTheyAreSpreadUpToTheNextBlock) {
    std::vector<Bytes> frames;
    for (const SourceFrame& frame : source_.sound) frames.push_back(frame.data);
    source_.soundBlocks = {
        mkv::lacedBlock(2, 0, mkv::Lace::Xiph, {frames.begin(), frames.begin() + 8}),
        mkv::lacedBlock(2, 256, mkv::Lace::Xiph, {frames.begin() + 8, frames.end()})};
    EXPECT_THAT(reasons(), IsEmpty());
}

TEST_F(ConversionTest, ABrokenLaceHasNoFrames) {
    source_.soundBlocks = {mkv::simpleBlock(2, 0, Bytes{0, 0x85, 1, 2}, 0x86)};
    EXPECT_THAT(reasons(), ElementsAre("sound track 2: 10 frames, the original has 0"));
}

// --- what would play differently ---

TEST_F(ConversionTest, ParameterSetsOfAnotherStreamAreRefused) {
    Bytes record = source_.record;
    record.back() ^= 1;  // of the picture set
    movie_.tracks[0].entry = joined({Bytes(78), box("avcC", record)});
    EXPECT_THAT(reasons(), ElementsAre("video: the decoder configuration isn't the original's",
                                       "video: a parameter set of the original is missing"));
}

TEST_F(ConversionTest, AFilmWithoutDecoderConfigurationIsRefused) {
    movie_.tracks[0].entry = Bytes(78);
    EXPECT_THAT(reasons(), ElementsAre("video: the new file has no decoder configuration"));
}

TEST_F(ConversionTest, AKeyframeThatIsNotMarkedIsRefused) {
    movie_.tracks[0].tables[1] = stssBox({1});
    EXPECT_THAT(reasons(), ElementsAre("video: 1 keyframes aren't marked as such"));
}

TEST_F(ConversionTest, MarkingEveryFrameIsRefused) {
    movie_.tracks[0].tables.pop_back();
    EXPECT_THAT(reasons(), ElementsAre("video: every frame is marked as a keyframe"));
}

TEST_F(ConversionTest, AnEntryOfAnotherCodecIsRefused) {
    movie_.tracks[1].codec = "mp4a";
    EXPECT_THAT(reasons(),
                ElementsAre("sound track 2: the new file calls it mp4a, the original A_AC3"));
}

TEST_F(ConversionTest, AnEditListThatCutsTheFilmIsRefused) {
    movie_.tracks[0].edits = {{280, 120}};
    EXPECT_THAT(reasons(), Contains("video: its edit list leaves out the first 0.040 s"));
    movie_.tracks[0].edits = {{320, 80}, {320, 80}};
    EXPECT_THAT(reasons(), ElementsAre("video: its edit list plays the track in several parts"));
    for (MovieTrack& track : movie_.tracks) track.edits.clear();
    movie_.tracks[0].edits = {{320, 80}};
    movie_.tracks[1].edits = {{100, 0}};
    movie_.timescale = 1000;
    EXPECT_THAT(reasons(), IsEmpty()) << "less than half a second at the end";
    for (std::uint32_t& length : movie_.tracks[1].durations) length = 320;
    movie_.tracks[1].edits = {{1000, 0}};
    EXPECT_THAT(reasons(), Contains("sound track 2: its edit list leaves out the last 2.200 s"));
}

TEST_F(ConversionTest, AnotherConfigurationOfAACIsRefused) {
    source_.soundCodec = "A_AAC";
    source_.soundMore = {mkv::element(0x63A2, Bytes{0x11, 0x90})};  // LC, 48 kHz, stereo
    movie_.tracks[1].codec = "mp4a";
    movie_.tracks[1].entry = aacEntry(2);
    EXPECT_THAT(reasons(), IsEmpty());
    movie_.tracks[1].entry = aacEntry(1);
    EXPECT_THAT(reasons(),
                ElementsAre("sound track 2: the decoder configuration isn't the original's"));
}

TEST_F(ConversionTest, AnIndexThatIsNotWellFormedIsRefused) {
    plan_.hasChapters = false;
    movie_.boxes = {box("udta", joined({box("name", viewOf("x")), be32(1)}))};
    EXPECT_THAT(reasons(), ElementsAre("the index of the new file isn't well formed"));
}

TEST_F(ConversionTest, MediaOutsideOfTheFileIsRefused) {
    movie_.tracks[1].mediaInfo = {
        box("dinf", {fullBox("dref", 0, 0, joined({be32(1), fullBox("url ", 0, 0, Bytes())}))})};
    EXPECT_THAT(reasons(),
                ElementsAre("sound track 2: media data is said to lie outside the file"));
}

TEST_F(ConversionTest, FragmentsAreRefused) {
    movie_.boxes = {box("mvex", Bytes())};
    EXPECT_THAT(reasons(),
                ElementsAre("the new file is in fragments, whose samples can't be compared"));
}

TEST_F(ConversionTest, ADisabledPictureIsRefused) {
    movie_.tracks[0].flags = 2;
    EXPECT_THAT(reasons(), ElementsAre("video: the track is disabled"));
}

TEST_F(ConversionTest, SizesThatTellMoreThanTheFileCanHoldEndTheProof) {
    movie_.tracks[1].sizes[9] = 0xFFFFFFF0;
    EXPECT_EQ(failure(), "the tracks claim far more data than the file holds");
}

TEST_F(ConversionTest, MoreFramesThanADayOfPicturesEndTheProof) {
    constexpr std::uint32_t frames = 4'000'001;
    movie_.tracks[1] = evenTrack("soun", frames, 0, 1, frames);
    EXPECT_EQ(failure(), "the new file has too many frames to be proved");
}

}  // namespace
}  // namespace marlet::test
