#include "write/in_place_tracks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "support/box_builder.h"
#include "support/box_reader.h"
#include "support/media.h"
#include "support/temp_folder.h"
#include "write/track_film.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using Kind = InPlaceTrack::Kind;

/// `hdlr` with a name behind the handler.
Bytes named(std::string_view handler, const Bytes& name) {
    return fullBox("hdlr", 0, 0, joined({be32(0), bytesOf(handler), Bytes(12), name}));
}

std::vector<InPlaceTrack> readBytes(const Bytes& film) {
    const TempFolder folder;
    return InPlaceTracks::read(folder.write("film.mp4", film));
}

std::vector<InPlaceTrack> readTracks(const std::vector<MovieTrack>& tracks) {
    Movie movie;
    movie.tracks = tracks;
    return readBytes(buildMovie(movie));
}

/// The name that a track with this `hdlr` is read to have.
std::string nameOf(const Bytes& name) {
    const Bytes tables =
        joined({stsdBox("mp4a"), sttsBox({}), stscBox({}), stszBox(0, 0), stcoBox({})});
    const Bytes media =
        box("mdia", {mdhdBox(1000, 0), named("soun", name), box("minf", {box("stbl", tables)})});
    const auto tracks = readBytes(box("moov", {box("trak", {tkhdBox(1), media})}));
    return tracks.empty() ? "(no track)" : tracks[0].name;
}

std::string nameOf(std::string_view name) {
    return nameOf(joined({bytesOf(name), Bytes{0}}));
}

TEST(InPlaceTracks, SoundAndSubtitlesAreOfferedAndNothingElse) {
    std::vector<MovieTrack> tracks;
    for (const char* handler : {"vide", "soun", "sbtl", "text", "subt", "clcp", "tmcd", "hint"})
        tracks.push_back(evenTrack(handler, 2, 20, 30));
    const auto found = readTracks(tracks);
    ASSERT_EQ(found.size(), 5U);
    for (std::size_t i = 0; i < found.size(); i++) {
        EXPECT_EQ(found[i].index, static_cast<int>(i) + 1);
        EXPECT_EQ(found[i].id, i + 2);
        EXPECT_EQ(found[i].kind, i == 0 ? Kind::audio : Kind::subtitle);
        EXPECT_TRUE(found[i].keep);
    }
}

TEST(InPlaceTracks, ATrackIsReadWithAllItsFields) {
    MovieTrack track = evenTrack("soun", 2, 20, 30);
    track.language = "fre";
    track.flags = 2;
    track.altGroup = 3;
    track.codec = "ac-3";
    track.entry = soundEntry({}, 0, 6);
    InPlaceTrack wanted;
    wanted.id = 1;
    wanted.language = "fre";
    wanted.codec = "ac-3";
    wanted.channels = 6;
    wanted.altGroup = 3;
    EXPECT_THAT(readTracks({track}), ElementsAre(wanted));
    track.flags = 3;
    EXPECT_TRUE(readTracks({track}).at(0).enabled);
}

TEST(InPlaceTracks, ATextTrackOfChaptersIsNotOffered) {
    MovieTrack film = evenTrack("vide", 2, 20, 30);
    film.boxes = {box("tref", {box("chap", joined({be32(2), be32(9)}))})};
    MovieTrack chapters = evenTrack("text", 2, 20, 30);
    MovieTrack subtitles = evenTrack("text", 2, 20, 30);
    const auto found = readTracks({film, chapters, subtitles});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].index, 2);
}

TEST(InPlaceTracks, AnIndexCountsTracksThatCanNotBeRead) {
    const Bytes film = buildMovie({.tracks = {evenTrack("soun", 2, 20, 30)}});
    const ByteView content = payloadOf(film, "moov");
    const auto found =
        readBytes(box("moov", {box("trak", {tkhdBox(7)}), Bytes(content.begin(), content.end())}));
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].index, 1);
}

TEST(InPlaceTracks, AFileThatCanNotBeReadHasNone) {
    const TempFolder folder;
    EXPECT_THAT(InPlaceTracks::read(folder / "missing.mp4"), IsEmpty());
    EXPECT_THAT(InPlaceTracks::read(folder.write("text.mp4", "no film")), IsEmpty());
    EXPECT_THAT(InPlaceTracks::read(folder.path()), IsEmpty());
    EXPECT_THAT(
        readBytes(box("moov",
                      {box("trak", {tkhdBox(1), box("mdia", {mdhdBox(1, 1), hdlrBox("soun")})})})),
        IsEmpty());
}

