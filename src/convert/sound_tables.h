#pragma once

#include <string>

#include "matroska/mkv_file.h"

/// What is known of sound codecs and channel counts.
namespace marlet::SoundTables {

/// The short name of a codec id; the id itself when it has none.
std::string codecName(const std::string& codecID);
/// Higher is better: the codec first, the channels among equal codecs.
int quality(const MKVTrack& track);
/// "Surround 7.1", "Stereo", "4 channels"; a track that doesn't say it reads as stereo.
std::string channelWords(int channels);
/// A track without a count has one channel, the default of RFC 9559 (5.1.4.1.29.3).
int channels(const MKVTrack& track);
/// Whether an M4V that Apple TV plays can hold the sound as it is.
bool canCopy(const std::string& codecID);

/// From here on sound is surround, below it is counted as stereo.
inline constexpr int surroundFrom = 3;

}  // namespace marlet::SoundTables
