#include "helpers/mux_options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/errors.h"

namespace marlet::test {

namespace {

using Arguments = std::vector<std::string>;

Relayout::Request request(const Arguments& arguments) {
    return std::get<Relayout::Request>(MuxOptions::parse(arguments));
}

std::string failure(const Arguments& arguments) {
    try {
        MuxOptions::parse(arguments);
    } catch (const MFError& error) {
        return error.description();
    }
    return {};
}

}  // namespace

TEST(MuxOptions, TakesTheCommandLineOfARebuild) {
    const Relayout::Request wanted{.input = "/a/in.mp4",
                                   .output = "/b/out.mp4",
                                   .sliceMilliseconds = 500,
                                   .padding = 5123,
                                   .removedTracks = {3, 2}};
    EXPECT_EQ(request({"-tmp", "/t", "-inter", "500", "-moovpad", "5123", "-rem", "2", "-rem", "3",
                       "/a/in.mp4", "-out", "/b/out.mp4"}),
              wanted);
}

TEST(MuxOptions, TakesTheCommandLineOfANewFilm) {
    const auto parsed = std::get<BuildMovie::Request>(MuxOptions::parse(
        Arguments{"-tmp", "/t", "-add", "/t/source.mkv#1:name=Video", "-add", "/t/t2.m4a:lang=eng",
                  "-chap", "/t/c.txt", "-inter", "250", "-moovpad", "4096", "-new", "/t/new.mp4"}));
    const BuildMovie::Request wanted{
        .tracks = {{.file = "/t/source.mkv", .track = 1, .name = "Video"},
                   {.file = "/t/t2.m4a", .language = "eng"}},
        .chapters = "/t/c.txt",
        .scratch = "/t",
        .output = "/t/new.mp4",
        .sliceMilliseconds = 250,
        .padding = 4096};
    EXPECT_EQ(parsed, wanted);
}

TEST(MuxOptions, TakesANewFilmOnlyWhole) {
    EXPECT_EQ(failure({"-tmp", "/t", "-add", "a#1", "-inter", "500", "-moovpad", "1", "-out", "b"}),
              "unknown option \"-out\" where \"-new\" stands");
    EXPECT_EQ(failure({"-tmp", "/t", "-add", "a#1", "-chap"}), "the command line is incomplete");
    EXPECT_EQ(
        failure({"-tmp", "/t", "-add", "a", "-inter", "1", "-moovpad", "1", "-new", "b", "c"}),
        "there is more behind the output's name");
}

TEST(MuxOptions, ReadsNoPathAsAnOption) {
    const auto plain =
        request({"-tmp", "-inter", "-inter", "250", "-moovpad", "0", "-rem", "-out", "-version"});
    EXPECT_EQ(plain.input, "-rem");
    EXPECT_EQ(plain.output, "-version");
    EXPECT_TRUE(plain.removedTracks.empty());
    const auto removing = request(
        {"-tmp", "-info", "-inter", "250", "-moovpad", "0", "-rem", "7", "-out", "-out", "-rem"});
    EXPECT_EQ(removing.input, "-out");
    EXPECT_EQ(removing.output, "-rem");
    EXPECT_EQ(removing.removedTracks, (std::set<std::uint32_t>{7}));
}

TEST(MuxOptions, TakesVersionAndInfo) {
    EXPECT_TRUE(
        std::holds_alternative<MuxOptions::ShowVersion>(MuxOptions::parse(Arguments{"-version"})));
    EXPECT_EQ(
        std::get<MuxOptions::ShowInfo>(MuxOptions::parse(Arguments{"-info", "-version"})).file,
        "-version");
}

TEST(MuxOptions, TellsWhichOptionItDoesntKnow) {
    EXPECT_EQ(failure({"-tmp", "/t", "-interleave", "500", "-moovpad", "1", "a", "-out", "b"}),
              "unknown option \"-interleave\" where \"-inter\" stands");
    EXPECT_EQ(
        failure({"-tmp", "/t", "-inter", "500", "-moovpad", "1", "-add", "1", "a", "-out", "b"}),
        "unknown option \"-add\" where \"-rem\" stands");
    EXPECT_EQ(failure({"-tmp", "/t", "-inter", "500", "-moovpad", "1", "a", "-new", "b"}),
              "unknown option \"-new\" where \"-out\" stands");
}

TEST(MuxOptions, RefusesNumbersThatAreNone) {
    for (const char* slice : {"", "0", "-5", "5x", "99999999999", "60001"})
        EXPECT_EQ(failure({"-tmp", "/t", "-inter", slice, "-moovpad", "1", "a", "-out", "b"}),
                  "\"" + std::string(slice) + "\" is no number for \"-inter\"");
    EXPECT_EQ(failure({"-tmp", "/t", "-inter", "1", "-moovpad", "-1", "a", "-out", "b"}),
              "\"-1\" is no number for \"-moovpad\"");
    EXPECT_EQ(
        failure({"-tmp", "/t", "-inter", "1", "-moovpad", "1", "-rem", "0", "a", "-out", "b"}),
        "\"0\" is no number for \"-rem\"");
}

TEST(MuxOptions, RefusesAnIncompleteOrOtherCommandLine) {
    EXPECT_EQ(failure({"-tmp", "/t", "-inter"}), "the command line is incomplete");
    const std::string usage =
        "this program takes -version, -info FILE, -tmp DIR -inter MS -moovpad N [-rem ID]... IN "
        "-out OUT, or -tmp DIR -add TRACK [-add TRACK]... [-chap FILE] -inter MS -moovpad N -new "
        "OUT";
    EXPECT_EQ(failure({}), usage);
    EXPECT_EQ(failure({"-version", "-info"}), usage);
    EXPECT_EQ(failure({"in.mp4", "-out", "out.mp4"}), usage);
}

}  // namespace marlet::test
