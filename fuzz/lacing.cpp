// A lace of any bytes gives frames that lie back to back to the end of its payload, or none.
// The first byte chooses the kind; reading only the head that is asked for changes nothing.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "matroska/lacing.h"

namespace {

void check(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace marlet;
    if (size < 2) return 0;
    const auto kind = static_cast<Lacing::Kind>(data[0] & 3);
    const ByteView payload(data + 1, size - 1);
    constexpr std::uint64_t offset = 1000;

    const ByteView most = payload.first(std::min(payload.size(), Lacing::longestHead));
    const auto frames = Lacing::frames(kind, most, offset, payload.size());
    const std::size_t length = Lacing::headLength(kind, payload[0], payload.size());
    const ByteView least = payload.first(std::min(payload.size(), length));
    check(Lacing::frames(kind, least, offset, payload.size()) == frames);

    if (frames.empty()) return 0;
    check(frames.size() == std::size_t{payload[0]} + 1);
    std::uint64_t at = frames[0].offset;
    for (const MKVBlock::Frame& frame : frames) {
        check(frame.offset == at && frame.size >= 0);
        at += static_cast<std::uint64_t>(frame.size);
    }
    check(at == offset + payload.size());
    return 0;
}
