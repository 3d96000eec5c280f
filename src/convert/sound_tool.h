#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "foundation/run_control.h"

namespace marlet::AudioConvert {

/// What `gpac` is to do with one file: "-i INPUT FILTER... -o OUTPUT[:OPTION]".
struct ToolTask {
    std::filesystem::path input;
    std::vector<std::string> filters;
    std::filesystem::path output;
    std::string outputOption = {};
};

/// Runs the media tool. It reads its input and writes a folder of its own beside the output, so
/// that no other file of the job can suffer; its output gets its place when it has ended. An output
/// that it didn't make isn't there afterwards, whatever was there before. Throws MFError "the media
/// tool (gpac) is missing from this copy of Marlet" and what ToolRunner::run throws.
void runTool(const ToolTask& task, RunControl& control);

}  // namespace marlet::AudioConvert
