#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>

#include "mp4/sound_layout.h"
#include "support/box_reader.h"
#include "support/media.h"
#include "support/temp_folder.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;

std::string maker() {
    return builtProgram("make_demo_library").string();
}

/// Seconds by path, as the program plans them.
std::map<std::string, int> planned(const std::vector<std::string>& options = {}) {
    std::vector<std::string> arguments = {maker(), "--list"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    std::istringstream lines(runTool(arguments));
    std::map<std::string, int> out;
    int seconds = 0;
    for (std::string path; lines >> seconds && std::getline(lines >> std::ws, path);)
        out[path] = seconds;
    return out;
}

fs::path make(const TempFolder& folder, const std::string& path, const std::string& only,
              const std::vector<std::string>& options = {}) {
    std::vector<std::string> arguments = {maker(), folder.path().string(), "--only", only};
    arguments.insert(arguments.end(), options.begin(), options.end());
    runTool(arguments);
    return folder.path() / path;
}

double seconds(const fs::path& file) {
    return std::stod(probeValue(file, "format=duration"));
}

/// The types of the boxes of a file in their order.
std::vector<std::string> outline(ByteView file) {
    std::vector<std::string> out;
    for (std::int64_t at = 0; at + 8 <= static_cast<std::int64_t>(file.size());
         at += BigEndian::u32(file, at))
        out.push_back(BigEndian::fourCC(file, at + 4));
    return out;
}

const std::string sintel = "Movies/Sintel.mp4";
const std::string bunny = "Movies/Big Buck Bunny 2008.m4v";
const std::string jekyll = "Movies/Dr. Jekyll and Mr. Hyde.mp4";

TEST(DemoLibrary, HoldsFilmsEpisodesADoubleEpisodeAndANameThatSaysNothing) {
    const std::map<std::string, int> files = planned();
    EXPECT_GE(files.size(), 14U);
    EXPECT_TRUE(files.contains(jekyll));
    EXPECT_TRUE(files.contains("Movies/VID_0042.mp4"));
    const int twice =
        files.at("TV Shows/The Tin Observatory/Season 2/04 A Comet for Mrs. Pell.m4v");
    EXPECT_EQ((twice + 30) / 60, 44);
    EXPECT_EQ((files.at("Movies/Charade (1963)/Charade (1963).m4v") + 30) / 60, 113);
}

TEST(DemoLibrary, AFileHasThePlannedLengthAndPlaysWithoutAnError) {
    const TempFolder folder;
    const fs::path file = make(folder, sintel, "Sintel");
    EXPECT_NEAR(seconds(file), planned().at(sintel), 2);
    EXPECT_EQ(probeValue(file, "stream=codec_name"), "h264\naac");
    EXPECT_EQ(ffmpeg({"-xerror", "-i", file.string(), "-f", "null", "-"}), "");
}

TEST(DemoLibrary, SoundAndPictureTakeTurnsWithinASecond) {
    const TempFolder folder;
    const double layout = measureInterleave(make(folder, sintel, "Sintel"));
    EXPECT_GT(layout, 0);
    EXPECT_LE(layout, soundLayoutLimit);
}

TEST(DemoLibrary, IndexesLieFirstAndLastWithRoomAndWithout) {
    const TempFolder folder;
    runTool({maker(), folder.path().string(), "--only", "Sintel|Bunny|Hyde.mp4|Steel"});
    using Types = std::vector<std::string>;
    const auto types = [&](const std::string& path) {
        return outline(readFile(folder.path() / path));
    };
    EXPECT_EQ(types(sintel), (Types{"ftyp", "moov", "free", "free", "mdat"}));
    EXPECT_GE(payloadOf(readFile(folder.path() / sintel), "free").size(), 4096U);
    EXPECT_EQ(types(jekyll), (Types{"ftyp", "moov", "free", "mdat"}));
    EXPECT_LT(payloadOf(readFile(folder.path() / jekyll), "free").size(), 16U) << "no room";
    EXPECT_EQ(types(bunny), (Types{"ftyp", "free", "mdat", "moov", "free"}));
    EXPECT_EQ(types("Movies/Tears.of.Steel.2012.WEB-DL.H.264.mp4"),
              (Types{"ftyp", "free", "mdat", "moov"}));
}

TEST(DemoLibrary, OneFilmCarriesTheTagsOfAPurchase) {
    const TempFolder folder;
    const fs::path file =
        make(folder, "Movies/Charade (1963)/Charade (1963).m4v", "Charade \\(1963\\)\\.m4v");
    const Bytes bytes = readFile(file);
    const ByteView meta = payloadOf(payloadOf(payloadOf(bytes, "moov"), "udta"), "meta");
    const ByteView items = payloadOf(meta.subspan(4), "ilst");  // behind version and flags
    for (const char* name : {"apID", "ownr", "purd", "akID"})
        EXPECT_TRUE(hasChild(items, name)) << name;
    EXPECT_EQ(probeValue(file, "format_tags=title"), "Charade");
}

TEST(DemoLibrary, TroubleIsAFilmWithItsSoundInOneStretchThatStillPlays) {
    const TempFolder folder;
    const std::string path = "Movies/Detour (1945).m4v";
    EXPECT_FALSE(planned().contains(path));
    ASSERT_TRUE(planned({"--with-trouble"}).contains(path));
    const fs::path file = make(folder, path, "Detour", {"--with-trouble"});
    EXPECT_GT(measureInterleave(file), 60);
    ffmpeg({"-xerror", "-i", file.string(), "-f", "null", "-"});
}

TEST(DemoLibrary, MakingItAgainGivesTheSameFileAndLeavesNothingElse) {
    const TempFolder folder;
    const Bytes first = readFile(make(folder, sintel, "Sintel"));
    EXPECT_EQ(readFile(make(folder, sintel, "Sintel")), first);
    std::size_t entries = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder.path()))
        entries += entry.is_regular_file() ? 1 : 0;
    EXPECT_EQ(entries, 1U);
    EXPECT_FALSE(fs::exists(folder / ".making"));
}

TEST(DemoLibrary, AWrongArgumentIsAnErrorAndMakesNothing) {
    const TempFolder folder;
    EXPECT_THROW(runTool({maker(), folder.path().string(), "--wrong"}), std::runtime_error);
    EXPECT_THROW(runTool({maker()}), std::runtime_error);
    EXPECT_TRUE(fs::is_empty(folder.path()));
}

}  // namespace
}  // namespace marlet::test
