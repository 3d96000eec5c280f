#include "helpers/picture_kind.h"

#include "mp4/bit_reader.h"

namespace marlet::PictureKind {

namespace {

/// ISO/IEC 14496-10, 7.4.1 and 7.4.3: nothing for a unit that is no slice.
std::optional<bool> judgeAVC(ByteView unit) {
    constexpr std::uint32_t idr = 5, plain = 1, partitionA = 2;
    constexpr std::uint32_t intra = 2, switchingIntra = 4;
    const std::uint32_t type = unit[0] & 31U;
    if (type == idr) return true;
    if (type != plain && type != partitionA) return std::nullopt;
    BitReader bits(unit.subspan(1));
    bits.golomb();  // first macroblock
    const std::uint32_t kind = bits.golomb() % 5;
    return kind == intra || kind == switchingIntra;
}

/// ISO/IEC 23008-2, 7.4.2.2: 16 to 23 are random access pictures, all below 32 are slices.
std::optional<bool> judgeHEVC(ByteView unit) {
    const std::uint32_t type = unit[0] >> 1 & 63U;
    if (type > 31) return std::nullopt;
    return type >= 16 && type <= 23;
}

}  // namespace

bool maySync(const MKVTrack& track, ByteView frame) {
    const bool isAVC = track.codecID == "V_MPEG4/ISO/AVC";
    const std::size_t lengthAt = isAVC ? 4 : 21;
    if (track.codecPrivate.size() <= lengthAt) return true;
    const std::size_t width = (track.codecPrivate[lengthAt] & 3U) + 1;
    std::size_t at = 0;
    while (at + width < frame.size()) {
        std::size_t length = 0;
        for (std::size_t i = 0; i < width; i++) length = length << 8 | frame[at + i];
        at += width;
        const ByteView unit = frame.subspan(at, std::min(length, frame.size() - at));
        if (unit.empty()) continue;
        if (const auto verdict = isAVC ? judgeAVC(unit) : judgeHEVC(unit)) return *verdict;
        at += unit.size();
    }
    return true;
}

}  // namespace marlet::PictureKind
