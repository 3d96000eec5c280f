#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/unfinished.h"
#include "foundation/bytes.h"

namespace marlet::UnfinishedJson {

/// A file's record with what it is recognised by.
struct Marked {
    UnfinishedFile file;
    FilmMark mark;
    /// When the person last did something to it, microseconds since 1970; 0 when that isn't known.
    std::int64_t since = 0;
    bool operator==(const Marked&) const = default;
};
struct Content {
    std::vector<Marked> files;
    std::vector<UnfinishedRestore> restores;
    bool operator==(const Content&) const = default;
};

/// The record alone, without whether it waits for the queue, which changes more often.
std::string encode(const UnfinishedFile& file);
/// One line of the file from such a record.
std::string line(const std::string& record, const FilmMark& mark, bool isQueued,
                 std::int64_t since = 0);
std::string line(const UnfinishedRestore& restore);
std::string document(const std::vector<std::string>& lines);

/// Nothing for what is no such file or one of another version; a line that isn't as expected is
/// left out. Never throws.
std::optional<Content> decode(ByteView text);

}  // namespace marlet::UnfinishedJson
