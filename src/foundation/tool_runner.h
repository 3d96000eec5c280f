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
    /// What the tool takes for its home and for the place of temporary files; it may write it, and
    /// it is made where it is missing. Empty: the person's own home, which stays closed.
    std::filesystem::path home;
};

/// Beside `MP4Box`, whether it exists or not; nothing without `MP4Box`.
std::optional<std::filesystem::path> gpac();

/// How a tool ended.
struct Ended {
    int status = 0;    ///< the exit status, or the number of the signal that ended it
    std::string tail;  ///< the end of its output (both streams), at most 2,000 characters

    bool operator==(const Ended&) const = default;
};

/// Runs a tool to its end on the calling thread, whatever its status. Pause and cancel of the job
/// act on the tool within 0.2 s. Progress comes from marks like "(37/100)", on another thread, and
/// must not throw. The tool dies with this process. Throws CancelError, or std::system_error, the
/// system's failure to launch.
Ended runToEnd(const std::filesystem::path& tool, const std::vector<std::string>& arguments,
               const Confinement& confinement, RunControl& control, const Progress& progress = {});

/// The same for a tool that must succeed: gives the tail. Any other status than 0 throws MFError
/// "NAME failed (exit N): " with the last 400 characters of the tail, without colours.
std::string run(const std::filesystem::path& tool, const std::vector<std::string>& arguments,
                const Confinement& confinement, RunControl& control, const Progress& progress = {});

/// All that a tool prints, without colours, whatever its status; at most 4 MiB. What is not UTF-8
/// becomes U+FFFD.
std::string listing(const std::filesystem::path& tool, const std::vector<std::string>& arguments,
                    const Confinement& confinement, RunControl& control);

}  // namespace ToolRunner
}  // namespace marlet
