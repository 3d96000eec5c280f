// New films from real sources of FFmpeg and mkvmerge, judged by FFmpeg.

#include "helpers/build_movie.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <sstream>

#include "foundation/errors.h"
#include "helpers/laid_out.h"
#include "mp4/box.h"
#include "mp4/summary.h"
#include "support/box_reader.h"
#include "support/bundle.h"
#include "support/media.h"
#include "support/mkv_builder.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace marlet::test {

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

const char* const lines =
    "1\n00:00:00,500 --> 00:00:01,000\n<i>Hallo</i> Welt\n\n"
    "2\n00:00:01,200 --> 00:00:01,900\nZwei\nZeilen\n";
const char* const marks =
    "CHAPTER01=00:00:00.000\nCHAPTER01NAME=Anfang: eins\n"
    "CHAPTER02=00:00:01.000\nCHAPTER02NAME=Zwei ✓\n";

/// Sources that several tests read; made once.
struct Sources {
    TempFolder folder;
    fs::path film = folder / "film.mkv";
    fs::path hevc = folder / "hevc.mkv";
    fs::path srt = folder.write("s1.srt", std::string_view(lines));
    fs::path chapters = folder.write("chapters.txt", std::string_view(marks));
    fs::path aac = folder / "t1.m4a";
    fs::path ac3 = folder / "t1.ac3";

    Sources() {
        const std::string mp4 = (folder / "film.mp4").string();
        ffmpeg({"-f",       "lavfi",   "-i",     "testsrc2=size=64x36:rate=24000/1001:duration=2",
                "-f",       "lavfi",   "-i",     "sine=sample_rate=48000:duration=2",
                "-map",     "0",       "-map",   "1",
                "-map",     "1",       "-map",   "1",
                "-pix_fmt", "yuv420p", "-c:v",   "libx264",
                "-bf",      "3",       "-g",     "24",
                "-c:a:0",   "aac",     "-c:a:1", "ac3",
                "-ac:a:1",  "6",       "-c:a:2", "eac3",
                mp4});
        mkvmerge(film, {mp4});
        ffmpeg({"-f", "lavfi", "-i", "testsrc2=size=64x36:rate=25:duration=2", "-f", "lavfi", "-i",
                "sine=sample_rate=48000:duration=2", "-pix_fmt", "yuv420p", "-c:v", "libx265",
                "-preset", "ultrafast", "-x265-params",
                "log-level=none:pools=1:open-gop=1:keyint=10:bframes=3:b-adapt=0", "-c:a", "aac",
                hevc.string()});
        ffmpeg({"-i", mp4, "-map", "0:1", "-c", "copy", "-f", "mp4", aac.string()});
        ffmpeg({"-i", mp4, "-map", "0:2", "-c", "copy", ac3.string()});
    }
};

const Sources& sources() {
    static const Sources made;
    return made;
}

/// Builds with the arguments of a conversion and checks what holds for every film.
class Built {
public:
    explicit Built(const std::vector<std::string>& tracks,
                   const std::optional<fs::path>& chapters = {}, std::uint32_t padding = 4096) {
        for (const std::string& track : tracks)
            request_.tracks.push_back(TrackRequests::parse(track));
        request_.chapters = chapters;
        request_.scratch = folder_.path();
        request_.output = path();
        request_.padding = padding;
        BuildMovie::run(request_);
        EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), {}), 1) << "leftovers";
        const Bytes file = readFile(path());
        EXPECT_THAT(topTypes(file), ElementsAre("ftyp", "moov", "free", "mdat"));
        EXPECT_EQ(topBox(file, "free").size(), padding);
        EXPECT_LE(soundLayout(file), 0.6);
    }
    fs::path path() const { return folder_ / "built.mp4"; }

private:
    TempFolder folder_;
    BuildMovie::Request request_;
};

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> all;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) all.push_back(line);
    return all;
}

