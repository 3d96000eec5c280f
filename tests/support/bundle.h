#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "support/temp_folder.h"

namespace marlet::test {

/// The folder of GPAC's `MP4Box` when the PATH has one of version 2.2 or newer that isn't ours.
std::optional<std::filesystem::path> gpacOnPath();

/// A copy of the program in a folder of its own, with the media tools of a test's choice beside it.
class Bundle {
public:
    enum class Tools { none, own, gpac };
    explicit Bundle(Tools tools);

    /// Copies a built program in, so that it finds these tools.
    std::filesystem::path program(const std::string& name) const;
    std::filesystem::path helpers() const;
    /// Puts a tool of the test's making in the place of MP4Box: a shell script.
    void putScript(const std::string& script) const;

private:
    TempFolder folder_;
};

/// For the members of a fixture: these tools, or none and a skipped test where they would be a GPAC
/// that isn't there. Neither `SetUp` nor the test are run then.
Bundle::Tools toolsOrSkip(Bundle::Tools tools);

}  // namespace marlet::test
