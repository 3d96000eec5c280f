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

void runTool(const ToolTask& task, RunControl& control) {
    const fs::path tool = gpac();
    Sys::unlink(task.output);
    const ToolFolder folder(fs::path(task.output) += ".making");
    const fs::path made = folder.path() / task.output.filename();
    std::vector<std::string> arguments{"-i", task.input.string()};
    arguments.insert(arguments.end(), task.filters.begin(), task.filters.end());
    const std::string option = task.outputOption.empty() ? "" : ":" + task.outputOption;
    arguments.insert(arguments.end(), {"-o", made.string() + option});
    ToolRunner::run(
        tool, arguments,
        {.reads = {task.input}, .writes = {folder.path()}, .home = folder.path() / "home"},
        control);
    takeOver(made, task.output);
}

}  // namespace marlet::AudioConvert
