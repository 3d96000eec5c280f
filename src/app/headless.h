#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/app_model.h"
#include "app/run_lines.h"
#include "app/shot_options.h"
#include "sources/async.h"

namespace marlet {

/// The command line's front end over the same model that the screens use.
namespace Headless {

/// One "--drop=": tracks that the first file whose name holds the text is to be made without.
struct Drop {
    std::string part;
    std::vector<int> tracks;  ///< counted from 0 through all tracks of the file
    bool operator==(const Drop&) const = default;
};
/// "PART:N,N,...", divided at the last colon. Nothing when it isn't that.
std::optional<Drop> parseDrop(const std::string& value);

/// What was asked for on the command line; all options take effect, whichever mode runs.
struct Options {
    std::vector<std::filesystem::path> scan;
    std::optional<std::filesystem::path> report;
    std::vector<std::filesystem::path> tag;
    std::optional<std::filesystem::path> outputDir;
    std::optional<std::filesystem::path> virtualMap;
    std::optional<std::filesystem::path> playable;
    std::optional<std::filesystem::path> audioTest;
    std::optional<std::filesystem::path> mkvIn;
    std::optional<std::filesystem::path> historyCsv;
    std::vector<std::string> confirm;  ///< parts of file names
    std::vector<std::string> drop;     ///< as given, "PART:N,N"
    bool confirmAll = false;
    bool ignoreTags = false;
    bool noAI = false;
    bool noFix = false;
    bool restoreOriginal = false;
    bool restoreLastBatch = false;
    bool testKey = false;
    bool quit = false;
    bool trace = false;
    bool progress = false;  ///< tell on standard error what is being done
    bool planTest = false;
    bool planOnly = false;
    bool artReport = false;
    bool matchOnly = false;
    bool roundtrip = false;
    bool json = false;        ///< a scan and a write print JSON, one object a line
    bool strictExit = false;  ///< the exit status tells how it went
    ShotOptions shots;
    /// Arguments that are no options: files handed over by the desktop.
    std::vector<std::filesystem::path> files;
};

/// An option's value stands behind its first "=", or is the next argument unless that starts
/// with "-". An option that lacks its value is ignored, and so are unknown options.
Options parse(const std::vector<std::string>& arguments);
/// Every option that it knows.
std::vector<std::string> optionNames();
/// The value of the first argument of that name: behind "=", or the next argument whatever it is.
std::optional<std::string> value(const std::string& option,
                                 const std::vector<std::string>& arguments);

/// MARLET_TEST_LIBRARY, or a fixed text that no path holds.
std::string libraryRoot();
/// The tab-separated account of every file in Review.
std::string report(const AppModel& model);
/// False when it can't be written, which nobody is told of but "--strict-exit".
bool writeReport(const std::filesystem::path& to, const AppModel& model);

/// Takes the pictures that the options ask for; the screens' part of a scripted run.
class Shots {
public:
    /// When in a run there is something to see.
    enum class Moment {
        empty,     ///< nothing has been added yet
        reviewed,  ///< what was added is judged
        queued,    ///< the queue is about to start
        written,   ///< it has ended
        about,     ///< at any time: About alone
    };
    virtual ~Shots() = default;
    /// False when one of them couldn't be saved.
    virtual Task<bool> take(Moment moment) = 0;
};
/// The same where there may be no windows: then nothing is taken, and nothing has failed.
Task<bool> takeIfAny(Shots* shots, Shots::Moment moment);

/// A write or a scan leaves the program open unless "--quit" was given, and so does a run without
/// a mode; every other mode ends it.
bool endsTheProgram(const Options& options);
struct Run {
    bool end = false;  ///< the program is to end
    RunEnd ended = RunEnd::done;
};
/// Performs at most one mode.
Task<Run> runIfRequested(AppModel& model, Options options, Shots* shots = nullptr);
/// Words, or JSON with "--json".
std::unique_ptr<RunLines> runLines(const Options& options);

/// What the Matroska reader makes of a file, in lines.
std::string mkvAccount(const std::filesystem::path& file);
/// What the header of a WAV file says, and a test AAC made of it beside it ("NAME.test.m4a").
std::string audioTest(const std::filesystem::path& wav);
/// What becomes of a file in a conversion, in one line.
std::string planLine(const ConvertPlan& plan);

Task<RunEnd> runTagTest(AppModel& model, Options options, Shots* shots = nullptr);
Task<RunEnd> restoreLastBatch(AppModel& model, Options options);
/// Ends when the model has no scan under way.
Task<> waitForScan(AppModel& model);
Task<> waitForQueue(AppModel& model);
/// Whether all jobs of the queue are done.
RunEnd endOf(const WriteQueue& queue);

}  // namespace Headless
}  // namespace marlet