/// Without "1,a,": the number of a stream and its kind.
std::string hashOf(const fs::path& film, const std::string& stream) {
    const std::string line =
        ffmpeg({"-i", film.string(), "-map", "0:" + stream, "-c", "copy", "-f", "streamhash", "-"});
    return line.substr(line.find('='));
}

/// Presentation times in seconds, ascending, from the first on.
std::vector<double> timesOf(const fs::path& film, const std::string& stream) {
    std::vector<double> times;
    for (const std::string& line :
         split(runTool({"ffprobe", "-v", "error", "-select_streams", stream, "-show_entries",
                        "packet=pts_time", "-of", "csv=p=0", film.string()})))
        if (!line.empty()) times.push_back(std::stod(line));
    std::ranges::sort(times);
    for (std::size_t i = times.size(); i-- > 0;) times[i] -= times.front();
    return times;
}

void expectSame(const fs::path& a, const std::string& streamA, const fs::path& b,
                const std::string& streamB) {
    EXPECT_EQ(hashOf(a, streamA), hashOf(b, streamB));
    const auto left = timesOf(a, streamA);
    const auto right = timesOf(b, streamB);
    ASSERT_EQ(left.size(), right.size());
    ASSERT_THAT(left, Not(IsEmpty()));
    for (std::size_t i = 0; i < left.size(); i++)
        ASSERT_NEAR(left[i], right[i], 0.0021) << "frame " << i;
}

/// A line a stream; ffprobe ends some with the place of side data that nobody asked for.
std::string streamValues(const fs::path& film, const std::string& entries) {
    std::string text;
    for (std::string line : split(runTool({"ffprobe", "-v", "error", "-show_entries", entries,
                                           "-of", "csv=p=0", film.string()}))) {
        if (line.ends_with(',')) line.pop_back();
        if (!line.empty()) text += line + "\n";
    }
    return text;
}

/// What a decoder has to say about the film; FFmpeg stops at the first error.
std::string complaints(const fs::path& film) {
    return runTool({"sh", "-c",
                    "ffmpeg -v warning -xerror -nostdin -i \"$0\" -map 0:v -map 0:a -f null - 2>&1 "
                    "|| echo failed",
                    film.string()});
}

/// The flags and the alternate group of each track, from `tkhd`.
std::vector<std::pair<std::uint32_t, std::uint32_t>> headers(const fs::path& film) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> all;
    const MP4Summary summary = parseSummary(loadMoov(film), film, Detail::Yes);
    for (const Track& track : summary.tracks)
        all.emplace_back(track.tkhdFlags & 1, static_cast<std::uint32_t>(track.altGroup));
    return all;
}

std::string failure(const std::vector<std::string>& tracks,
                    const std::optional<fs::path>& chapters = {}) {
    const TempFolder folder;
    BuildMovie::Request request{
        .chapters = chapters, .scratch = folder.path(), .output = folder / "built.mp4"};
    try {
        for (const std::string& track : tracks)
            request.tracks.push_back(TrackRequests::parse(track));
        BuildMovie::run(request);
    } catch (const MFError& error) {
        EXPECT_TRUE(fs::is_empty(folder.path()));
        return error.description();
    }
    return {};
}

}  // namespace

TEST(BuildMovie, CopiesPictureAndSoundFrameByFrame) {
    const std::string mkv = sources().film.string();
    const Built film({mkv + "#1:name=Video", mkv + "#2:lang=eng:name=English:group=1",
                      mkv + "#3:lang=deu:name=German:group=1:disable",
                      mkv + "#4:lang=fra:name=French:group=1:disable"});
    for (const char* stream : {"0", "1", "2", "3"})
        expectSame(sources().film, stream, film.path(), stream);
    EXPECT_THAT(complaints(film.path()), IsEmpty());
    EXPECT_EQ(streamValues(film.path(), "stream=codec_tag_string:stream_tags=language"),
              "avc1,und\nmp4a,eng\nac-3,deu\nec-3,fra\n");
    EXPECT_THAT(headers(film.path()),
                ElementsAre(std::pair(1, 0), std::pair(1, 1), std::pair(0, 1), std::pair(0, 1)));
    const std::string names = streamValues(film.path(), "stream_tags=handler_name");
    EXPECT_EQ(names, "Video\nEnglish\nGerman\nFrench\n");
}

