// Of any bytes History makes nothing, or entries that it writes and reads back as they were.
#include "app/history_json.h"

#include <cstdint>
#include <cstdlib>

#include "foundation/text.h"

namespace {

using namespace marlet;

bool isSame(const HistoryEntry& entry) {
    const auto again = HistoryJson::decode(viewOf("[" + HistoryJson::encode(entry) + "]"));
    return again && again->size() == 1 && (*again)[0] == entry;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto entries = HistoryJson::decode({data, size});
    if (!entries) return 0;
    for (const HistoryEntry& entry : *entries)
        if (!isSame(entry)) std::abort();
    return 0;
}
