#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "support/bundle.h"
#include "support/temp_folder.h"
#include "system/program_run.h"

namespace marlet::test {

/// A film in a library of its own, that a test makes, and its conversion by the real programs with
/// media tools of one kind. Skips the test where those aren't there; a member of its fixture.
class ConversionRun {
public:
    explicit ConversionRun(Bundle::Tools tools, const std::string& name = "Charade (1963).mkv");

    /// As a person does it who takes what the catalogue finds; with more options.
    ProgramRun::Result convert(const std::vector<std::string>& more = {});
    /// As a job without details, that keeps sound and subtitles of these languages.
    ProgramRun::Result convertKeeping(const std::vector<std::string>& languages);

    const std::filesystem::path& source() const { return source_; }
    const std::filesystem::path& library() const { return run_.library(); }
    /// The new file, once it is there; the first conversion makes its folder.
    std::filesystem::path made() const;
    std::vector<std::string> delivered() const { return namesIn(output_); }
    /// The film has the bytes and the date that it had when it was converted, and nothing stands
    /// beside it.
    void expectUntouched() const;

private:
    void noteSource();

    ProgramRun run_;
    Bundle bundle_;
    TempFolder folder_;
    std::filesystem::path source_;
    std::filesystem::path output_ = folder_ / "new";
    Bytes bytes_;
    std::filesystem::file_time_type date_;
};

}  // namespace marlet::test
