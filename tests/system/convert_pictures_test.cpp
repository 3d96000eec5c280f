// Pictures of every make that a film may have go through the real program: what a decoder gets
// afterwards is what it got before.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>

#include "matroska/mkv_file.h"
#include "mp4/sound_layout.h"
#include "support/box_builder.h"
#include "support/media.h"
#include "support/mkv_builder.h"
#include "system/conversion_run.h"
#include "system/film_readers.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using Strings = std::vector<std::string>;
using Tools = Bundle::Tools;

/// Two seconds of noise over a test picture.
struct Picture {
    std::string encoder = "libx264";
    std::string parameters;
    std::string rate = "25";
    std::string size = "64x36";
    std::string pixels = "yuv420p";
    std::string filter;
};

/// As a bare stream: whatever holds it has to find out all by itself.
fs::path encoded(const TempFolder& folder, const Picture& picture, const std::string& name = "v") {
    const bool isAVC = picture.encoder == "libx264";
    const fs::path file = folder / (name + (isAVC ? ".h264" : ".hevc"));
    std::string source = "testsrc2=size=" + picture.size + ":rate=" + picture.rate + ":duration=2";
    if (!picture.filter.empty()) source += "," + picture.filter;
    const std::string quiet = isAVC ? "threads=1:" : "log-level=none:pools=1:frame-threads=1:";
    ffmpeg({"-f", "lavfi", "-i", source, "-c:v", picture.encoder, "-preset", "ultrafast",
            "-pix_fmt", picture.pixels, isAVC ? "-x264-params" : "-x265-params",
            quiet + picture.parameters, file.string()});
    return file;
}

fs::path sound(const TempFolder& folder) {
    const fs::path file = folder / "a.ac3";
    ffmpeg({"-f", "lavfi", "-i", "anoisesrc=duration=2:sample_rate=48000:amplitude=0.3", "-ac", "2",
            "-c:a", "ac3", "-b:a", "96k", file.string()});
    return file;
}

