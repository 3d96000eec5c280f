// Two `stsd` payloads of any bytes are judged: equal ones are equivalent, whatever they are, and no
// judgement is longer than people can read.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "verify/sample_descriptions.h"

namespace {

using namespace marlet;

void judge(ByteView original, ByteView rebuilt) {
    const bool isSame = std::ranges::equal(original, rebuilt);
    const auto reasons = compareSampleDescriptions(original, rebuilt);
    if (isSame && !reasons.empty()) std::abort();
    if (reasons.size() > 1) std::abort();
    // A box alone is compared without the entry around it, too.
    compareAVCC(original, rebuilt);
    compareHVCC(original, rebuilt);
    compareESDS(original, rebuilt);
}

}  // namespace

/// The first two bytes tell where the second payload begins; a place behind the end makes it the
/// first one with a byte changed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4) return 0;
    const ByteView bytes(data + 2, size - 2);
    const std::size_t cut = BigEndian::u16(ByteView(data, 2), 0);
    judge(bytes, bytes);
    if (cut < bytes.size()) {
        judge(bytes.first(cut), bytes.subspan(cut));
    } else {
        Bytes changed(bytes.begin(), bytes.end());
        changed[cut % changed.size()] ^= 0xFF;
        judge(bytes, changed);
        judge(changed, bytes);
    }
    return 0;
}
