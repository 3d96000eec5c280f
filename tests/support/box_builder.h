#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/bytes.h"

// Synthetic MP4 bytes (ISO/IEC 14496-12): single boxes for the tests that break one byte, and whole
// small movies whose chunk tables and media data are true.
namespace marlet::test {

// --- bytes ---
Bytes be16(std::uint16_t value);
Bytes be32(std::uint32_t value);
Bytes be64(std::uint64_t value);
Bytes joined(std::initializer_list<Bytes> parts);
Bytes joined(const std::vector<Bytes>& parts);
/// A copy with the bytes at `at` replaced.
Bytes patched(Bytes bytes, std::size_t at, ByteView with);

// --- boxes; types are UTF-8 ("©nam") ---
Bytes box(std::string_view type, ByteView payload);
Bytes box(std::string_view type, std::initializer_list<Bytes> children);
/// With a 64-bit size (header of 16 bytes).
Bytes largeBox(std::string_view type, ByteView payload);
Bytes fullBox(std::string_view type, std::uint8_t version, std::uint32_t flags, ByteView payload);
/// A header only, with a size that may lie.
Bytes boxHeader(std::string_view type, std::uint32_t size);

// --- headers (version 0) ---
Bytes ftypBox();
Bytes mvhdBox(std::uint32_t timescale, std::uint32_t duration);
Bytes tkhdBox(std::uint32_t id, std::uint32_t flags = 3, std::uint16_t altGroup = 0);
Bytes mdhdBox(std::uint32_t timescale, std::uint32_t duration, std::string_view language = "und");
Bytes hdlrBox(std::string_view handler);
/// Duration (movie units) and media time (media units, -1 for an empty edit).
using EditRow = std::pair<std::uint32_t, std::int32_t>;
Bytes elstBox(const std::vector<EditRow>& rows);

// --- sample tables ---
Bytes stszBox(std::uint32_t uniform, std::uint32_t count);
Bytes stszBox(const std::vector<std::uint32_t>& sizes);
using Run = std::pair<std::uint32_t, std::uint32_t>;  ///< (sample count, value)
Bytes sttsBox(const std::vector<Run>& runs);
Bytes cttsBox(const std::vector<Run>& runs, std::uint8_t version = 0);
Bytes stssBox(const std::vector<std::uint32_t>& numbers);
using ChunkRow = std::pair<std::uint32_t, std::uint32_t>;  ///< (first chunk, samples per chunk)
Bytes stscBox(const std::vector<ChunkRow>& rows);
Bytes stcoBox(const std::vector<std::uint32_t>& offsets);
Bytes co64Box(const std::vector<std::uint64_t>& offsets);
/// One sample entry of this type, with an empty body of 28 bytes.
Bytes stsdBox(std::string_view codec);
/// mdia/minf/stbl around the tables, with hdlr and mdhd.
Bytes mdiaBox(std::string_view handler, std::uint32_t timescale, std::uint32_t duration,
              std::initializer_list<Bytes> tables, std::string_view language = "und");

// --- tags ---
/// An item with one `data` child of that well-known type (1 text, 21 integer, 13 JPEG, ...).
Bytes tagItem(std::string_view type, std::uint32_t kind, ByteView value);
Bytes textItem(std::string_view type, std::string_view text);
Bytes freeformItem(std::string_view mean, std::string_view name, std::string_view text);
Bytes ilstBox(const std::vector<Bytes>& items);
/// udta/meta(full box)/hdlr+ilst, as iTunes and FFmpeg write it; `room` is a `free` box of that
/// many bytes (at least 8) behind ilst, none when 0.
Bytes udtaBox(const std::vector<Bytes>& items, std::uint32_t room = 0);

// --- a movie ---
struct MovieTrack {
    std::string handler = "soun";
    std::string codec = "mp4a";
    std::string language = "und";
    std::uint32_t timescale = 1000;
    std::uint32_t flags = 3;
    std::uint16_t altGroup = 0;
    std::vector<std::uint32_t> sizes;      ///< bytes, one a sample
    std::vector<std::uint32_t> durations;  ///< time units, one a sample
    std::uint32_t samplesPerChunk = 1;
    std::vector<EditRow> edits;
    std::vector<Bytes> samples = {};    ///< what the samples hold; empty: see sampleBytes
    std::vector<Bytes> tables = {};     ///< more children of `stbl`: ctts, stss, ...
    std::vector<Bytes> boxes = {};      ///< more children of `trak`, behind `tkhd`: tref, ...
    std::vector<Bytes> mediaInfo = {};  ///< more children of `minf`: dinf, ...
    Bytes entry = {};                   ///< the sample entry's body; empty: 28 bytes of nothing
};

/// A track of text, a sample each: a length of 16 bits and the UTF-8 of it.
MovieTrack textTrack(const std::vector<std::string>& texts, std::uint32_t duration);
/// `chpl` with chapters at these milliseconds.
Bytes chplBox(const std::vector<std::pair<std::uint64_t, std::string>>& chapters);

/// A track of equal samples.
MovieTrack evenTrack(std::string_view handler, std::uint32_t samples, std::uint32_t size,
                     std::uint32_t duration, std::uint32_t samplesPerChunk = 1);

struct Movie {
    enum class Index { First, Last };
    /// Chunks of the tracks in turn, or one track behind the other.
    enum class Layout { Interleaved, TrackByTrack };

    std::vector<MovieTrack> tracks;
    std::vector<Bytes> tags;           ///< items of the tag block
    bool hasTagBlock = true;           ///< false: no udta at all
    std::vector<Bytes> userData = {};  ///< more children of `udta`: chpl, ...
    std::vector<Bytes> boxes = {};     ///< more children of `moov`: mvex, ...
    std::uint32_t tagRoom = 0;         ///< size of a `free` box inside meta, behind ilst
    std::uint32_t padding = 0;         ///< size of a `free` box behind moov, 0 for none
    Index index = Index::First;
    Layout layout = Layout::Interleaved;
    bool wideOffsets = false;  ///< co64
    std::uint32_t timescale = 1000;
};

/// The file's bytes: ftyp, moov, free, mdat (or ftyp, mdat, moov, free). Track IDs count from 1.
/// Every sample's bytes tell its track and number: see sampleBytes.
Bytes buildMovie(const Movie& movie);
/// What sample `number` (from 0) of the track holds.
Bytes sampleBytes(std::uint32_t trackID, std::uint32_t number, std::uint32_t size);

}  // namespace marlet::test