/// By mkvmerge, with these options for the picture.
void mergeFilm(const fs::path& film, const Picture& picture, const Strings& options = {}) {
    const TempFolder folder;
    Strings arguments = {"--default-duration", "0:" + picture.rate + "p"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    arguments.push_back(encoded(folder, picture).string());
    arguments.push_back(sound(folder).string());
    mkvmerge(film, arguments);
}

/// The picture of a film again, with more told in its entry and these first bytes of each frame
/// kept apart, as old versions of mkvmerge do.
void retell(const fs::path& film, const Bytes& more, const Bytes& stripped) {
    const auto mkv = MKVFile::open(film);
    const MKVTrack& track = mkv->tracks().front();
    Bytes blocks;
    std::int64_t base = 0;
    mkv->forEachBlock(std::set<int>{track.number}, {}, [&](const MKVBlock& block) {
        const Bytes frame = mkv->data(block).front();
        EXPECT_TRUE(std::equal(stripped.begin(), stripped.end(), frame.begin()));
        append(blocks,
               mkv::simpleBlock(1, static_cast<std::int16_t>((block.timeNs - base) / 1'000'000),
                                ByteView(frame).subspan(stripped.size()),
                                block.isKeyframe ? mkv::keyframe : 0));
        return true;
    });
    const Bytes compression =
        mkv::element(0x5034, {mkv::number(0x4254, 3), mkv::element(0x4255, stripped)});
    const Bytes encodings =
        mkv::element(0x6D80, {mkv::element(0x6240, {mkv::number(0x5032, 1), compression})});
    const Bytes entry = mkv::entry(
        1, 1, track.codecID,
        {mkv::element(0x63A2, track.codecPrivate), encodings, more,
         mkv::element(0xE0, {mkv::number(0xB0, static_cast<std::uint64_t>(track.pixelWidth)),
                             mkv::number(0xBA, static_cast<std::uint64_t>(track.pixelHeight))})});
    writeFile(film, joined({mkv::header(), mkv::segment({mkv::info(2000), mkv::tracks({entry}),
                                                         mkv::cluster(0, {blocks})})}));
}

struct Film {
    std::string name;
    std::function<void(const fs::path&)> make;
};
void PrintTo(const Film& film, std::ostream* out) {
    *out << film.name;
}

const std::vector<Film>& films() {
    static const std::vector<Film> all = {
        {"H264OpenGroupsAnamorphic",
         [](const fs::path& film) {
             mergeFilm(film, {.parameters = "bframes=3:b-adapt=0:b-pyramid=normal:open-gop=1:"
                                            "keyint=24:ref=4",
                              .rate = "24000/1001",
                              .filter = "setsar=64/45"});
         }},
        {"H264InterlacedInFullRange",
         [](const fs::path& film) {
             mergeFilm(film, {.parameters = "bframes=2:keyint=30:tff=1:colormatrix=smpte170m",
                              .rate = "30000/1001",
                              .size = "64x64",
                              .pixels = "yuvj420p"});
         }},
        {"H264IntraRefreshInAShapeOfTheContainersAlone",
         [](const fs::path& film) {
             mergeFilm(film, {.parameters = "bframes=0:intra-refresh=1:keyint=25", .rate = "50"},
                       {"--aspect-ratio", "0:2.35"});
         }},
        {"H264OfSeveralParameterSetsWithinTheStream",
         [](const fs::path& film) {
             const TempFolder folder;
             const fs::path one = encoded(
                 folder, {.parameters = "bframes=0:keyint=20:repeat-headers=1:aud=1"}, "one");
             const fs::path two = encoded(
                 folder, {.parameters = "bframes=0:keyint=20:repeat-headers=1:sps-id=1:cabac=0"},
                 "two");
             Bytes both = readFile(one);
             append(both, readFile(two));
             ffmpeg({"-fflags", "+genpts", "-r", "25", "-i", folder.write("v.h264", both).string(),
                     "-i", sound(folder).string(), "-c", "copy", film.string()});
         }},
        {"H264OfVariableRate",
         [](const fs::path& film) {
             const TempFolder folder;
             ffmpeg({"-f",         "lavfi",
                     "-i",         "testsrc2=size=64x36:rate=60:duration=2",
                     "-i",         sound(folder).string(),
                     "-vf",        "select='if(lt(t,1),not(mod(n,2)),not(mod(n,7)))'",
                     "-vsync",     "vfr",
                     "-c:v",       "libx264",
                     "-preset",    "ultrafast",
                     "-bf",        "2",
                     "-pix_fmt",   "yuv420p",
                     "-c:a",       "copy",
                     film.string()});
         }},
        {"H264TurnedAndLate",
         [](const fs::path& film) {
             mergeFilm(
                 film, {.parameters = "bframes=2:keyint=25"},
                 {"--projection-type", "0:0", "--projection-pose-roll", "0:90", "--sync", "0:400"});
         }},
        {"HEVCOpenGroupsHDR10",
         [](const fs::path& film) {
             mergeFilm(film,
                       {.encoder = "libx265",
                        .parameters = "bframes=3:b-adapt=0:keyint=24:open-gop=1",
                        .rate = "24000/1001",
                        .pixels = "yuv420p10le"},
                       {"--colour-matrix",
                        "0:9",
                        "--colour-range",
                        "0:1",
                        "--colour-transfer-characteristics",
                        "0:16",
                        "--colour-primaries",
                        "0:9",
                        "--max-content-light",
                        "0:1000",
                        "--max-frame-light",
                        "0:400",
                        "--max-luminance",
                        "0:1000",
                        "--min-luminance",
                        "0:0.005",
                        "--chromaticity-coordinates",
                        "0:0.708,0.292,0.17,0.797,0.131,0.046",
                        "--white-colour-coordinates",
                        "0:0.3127,0.329"});
         }},
        {"HEVCClosedGroupsPacked",
         [](const fs::path& film) {
             mergeFilm(film,
                       {.encoder = "libx265",
                        .parameters = "bframes=4:keyint=25:open-gop=0:radl=2:repeat-headers=1",
                        .rate = "60000/1001"},
                       {"--compression", "0:zlib"});
         }},
        {"HEVCDolbyVisionHeadersStripped",
         [](const fs::path& film) {
             mergeFilm(film, {.encoder = "libx265",
                              .parameters = "bframes=3:keyint=25",
                              .pixels = "yuv420p10le"});
             Bytes record = {1, 0, 16, 0x1D, 0x10};
             record.resize(24);
             retell(film,
                    mkv::element(0x41E4,
                                 {mkv::number(0x41E7, 0x64767643), mkv::element(0x41ED, record)}),
                    Bytes{0, 0});
         }},
    };
    return all;
}

/// Digests of the decoded pictures in the order in which they are shown; the last line tells what
/// the decoder complains of.
Strings decoded(const fs::path& film) {
    const std::string text =
        runTool({"sh", "-c",
                 "ffmpeg -v error -nostdin -i \"$0\" -map 0:v:0 -vsync passthrough -f framemd5 - "
                 "2>&1 | sed '/^#/d; s/.*, *//'",
                 film.string()});
    Strings lines;
    std::string line;
    for (const char letter : text) {
        if (letter != '\n') line += letter;
        if (letter == '\n') lines.push_back(std::exchange(line, {}));
    }
    return lines;
}

/// Of a stream as ffprobe tells it, what a player goes by.
json shown(const fs::path& film) {
    const json told = json::parse(runTool({"ffprobe", "-v", "error", "-select_streams", "v:0",
                                           "-show_streams", "-of", "json", film.string()}));
    const json& stream = told.at("streams").front();
    json kept;
    for (const char* key : {"codec_name", "profile", "level", "width", "height", "pix_fmt",
                            "sample_aspect_ratio", "display_aspect_ratio", "color_range",
                            "color_space", "color_transfer", "color_primaries"})
        if (stream.contains(key)) kept[key] = stream[key];
    // What isn't told is limited, and `colr` can't leave it untold.
    kept["color_range"] = stream.value("color_range", "tv");
    for (const json& side : stream.value("side_data_list", json::array())) {
        json values = side;
        values.erase("displaymatrix");  // its place differs, the rotation doesn't
        for (json& value : values)      // "34000/50000", in whatever denominator
            if (value.is_string() && value.get<std::string>().find('/') != std::string::npos) {
                const std::string text = value;
                const double number = std::stod(text) / std::stod(text.substr(text.find('/') + 1));
                value = std::round(number * 10'000) / 10'000;
            }
        kept["side"][side.at("side_data_type").get<std::string>()] = values;
    }
    return kept;
}

/// The earliest time of its packets.
std::string streamStart(const fs::path& film, const std::string& stream) {
    return probeValue(film, "stream=start_time", stream);
}

/// Seconds by which the picture starts behind the sound; 0 for a silent film.
double lateness(const fs::path& film) {
    const std::string sound = streamStart(film, "a:0");
    return sound.empty() ? 0 : std::stod(streamStart(film, "v:0")) - std::stod(sound);
}

class PictureConversion : public testing::TestWithParam<std::tuple<Tools, Film>> {
protected:
    void SetUp() override {
        std::get<1>(GetParam()).make(source_);
        const auto result = film_.convert();
        ASSERT_EQ(result.lines("RESULT done: Charade | New file Charade (1963).m4v · ").size(), 1U)
            << result.output;
    }

    ConversionRun film_{std::get<0>(GetParam())};
    const fs::path source_ = film_.source();
    const fs::path made_ = film_.made();
};

TEST_P(PictureConversion, IsShownAsItsSource) {
    const auto before = packetsOf(source_, "v:0");
    const auto after = packetsOf(made_, "v:0");
    ASSERT_EQ(before.size(), after.size());
    const double from = startOf(before);
    const double to = startOf(after);
    for (std::size_t i = 0; i < before.size(); i++) {
        EXPECT_EQ(before[i].hash, after[i].hash) << i;
        EXPECT_NEAR(before[i].time - from, after[i].time - to, 0.0021) << i;
        EXPECT_EQ(before[i].isKeyframe(), after[i].isKeyframe()) << i;
    }
    EXPECT_NEAR(lateness(source_), lateness(made_), 0.0021);
    const Strings pictures = decoded(source_);
    EXPECT_GE(pictures.size(), before.size() - 3);
    for (const std::string& digest : pictures) EXPECT_EQ(digest.size(), 32U) << digest;
    EXPECT_EQ(decoded(made_), pictures);
    EXPECT_EQ(shown(made_), shown(source_));
    const Strings streams = streamsOf(source_, "a").empty() ? Strings{"v"} : Strings{"v", "a"};
    EXPECT_EQ(complaintsOf(made_, streams), "");
    EXPECT_LE(measureInterleave(made_), 1.0);
}

std::string nameOf(const testing::TestParamInfo<std::tuple<Tools, Film>>& info) {
    return std::get<1>(info.param).name;
}

INSTANTIATE_TEST_SUITE_P(Own, PictureConversion,
                         testing::Combine(testing::Values(Tools::own), testing::ValuesIn(films())),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Gpac, PictureConversion,
                         testing::Combine(testing::Values(Tools::gpac), testing::ValuesIn(films())),
                         nameOf);

}  // namespace
}  // namespace marlet::test
