#pragma once

#include <optional>
#include <string>
#include <vector>

#include "mp4/summary.h"
#include "verify/conversion_frames.h"
#include "verify/conversion_parts.h"
#include "verify/playback_details.h"

// The checks of the proof of a conversion that read no frames.
namespace marlet::ConvertVerify {

/// A track of the new file beside what it should be.
struct Pairing {
    std::size_t number = 0;  ///< in the new file, from 1
    const Expected& expected;
    const Track& track;
    const TrakDetail& detail;
    const TrackPlayback& playback;
    const MKVTrack* source = nullptr;      ///< nothing for a subtitle, or when it isn't there
    const SourceFrames* frames = nullptr;  ///< of the source track
    std::uint32_t movieTimescale = 1;

    bool isCopied() const {
        return expected.kind == Expected::Kind::video || expected.kind == Expected::Kind::audioCopy;
    }
    bool isConverted() const {
        return expected.kind == Expected::Kind::audioAAC ||
               expected.kind == Expected::Kind::audioAC3;
    }
    /// "video" or "sound track 2".
    std::string label() const;
    /// Seconds that the track plays, without what it waits at the start.
    double seconds() const;
    /// When its first frame comes, in seconds; nothing without frames.
    std::optional<double> start() const;
    std::optional<double> sourceStart() const;
};

/// Kind, codec, channels, flags; false when it is another kind of track than expected.
bool checkKind(const Pairing& pair, Report& into);
/// Converted sound against its source.
void checkLength(const Pairing& pair, Report& into);
void checkLanguage(const Pairing& pair, Report& into);
/// What would keep players from playing a copied track as a whole: its entry, its edits, its place.
void checkPlayback(const Pairing& pair, Report& into);
/// Each sound track's start relative to the picture, as in the source.
void checkSync(const std::vector<Pairing>& pairs, Report& into);
/// One enabled track in each group of sound, at most one in any other.
void checkAlternateGroups(const std::vector<const Track*>& tracks, Report& into);
/// Count, titles and starts.
void checkChapters(const MKVFile& mkv, const std::filesystem::path& built,
                   const MP4Summary& summary, Report& into);

}  // namespace marlet::ConvertVerify
