#include "system/crash_run.h"

#include <unistd.h>

#include "foundation/text.h"
#include "support/process.h"

namespace marlet::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* memoryFolder = "/dev/shm";

std::string shimPlace() {
    return builtProgram("libcrash_shim.so").string();
}

}  // namespace

CrashRun::CrashRun(const Bytes& film, const std::string& name) {
    if (::access(memoryFolder, W_OK) == 0)
        memory_ = std::make_unique<ScopedEnv>("TMPDIR", memoryFolder);
    folder_ = std::make_unique<TempFolder>();
    for (const auto& [variable, place] :
         std::map<std::string, std::string>{{"HOME", "home"},
                                            {"XDG_DATA_HOME", "home/data"},
                                            {"XDG_CACHE_HOME", "home/cache"},
                                            {"XDG_CONFIG_HOME", "home/config"}})
        home_.push_back(std::make_unique<ScopedEnv>(variable, (folder() / place).string()));
    fs::create_directory(folder() / "home");
    film_ = folder_->write("films/" + name, film);
    setRequest("{}");
    remember();
}

void CrashRun::setRequest(const std::string& jsonWithoutFile) {
    const std::string rest = jsonWithoutFile.substr(1);
    writeFile(folder() / "request.json",
              viewOf("{\"file\":\"" + film_.string() + "\"" + (rest == "}" ? "" : ",") + rest));
}

void CrashRun::remember() {
    rememberedFilm_ = now();
    fs::remove_all(folder() / "home before");
    fs::copy(folder() / "home", folder() / "home before", fs::copy_options::recursive);
}

void CrashRun::reset() {
    fs::remove_all(folder() / "home");
    fs::copy(folder() / "home before", folder() / "home", fs::copy_options::recursive);
    writeFile(film_, rememberedFilm_);
}

RunEnd CrashRun::write(const std::map<std::string, std::string>& shim) {
    return run((folder() / "request.json").string(), shim);
}

RunEnd CrashRun::start(const std::map<std::string, std::string>& shim) {
    return run("--start", shim);
}

RunEnd CrashRun::run(const std::string& argument, const std::map<std::string, std::string>& shim) {
    std::map<std::string, std::string> environment = shim;
    if (!shim.empty()) {
        environment["LD_PRELOAD"] = shimPlace();
        // A build with the address sanitizer wants to be loaded first.
        environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
    }
    Process process(builtProgram("one_job"), {argument}, environment);
    const int status = process.wait();
    return {status, process.output() + process.errors()};
}

std::vector<LoggedCall> readLog(const fs::path& log) {
    std::vector<LoggedCall> calls;
    const std::string text = textOf(readFile(log));
    for (const std::string& line : Text::words(text, '\n')) {
        std::vector<std::string> parts = Text::split(line, '\t');
        parts.resize(3);
        calls.push_back({parts[0], parts[1], parts[2]});
    }
    return calls;
}

}  // namespace marlet::test
