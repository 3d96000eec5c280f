#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/bytes.h"
#include "mp4/tags.h"

namespace marlet {

/// Samples stored together (ISO/IEC 14496-12, 8.7.4 and 8.7.5).
struct Chunk {
    std::uint64_t offset = 0;  ///< absolute, in the file
    std::uint32_t first = 0;   ///< index of the first sample in the track, from 0
    std::uint32_t count = 0;   ///< samples in the chunk
    bool operator==(const Chunk&) const = default;
};

/// One track of the index. "detail" fields are empty unless the summary was read in detail.
struct Track {
    int index = 0;  ///< ordinal among all `trak` boxes, from 0
    std::uint32_t id = 0;
    std::uint32_t tkhdFlags = 0;
    int altGroup = 0;
    std::uint32_t timescale = 1;  ///< units a second; 0 is stored as 1
    std::string handler;
    std::string codec;                     ///< detail
    std::string language;                  ///< three letters (ISO 639-2/T)
    std::vector<std::uint32_t> sizes;      ///< bytes, one a sample
    std::vector<std::uint32_t> durations;  ///< time units, one a sample
    std::vector<std::int64_t> ctts;        ///< detail: composition offsets, one a sample
    std::vector<std::uint32_t> sync;       ///< detail: sample numbers from 1, as stored
    std::vector<Chunk> chunks;
    std::string stsdDigest;               ///< detail
    std::string elstDigest;               ///< detail; empty without an edit list
    Bytes stsd;                           ///< detail: payload
    std::vector<std::uint32_t> chapRefs;  ///< detail: track IDs
    std::uint64_t tkhdCreated = 0;
    std::uint64_t tkhdModified = 0;
    Bytes tkhdRest;  ///< `tkhd` from its layer field on
    std::uint64_t mdhdCreated = 0;
    std::uint64_t mdhdModified = 0;
    int langRaw = 0;
    int mdhdPredefined = 0;
    double presOffset = 0;  ///< seconds at which the first sample is presented
};

/// The index box in memory.
struct MP4Summary {
    std::uint64_t fileSize = 0;
    double duration = 0;             ///< seconds
    std::optional<double> videoEnd;  ///< seconds; end of the picture
    std::vector<Track> tracks;
    std::vector<std::string> ilst;  ///< detail: SHA-256 of every tag item, sorted
    std::vector<TagItem> tags;      ///< detail: in file order
    std::vector<Chapter> chpl;      ///< detail
};

enum class Detail { No, Yes };

/// Detail::No keeps sound tracks only and skips what measuring doesn't need. Fails with one of
/// "track without sample table", "incomplete sample table", "bad stsz", "bad stts",
/// "bad chunk offsets", "bad stsc", "sample table inconsistent", "bad ctts", "bad stss".
MP4Summary parseSummary(ByteView moov, const std::filesystem::path& url, Detail detail);
/// The same on an index that has no file behind it (fileSize 0).
MP4Summary parseSummary(ByteView moov, Detail detail);

std::optional<Track> parseTrack(ByteView data, std::int64_t from, std::int64_t to, Detail detail,
                                std::uint32_t movieScale);

struct EditTimes {
    double offset = 0;  ///< seconds
    double length = 0;  ///< seconds
};
/// From `edts`/`elst` of the track (ISO/IEC 14496-12, 8.6.6); nothing without one.
std::optional<EditTimes> editTimes(ByteView data, std::int64_t from, std::int64_t to,
                                   std::uint32_t movieScale, std::uint32_t mediaScale);

}  // namespace marlet
