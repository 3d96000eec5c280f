#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/bytes.h"
#include "foundation/run_control.h"
#include "matroska/mkv_file.h"
#include "mp4/summary.h"
#include "verify/conversion_verifier.h"

// The steps of the proof of a conversion.
namespace marlet::ConvertVerify {

/// One sample of the new file.
struct Ref {
    std::uint64_t offset = 0;
    std::uint32_t size = 0;  ///< bytes
    std::int64_t pts = 0;    ///< time units of the track
    bool operator==(const Ref&) const = default;
};

/// What a summary doesn't tell of a track (ISO/IEC 14496-12, 8.3.2 and 8.6.6).
struct TrakDetail {
    std::uint32_t id = 0;
    std::uint64_t duration = 0;  ///< movie time units
    std::optional<int> channels;
    std::optional<std::uint32_t> displayFlags;  ///< of a `tx3g` entry (3GPP TS 26.245, 5.16)
    std::uint64_t leadIn = 0;                   ///< movie time units of nothing at the start
    std::int64_t editStart = 0;                 ///< media time that plays first, track time units
    std::uint64_t editLength = 0;               ///< movie time units that the first real edit plays
    int realEdits = 0;                          ///< edits that play media
    bool operator==(const TrakDetail&) const = default;
};

/// Whether a NAL unit that begins with this byte is left out of the comparison: the MP4 form keeps
/// parameter sets and delimiters elsewhere, or nowhere.
using NALFilter = bool (*)(std::uint8_t);
using FrameDigest = std::array<std::uint8_t, 32>;

/// One for each `trak`, in file order.
std::vector<TrakDetail> trakDetails(ByteView moov);
/// Every sample in the order of the tables, from chunks, sizes, durations and composition offsets.
std::vector<Ref> refs(const Track& track);

/// Bytes of the length in front of each NAL unit (ISO/IEC 14496-15, 5.3.3.1 and 8.3.3.1), from the
/// source's CodecPrivate; 0 for what isn't stored in NAL units.
std::size_t lengthSize(const MKVTrack& track);
NALFilter nalFilter(std::string_view codecID);
/// SHA-256 over the bytes; with a filter and a length size over what the filter leaves of the NAL
/// units, without their lengths.
FrameDigest frameDigest(ByteView frame, NALFilter skip, std::size_t lengthSize);

/// Three letters as 15 bits (ISO/IEC 14496-12, 8.4.2); 0 for anything else.
int packed(std::string_view language);
/// Seconds from the track's first frame to the end of its last.
double mkvSpan(const MKVFile& mkv, int track);

/// Proves that one track of the new file, which `fd` has open, holds the very frames of a track of
/// the source, each at its time: adds reasons, or the note that it does. `lengthSize` is that of
/// the source; the MP4 track has its own.
void compare(const MKVFile& mkv, const MKVTrack& track, const Track& mp4Track, int fd,
             NALFilter nalSkip, std::size_t lengthSize, const std::string& label,
             RunControl& control, Report& into);

}  // namespace marlet::ConvertVerify