TEST(BuildMovie, GivesASteadyFilmItsExactRate) {
    const Built film({sources().film.string() + "#1:name=Video"});
    EXPECT_EQ(probeValue(film.path(), "stream=avg_frame_rate"), "24000/1001");
    EXPECT_EQ(probeValue(film.path(), "stream=r_frame_rate"), "24000/1001");
    EXPECT_EQ(probeValue(film.path(), "stream=start_time"), "0.000000");
}

TEST(BuildMovie, TagsHEVCAsApplesPlayersWantIt) {
    const Built film({sources().hevc.string() + "#1:name=Video",
                      sources().hevc.string() + "#2:lang=eng:name=English:group=1"});
    expectSame(sources().hevc, "0", film.path(), "0");
    EXPECT_EQ(probeValue(film.path(), "stream=codec_tag_string").substr(0, 4), "hvc1");
    EXPECT_THAT(complaints(film.path()), IsEmpty());
    const Track track =
        parseSummary(loadMoov(film.path()), film.path(), Detail::Yes).tracks.front();
    EXPECT_EQ(track.sync.size(), 5U) << "the first and each open group's";
}

TEST(BuildMovie, MarksOnlyPicturesThatDecodingCanStartAtWhateverTheBlocksSay) {
    // In block groups nothing tells the frames apart for certain.
    const TempFolder folder;
    const fs::path groups = folder / "groups.mkv";
    mkvmerge(groups, {"--engage", "no_simpleblocks", "-A", sources().film.string()});
    const Built film({groups.string() + "#1:name=Video"});
    const Track track =
        parseSummary(loadMoov(film.path()), film.path(), Detail::Yes).tracks.front();
    EXPECT_THAT(track.sync, ElementsAre(1, 25));
    expectSame(groups, "0", film.path(), "0");
}

TEST(BuildMovie, UnpacksFramesThatAreStoredPacked) {
    const TempFolder folder;
    const fs::path packed = folder / "packed.mkv";
    mkvmerge(packed, {"--compression", "-1:zlib", sources().film.string()});
    const Built film(
        {packed.string() + "#1:name=Video", packed.string() + "#3:lang=eng:name=English:group=1"});
    expectSame(sources().film, "0", film.path(), "0");
    expectSame(sources().film, "2", film.path(), "1");
    EXPECT_THAT(complaints(film.path()), IsEmpty());
}

TEST(BuildMovie, PutsBackWhatHeaderStrippingLeftOut) {
    const Bytes frames = readFile(sources().ac3);
    const std::size_t length = 1792;  // 448 kbit/s at 48 kHz
    ASSERT_EQ(frames.size() % length, 0U);
    Bytes blocks;
    std::int16_t time = 0;
    for (std::size_t at = 0; at < frames.size(); at += length, time += 32)
        append(blocks, mkv::simpleBlock(1, time, ByteView(frames).subspan(at + 2, length - 2)));
    const Bytes encodings = mkv::element(
        0x6D80,
        {mkv::element(0x6240, {mkv::element(0x5034, {mkv::number(0x4254, 3),
                                                     mkv::element(0x4255, Bytes{0x0B, 0x77})})})});
    const Bytes file =
        joined({mkv::header(),
                mkv::segment({mkv::info(), mkv::tracks({mkv::entry(1, 2, "A_AC3", {encodings})}),
                              mkv::cluster(0, {blocks})})});
    const TempFolder folder;
    const fs::path stripped = folder.write("stripped.mkv", file);
    const Built film({stripped.string() + "#1:lang=eng:name=English:group=1"});
    EXPECT_EQ(hashOf(film.path(), "0"), hashOf(sources().ac3, "0"));
}

