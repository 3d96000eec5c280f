// Of any bytes the journal makes nothing, or a record that it writes and reads back as it was.
#include "write/journal.h"

#include <cstdint>
#include <cstdlib>

#include "foundation/text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto journal = marlet::WriteJournal::decode({data, size});
    if (!journal) return 0;
    const std::string text = journal->encode();
    if (marlet::WriteJournal::decode(marlet::viewOf(text)) != journal) std::abort();
    return 0;
}
