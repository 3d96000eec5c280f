#include "system/program_run.h"

#include <sys/stat.h>

#include "foundation/text.h"
#include "mp4/box.h"

namespace marlet::test {

ProgramRun::ProgramRun() {
    for (const auto& [name, value] : catalogue_.environment()) environment[name] = value;
    environment["MARLET_TEST_LIBRARY"] = library_.path().string() + "/";
}

std::vector<std::string> ProgramRun::Result::lines(const std::string& start) const {
    std::vector<std::string> found;
    for (const std::string& line : Text::split(output, '\n'))
        if (line.starts_with(start)) found.push_back(line);
    return found;
}

std::unique_ptr<Process> ProgramRun::start(const std::string& program,
                                           const std::vector<std::string>& arguments) const {
    const std::filesystem::path at = programs.empty() ? builtProgram(program) : programs / program;
    return std::make_unique<Process>(at, arguments, environment);
}

ProgramRun::Result ProgramRun::marlet(const std::vector<std::string>& arguments) const {
    const auto process = start("marlet", arguments);
    const int status = process->wait();
    return {status, process->output(), process->errors()};
}

ProgramRun::Result ProgramRun::oneJob(const std::vector<std::string>& arguments) const {
    const auto process = start("one_job", arguments);
    const int status = process->wait();
    return {status, process->output(), process->errors()};
}

std::vector<std::string> ProgramRun::scan() const {
    const TempFolder folder;
    marlet({"--scan", library_.path().string(), "--report", folder / "r.tsv", "--quit"});
    std::vector<std::string> lines = Text::split(textOf(readFile(folder / "r.tsv")), '\n');
    lines.erase(lines.begin());
    return lines;
}

Bytes tagBlock(const std::filesystem::path& file) {
    const Bytes moov = loadMoov(file);
    const auto size = static_cast<std::int64_t>(moov.size());
    const auto meta = find(moov, 0, size, {"udta", "meta"});
    if (!meta) return {};
    const auto ilst = find(moov, meta->start + 4, meta->end, {"ilst"});
    if (!ilst) return {};
    return {moov.begin() + ilst->boxStart, moov.begin() + ilst->end};
}

std::uint64_t inodeOf(const std::filesystem::path& file) {
    struct stat found {};
    return stat(file.c_str(), &found) == 0 ? found.st_ino : 0;
}

bool contains(const std::string& text, const std::string& what) {
    return text.find(what) != std::string::npos;
}

}  // namespace marlet::test
