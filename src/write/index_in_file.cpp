#include "write/index_in_file.h"

#include <algorithm>

namespace marlet {

std::optional<IndexInFile> readIndex(const std::filesystem::path& file) {
    const auto boxes = TagRestore::topLevel(file);
    const auto moov = std::ranges::find(boxes, "moov", &TagRestore::Top::type);
    if (moov == boxes.end()) return std::nullopt;
    return IndexInFile{*moov, loadMoov(file)};
}

}  // namespace marlet
