// The shell session of the README, run as it stands there.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "foundation/text.h"
#include "support/media.h"
#include "system/program_run.h"

namespace marlet::test {
namespace {

namespace fs = std::filesystem;

struct Step {
    std::string command;
    std::vector<std::string> output;  ///< "..." stands for whatever follows in a line
};

/// The lines between the README's two marks, without the fence.
std::vector<std::string> sessionLines() {
    std::vector<std::string> lines;
    bool inside = false;
    for (const std::string& line :
         Text::split(textOf(readFile(sourceTree() / "README.md")), '\n')) {
        if (line == "<!-- session -->")
            inside = true;
        else if (line == "<!-- end of session -->")
            inside = false;
        else if (inside && !line.starts_with("```"))
            lines.push_back(line);
    }
    return lines;
}

std::vector<Step> session() {
    std::vector<Step> steps;
    bool goesOn = false;
    for (const std::string& line : sessionLines()) {
        if (goesOn)
            steps.back().command += "\n" + line;
        else if (line.starts_with("$ "))
            steps.push_back({line.substr(2), {}});
        else if (!steps.empty())
            steps.back().output.push_back(line);
        goesOn = !steps.empty() && line.ends_with('\\');
    }
    return steps;
}

constexpr const char* mark = "--- next step ---";

/// What each step printed, in lines.
std::vector<std::vector<std::string>> run(const ProgramRun& program,
                                          const std::vector<Step>& steps) {
    std::string script = "cd '" + program.library().string() + "'\n";
    for (const Step& step : steps) script += step.command + "\necho '" + mark + "'\n";
    std::map<std::string, std::string> environment = program.environment;
    environment["PATH"] = builtProgram("marlet").parent_path().string() + ":" + std::getenv("PATH");
    environment["LC_ALL"] = "C.UTF-8";
    environment.erase("MARLET_TEST_LIBRARY");
    Process bash("/bin/bash", {"-c", script}, environment);
    EXPECT_EQ(bash.wait(), 0);
    EXPECT_EQ(bash.errors(), "");
    std::vector<std::vector<std::string>> printed(1);
    for (const std::string& line : Text::split(bash.output(), '\n')) {
        if (line == mark)
            printed.emplace_back();
        else
            printed.back().push_back(line);
    }
    return printed;
}

bool isLike(const std::string& shown, const std::string& printed) {
    if (!shown.ends_with("...")) return shown == printed;
    return printed.starts_with(shown.substr(0, shown.size() - 3));
}

TEST(ReadmeSession, PrintsWhatTheReadmeShows) {
    ProgramRun program;
    fs::create_directories(program.library() / "Movies");
    fs::create_directories(program.library() / "TV Shows/The Tin Observatory/Season 1");
    makeMovie(program.library() / "Movies/Charade (1963).mp4");
    makeMovie(program.library() / "Movies/Sintel (2010).m4v", {.soundTracks = 2});
    makeMovie(program.library() / "TV Shows/The Tin Observatory/Season 1/01 First Light.m4v");
    const std::vector<Step> steps = session();
    ASSERT_GE(steps.size(), 8u) << "the README lost its session";

    const auto printed = run(program, steps);

    ASSERT_EQ(printed.size(), steps.size() + 1);
    for (std::size_t i = 0; i < steps.size(); i++) {
        const Step& step = steps[i];
        EXPECT_EQ(printed[i].size(), step.output.size()) << step.command << "\nprinted:\n"
                                                         << Text::join(printed[i], "\n");
        for (std::size_t j = 0; j < std::min(printed[i].size(), step.output.size()); j++)
            EXPECT_TRUE(isLike(step.output[j], printed[i][j]))
                << step.command << "\nshown:   " << step.output[j]
                << "\nprinted: " << printed[i][j];
    }
}

}  // namespace
}  // namespace marlet::test