TEST(BuildMovie, HidesTheRunInOfAnEncoder) {
    // In step with a picture that starts at 0: the first block is played 20 ms before, unheard.
    const Bytes frames = readFile(sources().ac3);
    const std::size_t length = 1792;  // 448 kbit/s at 48 kHz
    const Bytes delay = mkv::number(0x56AA, 20'000'000);
    for (const std::int16_t first : {0, 5, 20}) {
        Bytes blocks;
        std::int16_t time = first;
        for (std::size_t at = 0; at + length <= frames.size(); at += length, time += 32)
            append(blocks, mkv::simpleBlock(1, time, ByteView(frames).subspan(at, length)));
        const Bytes file =
            joined({mkv::header(),
                    mkv::segment({mkv::info(), mkv::tracks({mkv::entry(1, 2, "A_AC3", {delay})}),
                                  mkv::cluster(0, {blocks})})});
        const TempFolder folder;
        const fs::path film = folder.write("delayed.mkv", file);
        const Built built({film.string() + "#1:lang=eng:name=English:group=1"});
        EXPECT_EQ(hashOf(built.path(), "0"), hashOf(sources().ac3, "0"));
        const MP4Summary summary = parseSummary(loadMoov(built.path()), built.path(), Detail::Yes);
        EXPECT_NEAR(summary.tracks[0].presOffset, (first - 20) / 1000.0, 1e-6);
    }
}

TEST(BuildMovie, AddsSoundThatWasConverted) {
    const Built film({sources().film.string() + "#1:name=Video",
                      sources().ac3.string() + ":lang=eng:name=English · Surround 5.1:group=1",
                      sources().aac.string() + ":lang=deu:name=German:group=1:disable"});
    expectSame(sources().ac3, "0", film.path(), "1");
    expectSame(sources().aac, "0", film.path(), "2");
    EXPECT_EQ(streamValues(film.path(), "stream=codec_tag_string:stream_tags=language"),
              "avc1,und\nac-3,eng\nmp4a,deu\n");
    EXPECT_THAT(complaints(film.path()), IsEmpty());
    EXPECT_THAT(headers(film.path()),
                ElementsAre(std::pair(1, 0), std::pair(1, 1), std::pair(0, 1)));
    // The encoder's lead-in stays cut off.
    const MP4Summary summary = parseSummary(loadMoov(film.path()), film.path(), Detail::Yes);
    EXPECT_NEAR(summary.tracks[2].presOffset, -1024.0 / 48000, 1e-6);
}

TEST(BuildMovie, StartsATrackLateByItsDelay) {
    const std::string mkv = sources().film.string();
    const Built film({mkv + "#1:name=Video", mkv + "#3:lang=eng:name=E:group=1:delay=250",
                      sources().aac.string() + ":lang=deu:name=G:group=1:disable:delay=125"});
    const MP4Summary summary = parseSummary(loadMoov(film.path()), film.path(), Detail::Yes);
    EXPECT_NEAR(summary.tracks[1].presOffset, 0.25, 1e-6);
    EXPECT_NEAR(summary.tracks[2].presOffset, 0.125 - 1024.0 / 48000, 1e-6);
    EXPECT_EQ(summary.tracks[0].presOffset +
                  summary.tracks[0].ctts[0] / static_cast<double>(summary.tracks[0].timescale),
              0);
    EXPECT_EQ(streamValues(film.path(), "stream=start_time"), "0.000000\n0.250000\n0.125000\n");
}

