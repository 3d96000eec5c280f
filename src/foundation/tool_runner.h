#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "foundation/run_control.h"

namespace marlet {

/// Where the media tools stand: in the program's own helpers folder and nowhere else.
namespace MP4BoxLocator {

/// "Contents/Helpers" below the folder of the running executable. No existence test.
std::filesystem::path helpersDir();
/// The `MP4Box` of that folder when it is an executable file. `custom` has no effect.
std::optional<std::filesystem::path> find(const std::string& custom = {});

/// While it lives, the helpers lie in this folder. For tests.
class HelpersAt {
public:
    explicit HelpersAt(const std::filesystem::path& folder);
    ~HelpersAt();
    HelpersAt(const HelpersAt&) = delete;
    HelpersAt& operator=(const HelpersAt&) = delete;
    static bool isActive();
};

}  // namespace MP4BoxLocator

namespace ToolRunner {

/// What a tool may touch of the person's files. Programs, libraries and their data can be read
/// besides; nothing else can, and nothing at all can be written elsewhere.
struct Confinement {
    std::vector<std::filesystem::path> reads;   ///< files, or folders with all below them
    std::vector<std::filesystem::path> writes;  ///< folders, with all below them
};

/// Beside `MP4Box`, whether it exists or not; nothing without `MP4Box`.
std::optional<std::filesystem::path> gpac();

/// Runs a tool to its end on the calling thread and gives the tail of its output (both streams, at
/// most 2,000 characters). Pause and cancel of the job act on the tool within 0.2 s. Progress comes
/// from marks like "(37/100)", on another thread. Throws MFError "NAME failed (exit N): ..." with
/// the last 400 characters, CancelError, or the system's failure to launch.
std::string run(const std::filesystem::path& tool, const std::vector<std::string>& arguments,
                const Confinement& confinement, RunControl& control, const Progress& progress = {});

}  // namespace ToolRunner
}  // namespace marlet
