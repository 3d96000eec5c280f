#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "foundation/run_control.h"

namespace marlet::AudioConvert {

/// Runs the media tool `gpac` on one file: "-i INPUT FILTER... -o OUTPUT". The tool reads its
/// input and writes a folder of its own beside the output, so that no other file of the job can
/// suffer; its output gets its place when it has ended. An output that it didn't make isn't there
/// afterwards, whatever was there before. Throws MFError "the media tool (gpac) is missing from
/// this copy of Marlet" and what ToolRunner::run throws.
void runTool(const std::filesystem::path& input, const std::vector<std::string>& filters,
             const std::filesystem::path& output, RunControl& control);

}  // namespace marlet::AudioConvert
