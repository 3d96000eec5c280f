#pragma once

#include <optional>
#include <string>

#include "foundation/bytes.h"
#include "verify/nal_units.h"

// What the sample entries of a new file say of its codec.
namespace marlet::ConvertVerify {

/// The length in front of each NAL unit, from the first `avcC` or `hvcC`; 0 without one.
std::size_t builtLengthSize(NALFormat::Codec codec, ByteView stsd);
/// The sets of all entries; nothing without a record that can be read.
std::optional<ParameterSets> builtParameterSets(NALFormat::Codec codec, ByteView stsd);

/// Channels by the entry's own configuration: `dac3`, or the AAC configuration in `esds`; else by
/// its field. Nothing for what is no sound.
std::optional<int> builtChannels(ByteView stsd);

/// Whether entries of that type can hold the source's codec. True for a codec that isn't known.
bool canHold(const std::string& codecID, const std::string& entryType);
/// Whether an AAC track is decoded as the source says: object type, sampling rate and channels of
/// ISO/IEC 14496-3, 1.6.2.1. True where one of the two doesn't say it.
bool isSameAAC(ByteView codecPrivate, ByteView stsd);

}  // namespace marlet::ConvertVerify
