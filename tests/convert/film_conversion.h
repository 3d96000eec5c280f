#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "convert/converter.h"
#include "foundation/run_control.h"
#include "foundation/tool_runner.h"
#include "support/temp_folder.h"

namespace marlet::test {

/// Two seconds of picture (track 1), two AAC tracks (2 English, 3 German), an English subtitle (4),
/// a forced one (5) and two chapters; made once a process. Starts at 0.
const Bytes& plainFilm();
/// What `marlet-mux` makes of its picture and its English sound, in slices of so many milliseconds,
/// and with more arguments.
Bytes builtFilm(int slice, const std::vector<std::string>& more = {});

/// A Matroska film in a folder of its own, in a home of its own, and a conversion of it.
class FilmConversion {
public:
    explicit FilmConversion(const std::string& name = "Movie.mkv", const Bytes& film = plainFilm());

    /// MP4Box is missing unless one of these was called. A script knows $slice, $out (the file to
    /// make) and "$@"; it lists what `listing` holds by itself.
    void useTool(const std::string& script);
    /// A tool that makes these files: by slice, or for all others under 0; then it goes on so.
    void toolMakes(const std::map<int, Bytes>& bySlice, const std::string& then = "");
    void useOwnTools();
    std::string listing;

    WriteOutcome run();
    /// The arguments that MP4Box got last; the work folder is kept for it.
    std::string arguments();
    /// Runs an action when this label is reported, at this fraction or later.
    void at(const std::string& label, std::function<void()> action, double from = 0);

    std::vector<std::string> delivered() const;
    bool hasWorkFolders() const;
    std::filesystem::path workFolder() const;
    /// The original has its bytes and its date, and no folder of a job is left.
    bool isUntouched() const;
    std::filesystem::path beside(const std::string& name) const { return folder_ / name; }
    ConvertPlanSnapshot& plan() { return *request.plan; }
    const std::filesystem::path& output() const { return output_.path(); }

    ConvertRequest request;
    RunControl control;
    std::vector<std::string> labels;  ///< as reported, without repeats in a row

private:
    void putTool(const std::string& script, const Bytes& behind = {});

    struct Action {
        std::function<void()> act;
        double from = 0;
    };
    OwnHome home_;
    TempFolder folder_;
    TempFolder output_;
    TempFolder helpers_;
    MP4BoxLocator::HelpersAt tools_{helpers_.path()};
    Bytes original_;
    std::filesystem::file_time_type date_;
    std::mutex mutex_;
    std::map<std::string, Action> actions_;
};

}  // namespace marlet::test