TEST(BuildMovie, ShowsSubtitlesAtTheirTimes) {
    const Built film(
        {sources().film.string() + "#1:name=Video",
         sources().srt.string() + ":lang=deu:name=Deutsch:hdlr=sbtl:txtflags=0x40000000:group=2",
         sources().srt.string() + ":lang=eng:name=English:hdlr=sbtl:group=2:disable"});
    const std::string text = shownLines(film.path(), "1");
    EXPECT_THAT(text, HasSubstr("00:00:00,500 --> 00:00:01,000\n"));
    EXPECT_THAT(text, HasSubstr("<i>Hallo</i> Welt"));
    EXPECT_THAT(text, HasSubstr("00:00:01,200 --> 00:00:01,900\n"));
    EXPECT_THAT(text, HasSubstr("Zwei\nZeilen"));
    EXPECT_THAT(headers(film.path()),
                ElementsAre(std::pair(1, 0), std::pair(1, 2), std::pair(0, 2)));
    const MP4Summary summary = parseSummary(loadMoov(film.path()), film.path(), Detail::Yes);
    EXPECT_EQ(summary.tracks[1].handler, "sbtl");
    constexpr std::int64_t flagsAt = 8 + 16;
    EXPECT_EQ(BigEndian::u32(summary.tracks[1].stsd, flagsAt), 0x40000000U);
    EXPECT_EQ(BigEndian::u32(summary.tracks[2].stsd, flagsAt), 0U);
}

TEST(BuildMovie, ShowsLinesThatOverlapTogether) {
    const TempFolder folder;
    const fs::path srt = folder.write(
        "o.srt", std::string_view("1\r\n00:00:01,000 --> 00:00:03,000\r\nLong\r\n\r\n2\r\n"
                                  "00:00:02,000 --> 00:00:04,000\r\nLate < 3 <font "
                                  "color=\"red\">red</font>\r\n"));
    const Built film({srt.string() + ":lang=eng:name=E:hdlr=sbtl:group=2:disable"});
    const std::string text = shownLines(film.path(), "0");
    EXPECT_THAT(text, HasSubstr("00:00:01,000 --> 00:00:02,000\nLong\n"));
    EXPECT_THAT(text, HasSubstr("00:00:02,000 --> 00:00:03,000\nLong\nLate < 3 red\n"));
    EXPECT_THAT(text, HasSubstr("00:00:03,000 --> 00:00:04,000\nLate < 3 red\n"));
}

TEST(BuildMovie, WritesChaptersAsAListAndAsATrackOfThePicture) {
    const Built film({sources().film.string() + "#1:name=Video"}, sources().chapters);
    EXPECT_EQ(runTool({"ffprobe", "-v", "error", "-show_entries",
                       "chapter=start_time,end_time:chapter_tags=title", "-of", "csv=p=0",
                       film.path().string()}),
              "0.000000,1.000000,Anfang: eins\n1.000000,2.002000,Zwei ✓\n");
    const MP4Summary summary = parseSummary(loadMoov(film.path()), film.path(), Detail::Yes);
    ASSERT_THAT(summary.chpl, SizeIs(2));
    EXPECT_EQ(summary.chpl[1].ms, 1000);
    EXPECT_EQ(summary.chpl[1].title, "Zwei ✓");
    ASSERT_THAT(summary.tracks, SizeIs(2));
    EXPECT_EQ(summary.tracks[1].handler, "text");
    EXPECT_EQ(summary.tracks[1].tkhdFlags & 1, 0U);
    EXPECT_THAT(summary.tracks[0].chapRefs, ElementsAre(summary.tracks[1].id));
}

