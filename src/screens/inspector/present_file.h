#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "foundation/records.h"
#include "sources/async.h"
#include "write/present_details.h"

namespace marlet {

/// What is in a file now.
struct PresentFile {
    std::filesystem::path path;
    std::vector<Atom> atoms;  ///< without covers
    PresentDetails details;   ///< without its cover
    bool hasCover = false;
    std::string stamp;  ///< changes with the file
};

/// Reads the tags of the one file that is being looked at, once, on a worker. Main context only.
class PresentReader {
public:
    explicit PresentReader(std::function<void()> onRead) : onRead_(std::move(onRead)) {}
    ~PresentReader() { life_.cancel(); }
    PresentReader(const PresentReader&) = delete;
    PresentReader& operator=(const PresentReader&) = delete;

    /// Null until it has been read. Of a Matroska file that is what the scan found.
    const PresentFile* of(const ScannedFile& file);
    void forget();

private:
    static PresentFile fromScan(const ScannedFile& file);
    static PresentFile fromDisk(const std::filesystem::path& file);
    static Task<> read(PresentReader* self, std::filesystem::path file, CancelToken life);

    std::function<void()> onRead_;
    std::optional<std::filesystem::path> wanted_;
    std::optional<PresentFile> present_;
    CancelToken life_;
};

}  // namespace marlet