TEST(InPlaceTracks, AnUnsetLanguageShowsAsUnd) {
    Bytes film = buildMovie({.tracks = {evenTrack("soun", 2, 20, 30)}});
    constexpr std::size_t language = 20;
    // Never set; QuickTime's word for none; QuickTime's number of a language.
    for (const Bytes& raw : {Bytes{0, 0}, Bytes{0x7F, 0xFF}, Bytes{0, 11}}) {
        patchTrack(film, 0, {"mdia", "mdhd"}, language, raw);
        EXPECT_EQ(readBytes(film).at(0).language, "und");
    }
}

TEST(InPlaceTracks, ANameThatEndsInHandlerIsNone) {
    EXPECT_EQ(nameOf("SoundHandler"), "");
    EXPECT_EQ(nameOf("SubtitleHANDLER"), "");
    EXPECT_EQ(nameOf("Core Media Audio handler"), "");
    EXPECT_EQ(nameOf(""), "");
    EXPECT_EQ(nameOf(joined({Bytes{0}, bytesOf("hidden")})), "");
}

TEST(InPlaceTracks, AnyOtherNameIsShownAsItStands) {
    EXPECT_EQ(nameOf("Director's Commentary"), "Director's Commentary");
    EXPECT_EQ(nameOf("Handler of all things"), "Handler of all things");
    EXPECT_EQ(nameOf(" two  blanks "), " two  blanks ");
    EXPECT_EQ(nameOf("Französisch"), "Französisch");
}

TEST(InPlaceTracks, ANameEndsWithItsBoxOrItsFirstZero) {
    EXPECT_EQ(nameOf(bytesOf("no end")), "no end");
    EXPECT_EQ(nameOf(joined({bytesOf("one"), Bytes{0}, bytesOf("two"), Bytes{0}})), "one");
    EXPECT_EQ(nameOf(Bytes{}), "");
    EXPECT_EQ(nameOf(Bytes{'a', 0xFF, 0}), "a\uFFFD");
}

TEST(InPlaceTracks, ANameThatIsCountedAsInQuickTimeLosesItsCount) {
    EXPECT_EQ(nameOf(joined({Bytes{7}, bytesOf("English")})), "English");
    EXPECT_EQ(nameOf(joined({Bytes{12}, bytesOf("SoundHandler")})), "");
    EXPECT_EQ(nameOf(joined({Bytes{9}, bytesOf("English")})), "\tEnglish");
}

class EnableTracks : public testing::Test {
protected:
    static Bytes film() {
        Movie movie;
        movie.tracks = {evenTrack("vide", 2, 20, 30), evenTrack("soun", 2, 20, 30),
                        evenTrack("soun", 2, 20, 30)};
        movie.tracks[1].flags = 2;
        movie.tracks[2].flags = 6;
        return buildMovie(movie);
    }
    std::string failure(const std::vector<int>& indices) const {
        try {
            InPlaceTracks::enable(indices, file_);
            return "";
        } catch (const MFError& error) {
            return error.description();
        }
    }
    std::vector<int> flags() const {
        const Bytes bytes = readFile(file_);
        std::vector<int> all;
        for (int track = 0; track < 3; track++) all.push_back(trackBox(bytes, track, {"tkhd"})[3]);
        return all;
    }

    TempFolder folder_;
    fs::path file_ = folder_.write("film.mp4", film());
};

TEST_F(EnableTracks, SetsOneBitAndChangesNothingElse) {
    InPlaceTracks::enable({2}, file_);
    Bytes wanted = film();
    patchTrack(wanted, 2, {"tkhd"}, 3, Bytes{7});
    EXPECT_EQ(readFile(file_), wanted);
}

TEST_F(EnableTracks, SetsSeveralAndLeavesAnEnabledOne) {
    InPlaceTracks::enable({0, 1, 2}, file_);
    EXPECT_THAT(flags(), ElementsAre(3, 3, 7));
}

