#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/bytes.h"
#include "support/temp_folder.h"

namespace marlet::test {

/// How one run of the program ended.
struct RunEnd {
    int status = 0;  ///< 137 when it was killed
    std::string output;
    bool wasKilled() const { return status == 128 + 9; }
};

/// One film and one home, both put back to where they began before every try, and the program
/// that writes, with the crash shim preloaded.
class CrashRun {
public:
    explicit CrashRun(const Bytes& film, const std::string& name = "Film.mp4");

    /// Sets the request's JSON; `file` is added.
    void setRequest(const std::string& jsonWithoutFile);
    /// What is now in the home and in the film is what reset() puts back.
    void remember();
    void reset();

    RunEnd write(const std::map<std::string, std::string>& shim = {});
    /// What a launch does.
    RunEnd start(const std::map<std::string, std::string>& shim = {});

    const std::filesystem::path& film() const { return film_; }
    Bytes now() const { return readFile(film_); }
    std::filesystem::path folder() const { return folder_->path(); }

private:
    RunEnd run(const std::string& argument, const std::map<std::string, std::string>& shim);

    // In memory where there is such a place: thousands of flushes of a real disk take minutes.
    std::unique_ptr<ScopedEnv> memory_;
    std::unique_ptr<TempFolder> folder_;
    std::vector<std::unique_ptr<ScopedEnv>> home_;
    std::filesystem::path film_;
    Bytes rememberedFilm_;
};

/// One line of the shim's log.
struct LoggedCall {
    std::string name;
    std::filesystem::path path;
    std::filesystem::path second;
};
std::vector<LoggedCall> readLog(const std::filesystem::path& log);

}  // namespace marlet::test
