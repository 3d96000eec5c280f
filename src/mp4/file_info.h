#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "foundation/bytes.h"

namespace marlet {

/// The tags that tell which film or episode a file is.
struct FileTags {
    std::string title;
    std::string show;
    std::optional<std::int64_t> season;
    std::optional<std::int64_t> episode;
    bool operator==(const FileTags&) const = default;
};

/// A short account of a file, from its tags, its name and its folders.
struct FileInfo {
    double measure = 0;  ///< seconds of sound stored together; 0 when it wasn't measured
    std::string show;    ///< of a movie its title
    bool isMovie = false;
    std::optional<std::int64_t> season;
    std::optional<std::int64_t> episode;
    std::string title;
    bool operator==(const FileInfo&) const = default;

    /// "S01E02" when both numbers are known.
    std::optional<std::string> episodeLabel() const;
    /// Of a movie its title, of an episode its label and title.
    std::string displayName() const;
};

/// From the tag blocks of an index (the payload of `moov`); of several items of a type the last.
FileTags parseTags(ByteView moov);

/// The account that needs no look into the file; nothing is measured.
FileInfo describe(const std::filesystem::path& url, const FileTags& tags);

/// Tags read, nothing measured. Nothing when the index can't be read.
std::optional<FileInfo> readInfo(const std::filesystem::path& url);

/// Tags read and the sound layout measured, with the failures of loadMoov and parseSummary.
FileInfo scanFile(const std::filesystem::path& url);

}  // namespace marlet