TEST(BuildMovie, MovesATrackOfAQuickTimeFilmIntoTheFormOfAnMP4) {
    const TempFolder folder;
    const fs::path mov = folder / "source.mov";
    ffmpeg({"-i", (sources().folder / "film.mp4").string(), "-map", "0:0", "-map", "0:1", "-map",
            "0:2", "-c", "copy", mov.string()});
    const Built film({mov.string() + "#1", mov.string() + "#2", mov.string() + "#3"});
    const MP4Summary before = parseSummary(loadMoov(mov), mov, Detail::Yes);
    const MP4Summary after = parseSummary(loadMoov(film.path()), film.path(), Detail::Yes);
    ASSERT_EQ(after.tracks.size(), before.tracks.size());
    for (std::size_t t = 0; t < after.tracks.size(); t++) {
        EXPECT_EQ(after.tracks[t].id, before.tracks[t].id);
        EXPECT_EQ(after.tracks[t].sizes, before.tracks[t].sizes);
        EXPECT_EQ(after.tracks[t].durations, before.tracks[t].durations);
        EXPECT_EQ(after.tracks[t].ctts, before.tracks[t].ctts);
        EXPECT_EQ(after.tracks[t].elstDigest, before.tracks[t].elstDigest);
        EXPECT_EQ(after.tracks[t].tkhdFlags, before.tracks[t].tkhdFlags);
        EXPECT_EQ(hashOf(film.path(), std::to_string(t)), hashOf(mov, std::to_string(t)));
    }
    EXPECT_THAT(textOf(before.tracks[1].stsd), HasSubstr("wave"));
    EXPECT_THAT(textOf(after.tracks[1].stsd), Not(HasSubstr("wave")));
    EXPECT_THAT(textOf(after.tracks[1].stsd), HasSubstr("esds"));
    EXPECT_THAT(complaints(film.path()), IsEmpty());
}

TEST(BuildMovie, WritesThePictureOfAQuickTimeFilmAsAnMP4Has) {
    const TempFolder folder;
    const fs::path mov = folder / "source.mov";
    ffmpeg({"-i", (sources().folder / "film.mp4").string(), "-map", "0:0", "-c", "copy",
            "-color_primaries", "bt709", "-color_trc", "bt709", "-colorspace", "bt709", "-movflags",
            "write_colr", mov.string()});
    const Bytes before = parseSummary(loadMoov(mov), mov, Detail::Yes).tracks.at(0).stsd;
    const Built film({mov.string() + "#1"});
    const Bytes after =
        parseSummary(loadMoov(film.path()), film.path(), Detail::Yes).tracks.at(0).stsd;
    ASSERT_THAT(textOf(before), HasSubstr("nclc"));
    EXPECT_THAT(textOf(after), HasSubstr("nclx"));
    EXPECT_THAT(textOf(after), Not(HasSubstr("nclc")));
    constexpr std::size_t vendor = 8 + 8 + 8 + 4;
    EXPECT_THAT(textOf(slice(before, vendor, vendor + 4)), Not(std::string(4, '\0')));
    EXPECT_EQ(slice(after, vendor - 4, vendor + 12).size(), 16U);
    EXPECT_THAT(slice(after, vendor - 4, vendor + 12), testing::Each(0));
    EXPECT_EQ(streamValues(film.path(), "stream=color_space,color_primaries,color_range"),
              "tv,bt709,bt709\n");
    EXPECT_THAT(complaints(film.path()), HasSubstr("matches no streams"));
}

TEST(BuildMovie, GivesAQuickTimeFilmItsChapters) {
    const TempFolder folder;
    const fs::path mov = folder / "source.mov";
    ffmpeg({"-i", (sources().folder / "film.mp4").string(), "-map", "0:1", "-map", "0:0", "-c",
            "copy", mov.string()});
    const Built film({mov.string() + "#1", mov.string() + "#2"}, sources().chapters);
    const MP4Summary summary = parseSummary(loadMoov(film.path()), film.path(), Detail::Yes);
    ASSERT_THAT(summary.tracks, SizeIs(3));
    EXPECT_THAT(summary.tracks[0].chapRefs, IsEmpty()) << "the sound";
    EXPECT_THAT(summary.tracks[1].chapRefs, ElementsAre(summary.tracks[2].id)) << "the picture";
    EXPECT_THAT(summary.chpl, SizeIs(2));
}

