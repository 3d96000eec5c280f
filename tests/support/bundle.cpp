#include "support/bundle.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <stdexcept>

#include "support/media.h"

namespace marlet::test {

namespace fs = std::filesystem;

namespace {

bool isFit(const fs::path& mp4box) {
    // It names itself on the error stream.
    const std::string text = runTool({"sh", "-c", "exec \"$0\" -version 2>&1", mp4box.string()});
    std::smatch found;
    static const std::regex version(R"(GPAC version (\d+)\.(\d+))");
    if (!std::regex_search(text, found, version)) return false;
    const int major = std::stoi(found[1]);
    return major > 2 || (major == 2 && std::stoi(found[2]) >= 2);
}

}  // namespace

std::optional<fs::path> gpacOnPath() {
    const char* path = std::getenv("PATH");
    const std::string folders = path == nullptr ? "" : path;
    for (std::size_t from = 0; from <= folders.size();) {
        const std::size_t to = std::min(folders.find(':', from), folders.size());
        const fs::path folder = folders.substr(from, to - from);
        if (fs::exists(folder / "MP4Box") && isFit(folder / "MP4Box")) return folder;
        from = to + 1;
    }
    return std::nullopt;
}

Bundle::Bundle(Tools tools) {
    fs::create_directories(helpers());
    if (tools == Tools::own) {
        fs::create_symlink(builtProgram("marlet-mux"), helpers() / "MP4Box");
        fs::create_symlink(builtProgram("marlet-audio"), helpers() / "gpac");
    } else if (tools == Tools::gpac) {
        const auto folder = gpacOnPath();
        if (!folder) throw std::runtime_error("no GPAC on the PATH");
        fs::create_symlink(*folder / "MP4Box", helpers() / "MP4Box");
        fs::create_symlink(*folder / "gpac", helpers() / "gpac");
    }
}

fs::path Bundle::helpers() const {
    return folder_ / "Contents" / "Helpers";
}

fs::path Bundle::program(const std::string& name) const {
    const fs::path copy = folder_ / name;
    if (fs::exists(copy)) return copy;
    std::error_code failed;
    fs::create_hard_link(builtProgram(name), copy, failed);
    if (failed) fs::copy_file(builtProgram(name), copy);
    return copy;
}

void Bundle::putScript(const std::string& script) const {
    const fs::path tool = helpers() / "MP4Box";
    fs::remove(tool);
    writeFile(tool, viewOf("#!/bin/sh\n" + script + "\n"));
    fs::permissions(tool, fs::perms::owner_all);
}

Bundle::Tools toolsOrSkip(Bundle::Tools tools) {
    if (tools != Bundle::Tools::gpac || gpacOnPath()) return tools;
    [] { GTEST_SKIP() << "no GPAC 2.2 or newer on the PATH"; }();
    return Bundle::Tools::none;
}

}  // namespace marlet::test
