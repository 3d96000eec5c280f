#include "system/conversion_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace marlet::test {

namespace fs = std::filesystem;

ConversionRun::ConversionRun(Bundle::Tools tools, const std::string& name)
    : bundle_(toolsOrSkip(tools)), source_(run_.library() / name) {}

ProgramRun::Result ConversionRun::convert(const std::vector<std::string>& more) {
    noteSource();
    std::vector<std::string> arguments = {"--tag",  source_.string(), "--confirm-all",
                                          "--quit", "--output-dir",   output_.string()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    run_.programs = bundle_.program("marlet").parent_path();
    return run_.marlet(arguments);
}

ProgramRun::Result ConversionRun::convertKeeping(const std::vector<std::string>& languages) {
    noteSource();
    const nlohmann::json request = {{"mode", "convert"},
                                    {"file", source_.string()},
                                    {"outputDir", output_.string()},
                                    {"keepLanguages", languages}};
    run_.programs = bundle_.program("one_job").parent_path();
    return run_.oneJob({folder_.write("request.json", request.dump()).string()});
}

fs::path ConversionRun::made() const {
    return output_ / (source_.stem().string() + ".m4v");
}

void ConversionRun::expectUntouched() const {
    EXPECT_EQ(readFile(source_), bytes_);
    EXPECT_EQ(fs::last_write_time(source_), date_);
    EXPECT_THAT(namesIn(library()), testing::ElementsAre(source_.filename().string()));
}

void ConversionRun::noteSource() {
    bytes_ = readFile(source_);
    date_ = fs::last_write_time(source_);
}

}  // namespace marlet::test
