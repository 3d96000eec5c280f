#pragma once

#include "helpers/movie_map.h"
#include "helpers/source_file.h"
#include "helpers/track_box.h"

namespace marlet::MovieTracks {

/// The track of that number, or the only one; MFError otherwise.
std::uint32_t chosen(const SourceFile& file, const MovieMap& map,
                     std::optional<std::uint32_t> wanted);

/// A track of an MP4 or QuickTime file with new headers and the tables, edit list and sample
/// entries that it has. What only QuickTime writes is put into the form of an MP4: the media
/// handler's box and name, references to media, and the sound entry of version 1 or 2, whose
/// configuration lies one box deeper.
TrackBox make(const SourceFile& file, const MappedTrack& track, const TrackRequest& request,
              const TrackPlace& place);

/// Units a second of the file's movie.
std::uint32_t movieScale(const SourceFile& file, const MovieMap& map);

}  // namespace marlet::MovieTracks