TEST_F(EnableTracks, WithNoIndicesNothingIsDone) {
    EXPECT_NO_THROW(InPlaceTracks::enable({}, folder_ / "missing.mp4"));
}

TEST_F(EnableTracks, TheFlagsAreFoundBehindALongHeader) {
    file_ = folder_.write("long.mp4", largeBox("moov", box("trak", {tkhdBox(1, 2)})));
    InPlaceTracks::enable({0}, file_);
    EXPECT_EQ(readFile(file_), largeBox("moov", box("trak", {tkhdBox(1, 3)})));
}

TEST_F(EnableTracks, AFileWithoutAnIndexIsRefused) {
    file_ = folder_.write("none.mp4", ftypBox());
    EXPECT_EQ(failure({0}), "no index in the rebuilt file");
}

TEST_F(EnableTracks, AFileThatCanNotBeOpenedForWritingIsToldSo) {
    // Its top level and its index are read before.
    const Sys::Fault fault(Sys::Call::Open, EACCES, 3, false, file_);
    EXPECT_EQ(failure({1}),
              "cannot open the rebuilt file to set the sound track: Permission denied");
}

TEST_F(EnableTracks, ATrackThatIsNotThereHasNoHeader) {
    EXPECT_EQ(failure({3}), "track 3 has no header");
    EXPECT_EQ(failure({-1}), "track -1 has no header");
    file_ = folder_.write("bare.mp4", box("moov", {box("trak", {mdhdBox(1, 1)}),
                                                   box("trak", {box("tkhd", Bytes(3))})}));
    EXPECT_EQ(failure({0}), "track 0 has no header");
    EXPECT_EQ(failure({1}), "track 1 has no header");
}

TEST_F(EnableTracks, AWriteThatFailsNamesTheTrack) {
    const Sys::Fault fault(Sys::Call::Write, ENOSPC);
    EXPECT_EQ(failure({1}), "could not enable track 1");
}

TEST_F(EnableTracks, AFlushThatFailsIsAFailure) {
    const Sys::Fault fault(Sys::Call::Flush, EIO);
    EXPECT_EQ(failure({1}), "could not set the sound track: Input/output error");
}

TEST(RealTracks, AFilmOfTwoLanguagesWithSurroundSubtitlesAndChaptersReadsRight) {
    const TempFolder folder;
    const fs::path film = folder / "film.m4v";
    const fs::path subtitles =
        folder.write("lines.srt", "1\n00:00:00,100 --> 00:00:00,900\nHello\n");
    const fs::path chapters =
        folder.write("chapters.txt",
                     ";FFMETADATA1\n[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=500\ntitle=One\n"
                     "[CHAPTER]\nTIMEBASE=1/1000\nSTART=500\nEND=1000\ntitle=Two\n");
    ffmpeg({"-f",
            "lavfi",
            "-i",
            "testsrc2=size=64x36:rate=25:duration=1",
            "-f",
            "lavfi",
            "-i",
            "sine=sample_rate=48000:duration=1",
            "-i",
            subtitles.string(),
            "-i",
            chapters.string(),
            "-map",
            "0",
            "-map",
            "1",
            "-map",
            "1",
            "-map",
            "1",
            "-map",
            "2",
            "-map_chapters",
            "3",
            "-c:v",
            "libx264",
            "-preset",
            "ultrafast",
            "-c:a:0",
            "ac3",
            "-ac:a:0",
            "6",
            "-c:a:1",
            "aac",
            "-ac:a:1",
            "2",
            "-c:a:2",
            "aac",
            "-ac:a:2",
            "6",
            "-c:s",
            "mov_text",
            "-metadata:s:a:0",
            "language=eng",
            "-metadata:s:a:1",
            "language=fre",
            "-metadata:s:a:2",
            "language=ger",
            "-metadata:s:a:2",
            "handler_name=Commentary",
            "-metadata:s:s:0",
            "language=spa",
            "-f",
            "mp4",
            film.string()});
    std::vector<std::string> labels;
    for (const InPlaceTrack& track : InPlaceTracks::read(film)) labels.push_back(track.label());
    EXPECT_THAT(labels, ElementsAre("English · Surround 5.1 · AC3", "French · Stereo · AAC",
                                    "German (commentary) · Surround 5.1 · AAC", "Spanish"));
}

}  // namespace
}  // namespace marlet::test
