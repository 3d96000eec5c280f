#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "convert/mux_plan.h"
#include "convert/track_starts.h"
#include "foundation/convert_records.h"
#include "foundation/run_control.h"
#include "foundation/work_area.h"
#include "matroska/mkv_file.h"
#include "verify/conversion_verifier.h"
#include "write/delivery.h"
#include "write/write_request.h"

namespace marlet {

/// One conversion while it runs: what its steps share.
struct ConvertJob {
    ConvertJob(const ConvertRequest& requested, RunControl& runControl,
               const StepProgress& stepProgress)
        : request(requested), control(runControl), progress(stepProgress) {}
    ConvertJob(const ConvertJob&) = delete;
    ConvertJob& operator=(const ConvertJob&) = delete;

    void report(const std::string& label, double fraction) const {
        if (progress) progress(label, fraction);
    }
    const ConvertPlanSnapshot& plan() const { return *request.plan; }
    /// Where the media tool writes, and nowhere else.
    std::filesystem::path bench() const { return folder.path() / "tool"; }
    /// Sound on its way. A decoder meets bytes from anywhere, so it has a folder of its own too.
    std::filesystem::path soundFolder() const { return folder.path() / "sound"; }
    /// The source as the tools see it: what a person called it never reaches their options.
    std::filesystem::path link() const { return folder.path() / linkName; }
    std::filesystem::path built() const { return folder.path() / "built.mp4"; }

    const ConvertRequest& request;
    RunControl& control;
    const StepProgress& progress;
    const char* linkName = "source.mkv";
    std::filesystem::path tool;
    std::unique_ptr<MKVFile> mkv;  ///< nothing for a QuickTime source
    Converter::SrcStat sourceMark;
    WorkFolder folder;
    TrackStarts starts;
    MuxPlan mux;
    std::vector<ConvertVerify::Expected> expected;  ///< one for each track of `mux`
    std::vector<std::string> notes;
};

}  // namespace marlet
