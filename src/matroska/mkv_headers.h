#pragma once

#include <vector>

#include "matroska/content_encoding.h"
#include "matroska/header_reader.h"
#include "matroska/mkv_file.h"

namespace marlet::MKVHeaders {

struct TrackEntry {
    MKVTrack track;
    ContentEncodings encodings;
};

/// Of a TrackEntry of known size.
TrackEntry readTrack(HeaderReader& reader, const Element& entry);

/// Their parts of a TrackEntry, of known size as well.
void readVideo(HeaderReader& reader, const Element& parent, MKVTrack& track);
void readBlockAddition(HeaderReader& reader, const Element& parent, MKVTrack& track);

ContentEncodings readEncodings(HeaderReader& reader, const Element& parent);

/// Of a Chapters element of known size: the first edition that has any, sorted by their starts.
std::vector<MKVChapter> readChapters(HeaderReader& reader, const Element& parent);

}  // namespace marlet::MKVHeaders
