#include "verify/track_comparison.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include "foundation/languages.h"
#include "foundation/text.h"
#include "verify/decoder_configuration.h"
#include "verify/sample_descriptions.h"

namespace marlet {

namespace {

constexpr std::uint32_t enabledFlag = 1;
constexpr std::uint32_t inMovieFlag = 2;

/// The same track in both files.
struct Pair {
    const Track& original;
    const Track& rebuilt;
    const TrackPlayback& originalPlayback;
    const TrackPlayback& rebuiltPlayback;
    const RebuildTerms& terms;
};

bool sameFlag(const Pair& pair, std::uint32_t flag) {
    return ((pair.original.tkhdFlags ^ pair.rebuilt.tkhdFlags) & flag) == 0;
}

bool sameEnabled(const Pair& pair) {
    if (sameFlag(pair, enabledFlag)) return true;
    return (pair.rebuilt.tkhdFlags & enabledFlag) != 0 &&
           pair.terms.enabledOnPurpose.contains(pair.rebuilt.index);
}

std::string rebuiltHandler(const Pair& pair) {
    return " (" + pair.rebuilt.handler + ")";
}
std::string rebuiltCodec(const Pair& pair) {
    return " (" + pair.rebuilt.codec + ")";
}
std::string bothLanguages(const Pair& pair) {
    return " (" + Lang::name(pair.original.language) + " vs " + Lang::name(pair.rebuilt.language) +
           ")";
}

/// A length in seconds: what the original says, or what its tables say where it says it wrongly.
bool sameSeconds(double original, double fromTables, double rebuilt) {
    constexpr double tolerance = 0.1;
    return std::abs(rebuilt - original) <= tolerance || std::abs(rebuilt - fromTables) <= tolerance;
}

bool sameLengths(const Pair& pair) {
    const TrackPlayback& a = pair.originalPlayback;
    const TrackPlayback& b = pair.rebuiltPlayback;
    return sameSeconds(a.mediaSeconds, a.tableSeconds, b.mediaSeconds) &&
           sameSeconds(a.shownSeconds, a.editSeconds.value_or(a.tableSeconds), b.shownSeconds);
}

struct Check {
    std::string_view message;
    bool (*same)(const Pair&);
    std::string (*detail)(const Pair&) = nullptr;
};

/// What every track keeps.
constexpr std::array headerChecks = {
    Check{": type differs", [](const Pair& p) { return p.original.handler == p.rebuilt.handler; },
          rebuiltHandler},
    Check{": codec differs", [](const Pair& p) { return p.original.codec == p.rebuilt.codec; },
          rebuiltCodec},
    Check{": language differs",
          [](const Pair& p) {
              return p.original.langRaw == p.rebuilt.langRaw &&
                     p.original.mdhdPredefined == p.rebuilt.mdhdPredefined;
          },
          bothLanguages},
    Check{": media header dates differ",
          [](const Pair& p) {
              return p.original.mdhdCreated == p.rebuilt.mdhdCreated &&
                     p.original.mdhdModified == p.rebuilt.mdhdModified;
          }},
    Check{": track header dates differ",
          [](const Pair& p) {
              return p.original.tkhdCreated == p.rebuilt.tkhdCreated &&
                     p.original.tkhdModified == p.rebuilt.tkhdModified;
          }},
    Check{": track header layer, volume, matrix or display size differ",
          [](const Pair& p) { return p.original.tkhdRest == p.rebuilt.tkhdRest; }},
    Check{": enabled flag differs", sameEnabled},
    Check{": alternate group differs",
          [](const Pair& p) { return p.original.altGroup == p.rebuilt.altGroup; }},
};

/// What a track that isn't chapter text keeps as well; the sample descriptions come first.
constexpr std::array tableChecks = {
    Check{": edit list differs",
          [](const Pair& p) {
              // Its times are in units of the movie, which could have become others.
              return p.original.elstDigest == p.rebuilt.elstDigest &&
                     p.original.presOffset == p.rebuilt.presOffset &&
                     p.originalPlayback.editSeconds == p.rebuiltPlayback.editSeconds;
          }},
    Check{": sample count or sizes differ",
          [](const Pair& p) { return p.original.sizes == p.rebuilt.sizes; }},
    Check{": sample timing differs",
          [](const Pair& p) { return p.original.durations == p.rebuilt.durations; }},
    Check{": composition offsets differ",
          [](const Pair& p) { return p.original.ctts == p.rebuilt.ctts; }},
    Check{": keyframe table differs",
          [](const Pair& p) {
              return p.original.sync == p.rebuilt.sync &&
                     p.originalPlayback.hasSyncTable == p.rebuiltPlayback.hasSyncTable;
          }},
    Check{": time scale differs",
          [](const Pair& p) { return p.original.timescale == p.rebuilt.timescale; }},
    Check{": samples have data beside them that can't be compared",
          [](const Pair& p) {
              return !p.originalPlayback.hasAuxiliaryData && !p.rebuiltPlayback.hasAuxiliaryData;
          }},
};

/// How the samples of any track, chapter text as well, are found and taken.
constexpr std::array accessChecks = {
    Check{": use of the sample descriptions differs",
          [](const Pair& p) {
              return p.originalPlayback.descriptionUse == p.rebuiltPlayback.descriptionUse;
          }},
    Check{": media data is said to lie outside the file",
          [](const Pair& p) {
              return p.rebuiltPlayback.isSelfContained || !p.originalPlayback.isSelfContained;
          }},
};

/// What a file laid out anew keeps, while a file in a new container says it in its own way.
constexpr std::array layoutChecks = {
    Check{": use in the film (a flag) differs",
          [](const Pair& p) { return sameFlag(p, inMovieFlag); }},
    Check{": header of its kind of media differs",
          [](const Pair& p) {
              return p.originalPlayback.mediaHeader == p.rebuiltPlayback.mediaHeader;
          }},
    Check{": references to other tracks differ",
          [](const Pair& p) {
              return p.originalPlayback.references == p.rebuiltPlayback.references;
          }},
    Check{": duration in its headers differs", sameLengths},
};

template <typename Checks>
void run(const Checks& checks, const Pair& pair, const std::string& label, VerifyReport& report) {
    for (const Check& check : checks) {
        if (check.same(pair)) continue;
        std::string reason = label;
        reason += check.message;
        if (check.detail != nullptr) reason += check.detail(pair);
        report.reasons.push_back(std::move(reason));
    }
}

void compareDescriptions(const Pair& pair, const std::string& label, VerifyReport& report) {
    if (pair.original.stsdDigest == pair.rebuilt.stsdDigest) return;
    const auto reasons = compareSampleDescriptions(pair.original.stsd, pair.rebuilt.stsd);
    if (reasons.empty())
        report.notes.push_back(label +
                               ": codec configuration rewritten by MP4Box, checked equivalent");
    for (const std::string& reason : reasons) {
        if (pair.terms.lenientSampleEntries)
            report.notes.push_back(label + ": sample description rewritten for MP4 (" + reason +
                                   ")");
        else
            report.reasons.push_back(label + ": codec configuration: " + reason);
    }
}

void compareDecoderNeeds(const Pair& pair, const std::string& label, VerifyReport& report) {
    if (!pair.terms.sameDecoders) return;
    for (const std::string& reason : compareDecoders(pair.original.stsd, pair.rebuilt.stsd))
        report.reasons.push_back(label + ": codec configuration: " + reason);
}

/// Handlers of tracks whose samples are text.
constexpr std::array<std::string_view, 3> textHandlers = {"text", "sbtl", "subt"};

}  // namespace

std::string trackLabel(const Track& track, std::size_t position) {
    return "track " + std::to_string(position + 1) + " (" + track.handler + " " + track.codec + ")";
}

std::set<std::size_t> chapterTracks(const std::vector<Track>& tracks) {
    std::set<std::uint32_t> named;
    for (const Track& track : tracks) named.insert(track.chapRefs.begin(), track.chapRefs.end());
    std::set<std::size_t> positions;
    for (std::size_t i = 0; i < tracks.size(); i++) {
        // Chapters can have pictures, too; those, or a film that is named by mistake, are proved
        // like any other track.
        const bool isText =
            std::ranges::find(textHandlers, tracks[i].handler) != textHandlers.end();
        if (isText && named.contains(tracks[i].id)) positions.insert(i);
    }
    return positions;
}

void compareTracks(const VerifiedSide& original, const VerifiedSide& rebuilt, std::size_t position,
                   bool isChapterTrack, const RebuildTerms& terms, VerifyReport& report) {
    const Pair pair{original.summary.tracks[position], rebuilt.summary.tracks[position],
                    original.playback.tracks[position], rebuilt.playback.tracks[position], terms};
    const std::string label = trackLabel(pair.original, position);
    run(headerChecks, pair, label, report);
    if (!isChapterTrack) {
        compareDescriptions(pair, label, report);
        compareDecoderNeeds(pair, label, report);
        run(tableChecks, pair, label, report);
    }
    run(accessChecks, pair, label, report);
    if (!isChapterTrack && !terms.lenientSampleEntries) run(layoutChecks, pair, label, report);
}

}  // namespace marlet
