#include "verify/conversion_verifier.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "foundation/errors.h"
#include "mp4/track_parser.h"
#include "verify/conversion_checks.h"
#include "verify/conversion_reading.h"
#include "verify/sample_entries.h"

namespace marlet::ConvertVerify {

namespace fs = std::filesystem;

namespace {

/// Beyond a day of picture and sound; each frame takes memory.
constexpr std::size_t mostFrames = 4'000'000;

/// The new file, its index read.
struct Built {
    MP4Summary summary;
    std::vector<const Track*> tracks;             ///< picture, sound and subtitles
    std::vector<const TrackPlayback*> playbacks;  ///< of these
    std::vector<TrakDetail> details;
    MoviePlayback playback;
    std::uint32_t timescale = 1;
};

bool isPlayed(const Track& track) {
    constexpr std::array<std::string_view, 3> handlers = {"vide", "soun", "sbtl"};
    return std::ranges::find(handlers, track.handler) != handlers.end();
}

/// The details of the track with that number; of two the one at its place.
const TrakDetail& detailOf(const Built& built, const Track& track) {
    const auto place = static_cast<std::size_t>(track.index);
    if (place < built.details.size() && built.details[place].id == track.id)
        return built.details[place];
    const auto found = std::ranges::find(built.details, track.id, &TrakDetail::id);
    static const TrakDetail none;
    return found == built.details.end() ? none : *found;
}

/// One run of the proof.
class Proof {
public:
    Proof(const MKVFile& mkv, const fs::path& file, const std::vector<Expected>& expected)
        : mkv_(mkv), file_(file), expected_(expected) {}

    Report run(const ConvertPlanSnapshot& plan, RunControl& control, const StepProgress& progress);

private:
    bool readIndex();
    void pairTracks();
    void prepare(Pairing& pair);
    void checkTrack(const Pairing& pair, RunControl& control);

    const MKVFile& mkv_;
    const fs::path& file_;
    const std::vector<Expected>& expected_;
    Built built_;
    std::vector<Pairing> pairs_;
    SourceTracks sources_;
    std::vector<BuiltFrames> copies_;
    Report report_;
};

bool Proof::readIndex() {
    const Bytes moov = loadMoov(file_);
    built_.summary = parseSummary(moov, file_, Detail::Yes);
    for (const Track& track : built_.summary.tracks)
        if (isPlayed(track)) built_.tracks.push_back(&track);
    if (built_.tracks.size() != expected_.size()) {
        report_.reasons.push_back("the new file has " + std::to_string(built_.tracks.size()) +
                                  " tracks, expected " + std::to_string(expected_.size()));
        return false;
    }
    built_.details = trakDetails(moov);
    built_.timescale = movieTimescale(moov);
    built_.playback = readPlayback(moov, built_.summary);
    for (std::size_t i = 0; i < built_.summary.tracks.size(); i++)
        if (isPlayed(built_.summary.tracks[i]))
            built_.playbacks.push_back(&built_.playback.tracks[i]);
    return true;
}

void Proof::pairTracks() {
    for (std::size_t i = 0; i < expected_.size(); i++) {
        Pairing pair{.number = i + 1,
                     .expected = expected_[i],
                     .track = *built_.tracks[i],
                     .detail = detailOf(built_, *built_.tracks[i]),
                     .playback = *built_.playbacks[i],
                     .movieTimescale = built_.timescale};
        prepare(pair);
        pairs_.push_back(pair);
    }
}

/// What has to be read for this track.
void Proof::prepare(Pairing& pair) {
    if (pair.expected.kind == Expected::Kind::sub) return;
    pair.source = mkv_.track(pair.expected.source);
    if (pair.source == nullptr) return;
    SourceFrames& frames = sources_.try_emplace(pair.source->number, *pair.source).first->second;
    pair.frames = &frames;
    if (!pair.isCopied()) return;

    const bool isVideo = pair.expected.kind == Expected::Kind::video;
    setReading(frames, *pair.source, isVideo ? nalFilter(pair.source->codecID) : nullptr,
               isVideo ? lengthSize(*pair.source) : 0);
    frames.mostKept = std::max(frames.mostKept, pair.track.sizes.size());
    copies_.push_back(builtCopy(frames, pair.track));
}

void Proof::checkTrack(const Pairing& pair, RunControl& control) {
    if (!checkKind(pair, report_)) return;
    if (pair.expected.kind != Expected::Kind::sub && pair.source == nullptr) {
        report_.reasons.push_back("track " + std::to_string(pair.number) +
                                  ": its source isn't in the original");
    } else if (pair.isCopied()) {
        const auto built = std::ranges::find(copies_, &pair.track, &BuiltFrames::track);
        judgeFrames(*pair.frames, *built, pair.label(), control, report_);
        checkPlayback(pair, report_);
        if (pair.frames->count == pair.track.sizes.size())
            judgePictures(*pair.frames, pair.source->codecPrivate, *built,
                          pair.playback.hasSyncTable, pair.label(), report_);
    } else if (pair.isConverted()) {
        checkLength(pair, report_);
    }
    checkLanguage(pair, report_);
}

Report Proof::run(const ConvertPlanSnapshot& plan, RunControl& control,
                  const StepProgress& progress) {
    if (!readIndex()) return report_;
    pairTracks();
    std::size_t frames = 0;
    for (const BuiltFrames& copy : copies_) frames += copy.track->sizes.size();
    if (frames > mostFrames) throw MFError("the new file has too many frames to be proved");

    const FileHandle handle =
        FileHandle::open(file_, O_RDONLY, "cannot open " + file_.filename().string());
    readBoth(mkv_, sources_, handle.get(), copies_, control, progress);
    for (const Pairing& pair : pairs_) checkTrack(pair, control);
    checkSync(pairs_, report_);
    checkAlternateGroups(built_.tracks, report_);
    if (built_.playback.isFragmented)
        report_.reasons.push_back("the new file is in fragments, whose samples can't be compared");
    if (!built_.playback.isWellFormed)
        report_.reasons.push_back("the index of the new file isn't well formed");
    if (plan.hasChapters) checkChapters(mkv_, file_, built_.summary, report_);
    return report_;
}

}  // namespace

Report run(const MKVFile& mkv, const ConvertPlanSnapshot& plan, const fs::path& built,
           const std::vector<Expected>& expected, RunControl& control,
           const StepProgress& progress) {
    return Proof(mkv, built, expected).run(plan, control, progress);
}

}  // namespace marlet::ConvertVerify
