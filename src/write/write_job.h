#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "foundation/run_control.h"
#include "foundation/syscalls.h"
#include "foundation/work_area.h"
#include "write/delivery.h"
#include "write/write_request.h"

namespace marlet {

/// What tells whether a file is still the one that was read.
struct FileMark {
    std::uint64_t size = 0;
    std::optional<FileTime> modified;
    std::uint64_t number = 0;  ///< inode; 0 when it can't be read

    static FileMark of(const std::filesystem::path& file);
    bool operator==(const FileMark&) const = default;
};

/// One write at work: what its steps share.
struct WriteJob {
    WriteJob(const WriteRequest& request, RunControl& control, const StepProgress& progress);

    const WriteRequest& request;
    RunControl& control;
    const StepProgress& progress;
    WorkFolder folder;
    const std::filesystem::path staged;     ///< proved copy of the original; the way back
    const std::filesystem::path candidate;  ///< the file as it is meant to end
    FileMark reference;                     ///< the original as it was measured
    Converter::SrcStat sourceMark;          ///< the same, for the delivery of a new file
    WriteOutcome outcome;

    const std::filesystem::path& file() const { return request.file; }
    void report(const std::string& label, double fraction) const;
    /// A progress that runs from `start` on, over `span`.
    Progress part(const std::string& label, double start, double span) const;
};

}  // namespace marlet
