#pragma once

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
std::string line(const std::string& record, const FilmMark& mark, bool isQueued);
std::string line(const UnfinishedRestore& restore);
std::string document(const std::vector<std::string>& lines);

/// Nothing for what is no such file or one of another version; a line that isn't as expected is
/// left out. Never throws.
std::optional<Content> decode(ByteView text);

}  // namespace marlet::UnfinishedJson