TEST(BuildMovie, SoundAboveSixtyFourKilohertzComesOutOfItsQuickTimeEntryOfVersionTwo) {
    const TempFolder folder;
    const fs::path mov = folder / "source.mov";
    ffmpeg({"-f", "lavfi", "-i", "sine=sample_rate=96000:duration=1", "-ac", "2", "-c:a", "aac",
            mov.string()});
    const Bytes before = parseSummary(loadMoov(mov), mov, Detail::Yes).tracks.at(0).stsd;
    ASSERT_EQ(BigEndian::u16(before, 24), 2);
    const Built film({mov.string() + "#1"});
    const Bytes after =
        parseSummary(loadMoov(film.path()), film.path(), Detail::Yes).tracks.at(0).stsd;
    EXPECT_EQ(BigEndian::u16(after, 24), 0);
    EXPECT_EQ(streamValues(film.path(), "stream=sample_rate,channels"), "96000,2\n");
    EXPECT_EQ(hashOf(film.path(), "0"), hashOf(mov, "0"));
}

TEST(BuildMovie, RefusesWhatItCantBuildFrom) {
    const std::string mkv = sources().film.string();
    EXPECT_EQ(failure({}), "there is no track to build a film of");
    EXPECT_EQ(failure({mkv + "#9:name=Video"}), "the file has no track with the number 9");
    EXPECT_EQ(failure({mkv}), "\"film.mkv\" has several tracks, and none was chosen");
    EXPECT_EQ(failure({sources().aac.string() + "#7"}), "the file has no track with the number 7");
    EXPECT_EQ(failure({"/nowhere/a.mkv#1"}), "cannot open \"a.mkv\": No such file or directory");
    EXPECT_EQ(failure({sources().folder.path().string()}).substr(0, 1), "\"");
    EXPECT_EQ(failure({sources().chapters.string()}),
              "\"chapters.txt\" is of no kind that can be added");
    EXPECT_EQ(failure({mkv + "#1"}, sources().srt), "the chapter file has no chapters");
    const TempFolder folder;
    const fs::path bad = folder.write("c.txt", std::string_view("CHAPTER01=00:99:00.000\n"));
    EXPECT_EQ(failure({mkv + "#1"}, bad), "\"CHAPTER01=00:99:00.000\" is no start of a chapter");
}

TEST(BuildMovie, RefusesCodecsThatAreNotCopied) {
    const TempFolder folder;
    const auto made = [&folder](std::uint64_t type, std::string_view codec) {
        const Bytes file =
            joined({mkv::header(),
                    mkv::segment({mkv::info(), mkv::tracks({mkv::entry(1, type, codec)}),
                                  mkv::cluster(0, {mkv::simpleBlock(1, 0, Bytes(9, 7))})})});
        return folder.write("made.mkv", file).string() + "#1";
    };
    EXPECT_EQ(failure({made(1, "V_VP9")}), "track 1 is V_VP9, which this program doesn't copy");
    EXPECT_EQ(failure({made(2, "A_OPUS")}), "track 1 is A_OPUS, which this program doesn't copy");
    EXPECT_EQ(failure({made(17, "S_TEXT/UTF8")}),
              "track 1 is S_TEXT/UTF8, which this program doesn't copy");
    EXPECT_EQ(failure({made(1, "V_MPEG4/ISO/AVC")}),
              "track 1 (V_MPEG4/ISO/AVC) has no usable codec configuration");
    EXPECT_EQ(failure({made(1, "V_MPEGH/ISO/HEVC")}),
              "track 1 (V_MPEGH/ISO/HEVC) has no usable codec configuration");
    EXPECT_EQ(failure({made(2, "A_AAC")}), "track 1 (A_AAC) has no usable codec configuration");
    EXPECT_EQ(failure({made(2, "A_AC3")}), "track 1 doesn't begin with a frame of A_AC3");
}

