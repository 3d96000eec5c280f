#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/catalogue.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace marlet::test {

/// A home, a library and a sample catalogue of their own, and the real program run on them.
class ProgramRun {
public:
    ProgramRun();

    struct Result {
        int status = 0;
        std::string output;
        std::string errors;
        /// The lines of the output that start so.
        std::vector<std::string> lines(const std::string& start) const;
    };
    Result marlet(const std::vector<std::string>& arguments) const;
    Result oneJob(const std::vector<std::string>& arguments) const;
    std::unique_ptr<Process> start(const std::string& program,
                                   const std::vector<std::string>& arguments) const;
    /// The scan report of the library, its lines without the first.
    std::vector<std::string> scan() const;

    const std::filesystem::path& library() const { return library_.path(); }
    CatalogueServer& catalogue() { return catalogue_; }
    std::map<std::string, std::string> environment;
    /// Where the programs are taken from; empty: the build itself.
    std::filesystem::path programs;

private:
    OwnHome home_;
    TempFolder library_;
    CatalogueServer catalogue_;
};

/// The tag block's bytes as the file holds them; empty without one.
Bytes tagBlock(const std::filesystem::path& file);
std::uint64_t inodeOf(const std::filesystem::path& file);
bool contains(const std::string& text, const std::string& what);

}  // namespace marlet::test
