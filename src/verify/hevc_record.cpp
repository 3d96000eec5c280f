// The rewrite of `hvcC` (ISO/IEC 14496-15, 8.3.3.1): the media tool writes ones into reserved bits,
// as the standard wants them, where other programs write zeros.

#include <algorithm>
#include <array>

#include "verify/sample_descriptions.h"

namespace marlet {

namespace {

constexpr std::size_t shortestRecord = 23;

struct PartlyReserved {
    std::size_t index;
    std::uint8_t meaning;  ///< the bits that aren't reserved

    std::uint8_t reserved() const { return static_cast<std::uint8_t>(~meaning); }
};

constexpr std::array<PartlyReserved, 5> partlyReserved = {{
    {13, 0x0F},  // min_spatial_segmentation_idc
    {15, 0x03},  // parallelismType
    {16, 0x03},  // chroma format
    {17, 0x07},  // luma depth less 8
    {18, 0x07},  // chroma depth less 8
}};

}  // namespace

std::vector<std::string> compareHVCC(ByteView original, ByteView rebuilt) {
    if (original.size() < shortestRecord || original.size() != rebuilt.size())
        return {"hvcC differs in length or is too short to compare"};
    Bytes before(original.begin(), original.end());
    Bytes after(rebuilt.begin(), rebuilt.end());
    for (const PartlyReserved& byte : partlyReserved) {
        const int reserved = after[byte.index] & byte.reserved();
        if (reserved != byte.reserved() && reserved != (before[byte.index] & byte.reserved()))
            return {"hvcC: reserved bits at byte " + std::to_string(byte.index) +
                    " are neither the original's nor all ones"};
        before[byte.index] &= byte.meaning;
        after[byte.index] &= byte.meaning;
    }
    if (before != after)
        return {
            "hvcC differs in its profile, level, flags or parameter sets (not just the "
            "reserved bits)"};
    return {};
}

}  // namespace marlet
