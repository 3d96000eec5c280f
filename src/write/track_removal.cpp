#include "write/track_removal.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "foundation/languages.h"
#include "foundation/text.h"
#include "mp4/sound_layout.h"
#include "write/job_end.h"
#include "write/media_language.h"
#include "write/outcome_wording.h"
#include "write/place_file.h"
#include "write/rebuild.h"
#include "write/write_gate.h"

namespace marlet::TrackChoice {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view sound = "soun";
constexpr std::string_view picture = "vide";
constexpr std::array<std::string_view, 5> removable = {sound, "sbtl", "text", "subt", "clcp"};

bool isEnabled(const Track& track) {
    return (track.tkhdFlags & 1U) != 0;
}

bool isPlayingSound(const Track& track) {
    return track.handler == sound && isEnabled(track);
}

const Track& trackAt(const std::vector<Track>& tracks, int index) {
    const auto found = std::ranges::find(tracks, index, &Track::index);
    if (found == tracks.end()) throw MFError(Wording::trackGone);
    return *found;
}

std::string wordsOf(const Track& track) {
    return (track.handler == sound ? "sound " : "subtitles ") +
           Lang::name(knownLanguage(track.language));
}

std::string countedTracks(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " track" : " tracks");
}

/// A player starts the first sound track that is switched on. When that one goes, the first of
/// those that stay takes its place; a file that had none switched on is left so.
std::vector<int> soundToEnable(const std::vector<Track>& all, const std::vector<Track>& kept) {
    if (std::ranges::none_of(all, isPlayingSound) || std::ranges::any_of(kept, isPlayingSound))
        return {};
    const auto first = std::ranges::find(kept, sound, &Track::handler);
    if (first == kept.end()) return {};
    return {static_cast<int>(first - kept.begin())};
}

void requireOutputSpace(const WriteJob& job) {
    constexpr double times = 1.1;
    const double need = static_cast<double>(job.reference.size) * times;
    const std::int64_t have = FileOps::freeSpace(*job.request.outputDir, true);
    if (static_cast<double>(have) < need) throw JobEnd::stopped(Wording::noOutputSpace);
}

}  // namespace

TrackRemoval choose(const std::vector<Track>& tracks, const std::vector<int>& drop) {
    TrackRemoval removal;
    for (const Track& track : tracks) {
        if (!std::ranges::count(drop, track.index)) continue;
        removal.ids.push_back(track.id);
        removal.words.push_back(wordsOf(track));
    }
    for (const int index : drop) {
        const Track& track = trackAt(tracks, index);
        if (std::ranges::find(removable, track.handler) == removable.end())
            throw MFError(Wording::trackNotRemovable(index));
    }
    std::vector<Track> kept;
    std::ranges::copy_if(tracks, std::back_inserter(kept), [&](const Track& track) {
        return std::ranges::count(drop, track.index) == 0;
    });
    if (std::ranges::find(kept, picture, &Track::handler) == kept.end())
        throw MFError(Wording::pictureStays);
    removal.keep.emplace();
    for (const Track& track : kept) removal.keep->push_back(track.index);
    removal.enable = soundToEnable(tracks, kept);
    return removal;
}

std::vector<int> placesToEnable(const TrackRemoval& removal, const std::vector<Track>& newTracks) {
    std::vector<int> places;
    for (const int each : removal.enable)
        places.push_back(newTracks.at(static_cast<std::size_t>(each)).index);
    return places;
}

TrackRemoval check(const WriteJob& job) {
    if (job.request.dropTracks.empty()) return {};
    if (!std::holds_alternative<WriteRequest::WriteDetails>(job.request.mode))
        throw MFError(Wording::tracksNeedDetails);
    if (!TagWriter::mp4box()) throw MFError(Rebuild::missingForTracks);
    const MP4Summary summary = parseSummary(loadMoov(job.staged), job.staged, Detail::Yes);
    TrackRemoval removal = choose(summary.tracks, job.request.dropTracks);
    requireOutputSpace(job);
    WriteGate::requireSpace(job, WriteGate::Way::Rebuild);
    return removal;
}

void deliver(WriteJob& job, const TrackRemoval& removal) {
    makeFoldersFor(*job.request.outputDir, "cannot create the output folder");
    const fs::path saved = Converter::deliver(job.candidate, job.file(), job.sourceMark,
                                              *job.request.outputDir, job.control, job.progress);
    const double after = measureInterleave(saved);
    job.outcome.after = after;
    if (after > soundLayoutLimit) throw MFError(Wording::newFileOverLimit(after));

    const std::string count = countedTracks(removal.words.size());
    const std::string name = saved.filename().string();
    job.outcome.changes.push_back("New file " + name);
    job.outcome.changes.push_back("left out " + count + " (" + Text::join(removal.words, ", ") +
                                  ")");
    job.outcome.status = WriteOutcome::Status::done;
    job.outcome.message = Wording::newFile(name, count);
    job.outcome.output = saved;
    job.outcome.size = FileOps::size(saved);
    job.report("Done", 1);
}

}  // namespace marlet::TrackChoice
