#include "convert/sound_tool.h"

#include <system_error>

#include "foundation/errors.h"
#include "foundation/syscalls.h"
#include "foundation/tool_runner.h"

namespace marlet::AudioConvert {

namespace fs = std::filesystem;

namespace {

/// Where the tool works, until it has ended.
class ToolFolder {
public:
    explicit ToolFolder(fs::path path) : path_(std::move(path)) {
        remove();
        if (Sys::mkdir(path_, 0700) != 0) failWithErrno("the work folder could not be used");
    }
    ~ToolFolder() { remove(); }
    ToolFolder(const ToolFolder&) = delete;
    ToolFolder& operator=(const ToolFolder&) = delete;
    const fs::path& path() const { return path_; }

private:
    void remove() const {
        std::error_code ignored;  // the job's folder goes with all that is in it
        fs::remove_all(path_, ignored);
    }

    fs::path path_;
};

fs::path gpac() {
    const std::optional<fs::path> tool = ToolRunner::gpac();
    if (!tool || !Sys::stat(*tool))
        throw MFError("the media tool (gpac) is missing from this copy of Marlet");
    return *tool;
}

void takeOver(const fs::path& made, const fs::path& output) {
    const auto found = Sys::lstat(made);
    if (!found || !found->isRegular) return;
    if (Sys::rename(made, output) != 0) failWithErrno("the work folder could not be used");
}

}  // namespace

void runTool(const fs::path& input, const std::vector<std::string>& filters, const fs::path& output,
             RunControl& control) {
    const fs::path tool = gpac();
    Sys::unlink(output);
    const ToolFolder folder(fs::path(output) += ".making");
    const fs::path made = folder.path() / output.filename();
    std::vector<std::string> arguments{"-i", input.string()};
    arguments.insert(arguments.end(), filters.begin(), filters.end());
    arguments.insert(arguments.end(), {"-o", made.string()});
    ToolRunner::run(tool, arguments,
                    {.reads = {input}, .writes = {folder.path()}, .home = folder.path() / "home"},
                    control);
    takeOver(made, output);
}

}  // namespace marlet::AudioConvert
