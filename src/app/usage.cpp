#include "app/usage.h"

#include <algorithm>

#include "app/build_info.h"

namespace marlet::Usage {

const std::vector<Line>& lines() {
    static const std::vector<Line> all = {
        {"", "", "What is it?"},
        {"--scan", "PATH", "look at a file or folder; repeatable"},
        {"--report", "FILE", "write what was found there, separated by tabs"},
        {"--ignore-tags", "", "judge by name and folders only, and score the report"},
        {"--virtual", "MAP", "identify made-up names and score the answers"},
        {"--sources", "=LIST", "ask only these, in this order: tmdb,appleTV,itunes"},
        {"--apple-tv", "", "let a scripted run ask Apple TV"},
        {"--no-ai", "", "ask no model for messy names"},
        {"", "", "Write details"},
        {"--tag", "FILE", "write details and a cover into a file; repeatable"},
        {"--confirm", "=TEXT", "right are the matches of files named so; repeatable"},
        {"--confirm-all", "", "all matches are right"},
        {"--drop", "=TEXT:N,N", "make a new file without these tracks; repeatable"},
        {"--output-dir", "FOLDER", "where new files go; switches Apple TV off for good"},
        {"--no-fix", "", "never lay a file out anew for Apple TV, now and later"},
        {"--match-only", "", "stop after showing the matches"},
        {"--art-report", "", "show which artwork would be taken"},
        {"--plan-only", "", "stop after showing what becomes of films to convert"},
        {"--plan-test", "", "time the making of these plans"},
        {"--roundtrip", "", "add the files again after the write"},
        {"", "", "Take it back"},
        {"--restore-original", "", "after the writes, put each file's original details back"},
        {"--restore-last-batch", "", "put back the originals of the last run in History"},
        {"--history-csv", "FILE", "write History there as a table, after whatever else ran"},
        {"", "", "Look closer"},
        {"--playable", "FILE", "try a file with FFmpeg: its length, pictures and sound"},
        {"--mkv-in", "FILE", "what a Matroska file holds"},
        {"--audio-test", "WAV", "what a WAV file holds, and a test AAC beside it"},
        {"--test-key", "", "try the TMDB key"},
        {"", "", "Pictures of the windows"},
        {"--shots", "FOLDER", "every screen of a --tag run, light and dark"},
        {"--shots-only", "", "write nothing"},
        {"--review", "NAME", "what the names of these pictures begin with"},
        {"--snapshots", "FOLDER", "the empty window and the list of a --scan run"},
        {"--website-shots", "FOLDER", "large pictures to show the program with"},
        {"--poster-picks", "FOLDER", "the artwork page of every film"},
        {"--picker-demo", "FOLDER", "the match picker on made-up titles"},
        {"--empty-shots", "FOLDER", "the screens with nothing in them"},
        {"--snapshot-about", "FILE", "About alone, then end"},
        {"--snapshot-about-window", "FILE", "About over the window, then end"},
        {"--keep-open", "", "don't end after pictures without files"},
        {"--window", "WxH", "size of the window, as 1200x800"},
        {"--select", "TITLE", "the title that is selected"},
        {"--inspect-file", "NAME", "the file that the inspector shows"},
        {"--sample-failure", "", "show a made-up failure in History"},
        {"--shot-watcher", "", "wait for somebody who takes pictures, too"},
        {"--appearance", "LOOK", "\"dark\", or anything else for light"},
        {"", "", "For scripts"},
        {"--quit", "", "end when done"},
        {"--json", "", "with --scan and --tag: one JSON object a line"},
        {"--strict-exit", "", "status 1: something needs a look, 2: failed"},
        {"--progress", "", "tell on standard error what is being done"},
        {"--trace", "", "tell the stages of a scan on standard error"},
        {"--help", "", "show this and end"},
        {"--version", "", "show the version and end"},
    };
    return all;
}

std::string help() {
    constexpr std::size_t column = 25;
    std::string text =
        "Usage: marlet [OPTION]...\n"
        "   or: marlet FILE...\n"
        "Writes details into movie files and converts MKV and MOV to M4V.\n";
    for (const Line& line : lines()) {
        if (line.option.empty()) {
            text += "\n" + line.meaning + "\n";
            continue;
        }
        std::string left = "  " + line.option;
        if (!line.value.empty()) left += (line.value[0] == '=' ? "" : " ") + line.value;
        left.resize(std::max(left.size() + 1, column), ' ');
        text += left + line.meaning + "\n";
    }
    return text +
           "\nA value stands behind \"=\" or is the next argument. Any option makes the run a\n"
           "scripted one. See marlet(1).\n";
}

std::string version() {
    return "marlet " + BuildInfo::version() + "\n" + BuildInfo::builtLine() +
           "\nMIT licence; there is no warranty.\n";
}

std::optional<std::string> answerAtOnce(const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        if (argument == "--help") return help();
        if (argument == "--version") return version();
    }
    return std::nullopt;
}

}  // namespace marlet::Usage
