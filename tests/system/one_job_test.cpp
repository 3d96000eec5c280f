#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/box_builder.h"
#include "support/process.h"
#include "support/temp_folder.h"
#include "write/journal.h"

namespace marlet::test {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Ended {
    int status = 0;
    std::string output;
    std::string errors;
};

class OneJob : public testing::Test {
protected:
    OneJob() {
        Movie movie;
        movie.tracks = {evenTrack("soun", 4, 20, 100)};
        movie.padding = 4000;
        folder_.write("Film.mp4", buildMovie(movie));
    }
    static Ended run(const std::vector<std::string>& arguments) {
        Process process(builtProgram("one_job"), arguments);
        const int status = process.wait();
        return {status, process.output(), process.errors()};
    }
    /// With the film's path for the word FILE.
    Ended request(std::string json) {
        const std::string word = "FILE";
        if (const auto at = json.find(word); at != std::string::npos)
            json.replace(at, word.size(), (folder_ / "Film.mp4").string());
        return run({folder_.write("request.json", json).string()});
    }
    OwnHome home_;
    TempFolder folder_;
};

TEST_F(OneJob, WritesAndPrintsOneLine) {
    const Ended end = request(R"({"file":"FILE","details":{"title":"Alien","genre":"Horror"}})");
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output,
              "RESULT done: Alien | Details written | layout before 0.40 after 0.40 | media kind: "
              "none → (set); genre: none → Horror; title: none → Alien\n");
    EXPECT_EQ(end.errors, "");
}

TEST_F(OneJob, AnEpisodeIsLabelledByShowAndNumber) {
    const Ended end = request(
        R"({"file":"FILE","details":{"kind":"tv","show":"Lost","season":2,"episode":5,"title":"x"}})");
    EXPECT_THAT(end.output, StartsWith("RESULT done: Lost · S2E5 | "));
}

TEST_F(OneJob, PutsTheOriginalDetailsBack) {
    request(R"({"file":"FILE","details":{"title":"Alien"}})");
    EXPECT_THAT(request(R"({"file":"FILE","mode":"restoreOriginal"})").output,
                StartsWith("RESULT done: Film.mp4 | Original details restored | "));
}

TEST_F(OneJob, AFileThatIsNoMatroskaFileCannotBeConverted) {
    EXPECT_EQ(request(R"({"file":"FILE","mode":"convert","outputDir":"new"})").output,
              "RESULT failed: Film.mp4 | this file isn't a Matroska file Marlet can read yet | "
              "layout before - after -\n");
}

TEST_F(OneJob, AStoppedWriteIsPrintedAsFailed) {
    const WriteJournal pending{"/films/Other.mp4", folder_.write("copy.mp4", "copy"), 4};
    pending.save();
    const Ended end = request(R"({"file":"FILE","details":{"title":"Alien"}})");
    EXPECT_THAT(end.output,
                StartsWith("NOTICE A previous write to Other.mp4 was interrupted and finishing it "
                           "failed (cannot open video for writing: No such file or directory)."));
    EXPECT_THAT(end.output, HasSubstr("\nRESULT failed: Alien | an earlier write to Other.mp4 "));
}

TEST_F(OneJob, AStartWithNothingToDoIsSilent) {
    const Ended end = run({"--start"});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output + end.errors, "");
}

TEST_F(OneJob, AnUnusableRequestIsTold) {
    for (const char* json : {"", "{", "[]", "{}", R"({"file":1})", R"({"file":"FILE","mode":"x"})",
                             R"({"file":"FILE","details":{"kind":"song"}})",
                             R"({"file":"FILE","artwork":"/nowhere.png"})"}) {
        const Ended end = request(json);
        EXPECT_EQ(end.status, 2) << json;
        EXPECT_EQ(end.output, "") << json;
        EXPECT_THAT(end.errors, HasSubstr("is no usable request: ")) << json;
    }
    EXPECT_EQ(run({}).status, 2);
    EXPECT_EQ(run({(folder_ / "none.json").string()}).status, 2);
}

}  // namespace
}  // namespace marlet::test
