#include <string>

#include "foundation/errors.h"
#include "foundation/text.h"
#include "foundation/tool_runner.h"
#include "write/rebuild.h"

namespace marlet::TagWriter {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> argumentsOf(const Layout& layout) {
    std::vector<std::string> arguments = {"-tmp",     layout.tmp.string(),
                                          "-inter",   std::to_string(layout.inter),
                                          "-moovpad", std::to_string(layout.pad)};
    for (const std::uint32_t id : layout.remove) {
        arguments.push_back("-rem");
        arguments.push_back(std::to_string(id));
    }
    arguments.insert(arguments.end(), {layout.input.string(), "-out", layout.output.string()});
    return arguments;
}

}  // namespace

std::optional<fs::path> mp4box() {
    if (MP4BoxLocator::HelpersAt::isActive()) return MP4BoxLocator::find();
    static const std::optional<fs::path> kept = MP4BoxLocator::find();
    return kept;
}

void runMP4Box(const fs::path& tool, const Layout& layout, RunControl& control,
               const Progress& progress) {
    ToolRunner::Confinement confinement;
    confinement.reads = {layout.input};
    confinement.writes = {layout.output.parent_path(), layout.tmp};
    confinement.home = layout.tmp;
    const ToolRunner::Ended ended =
        ToolRunner::runToEnd(tool, argumentsOf(layout), confinement, control, progress);
    if (ended.status == 0) return;
    throw MFError("MP4Box failed (exit " + std::to_string(ended.status) +
                  "): " + Text::trim(ended.tail));
}

}  // namespace marlet::TagWriter
