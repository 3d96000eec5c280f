#pragma once

#include <cstdint>

#include "foundation/bytes.h"
#include "matroska/mkv_file.h"
#include "mp4/box_cursor.h"

// Sample entries that are made anew (ISO/IEC 14496-12, 8.5.2).
namespace marlet::SampleEntries {

/// `stsd` with this one entry.
Bytes description(ByteView entry);

Bytes sound(BoxCode type, std::uint32_t channels, std::uint32_t rate, ByteView more);

/// `avc1` or `hvc1` (ISO/IEC 14496-15) around the CodecPrivate, which is the record itself, and how
/// the pictures are to be shown; `dvh1` for HEVC that only Dolby Vision shows right. MFError for
/// another codec, or without that record.
Bytes video(const MKVTrack& track);

/// AAC (ISO/IEC 14496-14, 5.6): the CodecPrivate is the AudioSpecificConfig.
struct AACDescription {
    Bytes entry;
    std::uint32_t rate = 0;         ///< of the frames; sound of SBR is made at twice that
    std::uint32_t frameLength = 0;  ///< samples
};
/// MFError when no rate can be told.
AACDescription aac(const MKVTrack& track);

/// `tx3g` (3GPP TS 26.245, 5.16): white, centred at the foot of a picture of that size.
Bytes subtitle(std::uint32_t flags, std::uint16_t width, std::uint16_t height);
/// Of its letters, in pixels: a twentieth of the picture's height.
std::uint8_t subtitleSize(std::uint16_t height);

/// `text` of QuickTime, which chapters are kept in.
Bytes chapters();

}  // namespace marlet::SampleEntries