TEST(BuildMovie, RefusesASourceThatEndsInsideAFrame) {
    const TempFolder folder;
    Bytes file = readFile(sources().film);
    file.resize(file.size() / 2);
    const fs::path cut = folder.write("cut.mkv", file);
    const std::string text = failure({cut.string() + "#1", cut.string() + "#2"});
    EXPECT_TRUE(text.empty() || text == "the file became shorter while it was read") << text;
}

TEST(BuildMovie, NeverWritesOverAnInput) {
    const TempFolder folder;
    const fs::path copy = folder / "copy.mkv";
    fs::copy_file(sources().film, copy);
    BuildMovie::Request request{.scratch = folder.path(), .output = copy};
    request.tracks.push_back(TrackRequests::parse(copy.string() + "#1"));
    EXPECT_THROW(BuildMovie::run(request), MFError);
    EXPECT_EQ(readFile(copy), readFile(sources().film));
}

TEST(BuildMovie, UnderstandsACommandLineAsTheRealToolDoes) {
    const auto gpac = gpacOnPath();
    if (!gpac) GTEST_SKIP() << "no GPAC on the PATH";
    const TempFolder folder;
    fs::create_symlink(sources().film, folder / "source.mkv");
    const std::string mkv = (folder / "source.mkv").string();
    const auto built = [&](const fs::path& tool, const std::string& name) {
        Process process(
            tool,
            {"-tmp",
             folder.path().string(),
             "-add",
             mkv + "#1:name=Video",
             "-add",
             mkv + "#2:lang=eng:name=English · Stereo:group=1",
             "-add",
             mkv + "#3:lang=deu:name=German:group=1:disable:delay=250",
             "-add",
             sources().ac3.string() + ":lang=fra:name=F:group=1:disable",
             "-add",
             sources().aac.string() + ":lang=spa:name=S:group=1:disable",
             "-add",
             sources().srt.string() + ":lang=deu:name=D:hdlr=sbtl:txtflags=0x40000000:group=2",
             "-chap",
             sources().chapters.string(),
             "-inter",
             "500",
             "-moovpad",
             "5000",
             "-new",
             (folder / name).string()});
        EXPECT_EQ(process.wait(), 0) << process.errors();
        return parseSummary(loadMoov(folder / name), folder / name, Detail::Yes);
    };
    const MP4Summary real = built(*gpac / "MP4Box", "real.mp4");
    const MP4Summary own = built(builtProgram("marlet-mux"), "own.mp4");
    ASSERT_EQ(own.tracks.size(), real.tracks.size() + 1) << "and the track of chapters";
    for (std::size_t t = 0; t < real.tracks.size(); t++) {
        const Track& a = own.tracks[t];
        const Track& b = real.tracks[t];
        EXPECT_EQ(a.id, b.id);
        EXPECT_EQ(a.tkhdFlags, b.tkhdFlags);
        EXPECT_EQ(a.altGroup, b.altGroup);
        EXPECT_EQ(a.handler, b.handler);
        EXPECT_EQ(a.codec, b.codec);
        EXPECT_EQ(a.language, b.language);
        if (a.handler != "sbtl") {
            EXPECT_EQ(a.sizes, b.sizes);
        }
        const double first = a.ctts.empty() ? 0 : static_cast<double>(a.ctts[0]) / a.timescale;
        const double other = b.ctts.empty() ? 0 : static_cast<double>(b.ctts[0]) / b.timescale;
        EXPECT_NEAR(a.presOffset + first, b.presOffset + other, 0.002) << t;
    }
    EXPECT_EQ(own.chpl, real.chpl);
}

TEST(BuildMovie, ShowsTheTracksOfAMatroskaFileInLinesOfTheirNumberAndType) {
    EXPECT_THAT(runTool({builtProgram("marlet-mux").string(), "-info", sources().film.string()}),
                testing::AllOf(HasSubstr("Track 1 type: Video"), HasSubstr("Track 2 type: Audio"),
                               HasSubstr("Track 4 type: Audio")));
}

}  // namespace marlet::test
