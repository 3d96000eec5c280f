#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "foundation/convert_records.h"
#include "foundation/records.h"
#include "write/ilst_editor.h"

namespace marlet {

/// A conversion: a new file from a Matroska or QuickTime one.
struct ConvertRequest {
    std::filesystem::path source;
    std::optional<ConvertPlanSnapshot> plan;  ///< nothing for a QuickTime file
    std::vector<Atom> atoms;
    std::filesystem::path outputDir;
};

/// Everything a job needs; it never reads a screen's state again.
struct WriteRequest {
    struct WriteDetails {
        std::vector<Atom> atoms;
    };
    struct RestoreOriginal {};
    using Mode = std::variant<WriteDetails, ConvertRequest, RestoreOriginal>;

    std::filesystem::path file;
    Mode mode;
    bool fixLayout = true;
    std::optional<std::filesystem::path> copyTo;     ///< write a copy there, leave the file alone
    std::optional<std::filesystem::path> outputDir;  ///< for a new file when tracks are left out
    std::vector<int> dropTracks;                     ///< Track.index values to leave out

    bool isRestore() const { return std::holds_alternative<RestoreOriginal>(mode); }
    bool isConvert() const { return std::holds_alternative<ConvertRequest>(mode); }
};

/// What became of a job. Its message is a promise: "left untouched" is true when it is shown.
struct WriteOutcome {
    /// stopped: going on with the next files would be unsafe or pointless.
    enum class Status { done, failed, skipped, cancelled, stopped };

    Status status = Status::failed;
    std::optional<double> before;  ///< sound layout in seconds
    std::optional<double> after;
    std::vector<std::string> changes;
    std::string message;
    bool rebuilt = false;
    std::uint64_t size = 0;
    std::optional<std::filesystem::path> output;
};

std::string name(WriteOutcome::Status status);

}  // namespace marlet
