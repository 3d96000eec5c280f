// A file of unfinished work from anywhere. What is taken from it must come back the same when it is
// written again, and name places that a file can have.

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "app/unfinished_json.h"

using namespace marlet;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto content = UnfinishedJson::decode({data, size});
    if (!content) return 0;
    std::vector<std::string> lines;
    for (const auto& [file, mark, since] : content->files) {
        if (!file.resolved.file.url.is_absolute()) std::abort();
        lines.push_back(
            UnfinishedJson::line(UnfinishedJson::encode(file), mark, file.isQueued, since));
    }
    for (const auto& restore : content->restores) lines.push_back(UnfinishedJson::line(restore));
    const std::string text = UnfinishedJson::document(lines);
    if (UnfinishedJson::decode(viewOf(text)) != content) std::abort();
    return 0;
}
