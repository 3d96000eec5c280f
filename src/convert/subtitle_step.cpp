#include "convert/subtitle_step.h"

#include <optional>
#include <string>

#include "convert/convert_wording.h"
#include "convert/pgs_ocr.h"
#include "convert/plan_language.h"
#include "convert/subtitle_text.h"
#include "foundation/durable.h"
#include "foundation/errors.h"
#include "foundation/file_ops.h"

namespace marlet::SubtitleStep {

namespace fs = std::filesystem;

namespace {

using Sub = ConvertPlanSnapshot::Sub;

/// No subtitle is near that size.
constexpr std::size_t largestSidecar = std::size_t{64} * 1024 * 1024;

std::vector<Cue> textCues(const ConvertJob& job, const Sub& entry) {
    const MKVTrack* const track = entry.track ? job.mkv->track(*entry.track) : nullptr;
    return track == nullptr ? std::vector<Cue>() : SubtitleText::cues(*job.mkv, *track);
}

std::vector<Cue> pictureCues(const ConvertJob& job, const Sub& entry) {
    const MKVTrack* const track = entry.track ? job.mkv->track(*entry.track) : nullptr;
    if (track == nullptr) return {};
    return PGSOCR::cues(*job.mkv, *track, PlanLanguage::code(entry.language), entry.splitForced,
                        job.control);
}

std::vector<Cue> sidecarCues(const Sub& entry) {
    const std::optional<Bytes> bytes =
        FileOps::readSmall(entry.sidecar.value_or(fs::path()), largestSidecar);
    return bytes ? SubtitleText::parseSRT(SubtitleText::decode(*bytes)) : std::vector<Cue>();
}

std::vector<Cue> cuesOf(const ConvertJob& job, const Sub& entry) {
    switch (static_cast<SubKind>(entry.kind)) {
        case SubKind::text:
            return textCues(job, entry);
        case SubKind::sidecar:
            return sidecarCues(entry);
        case SubKind::picture:
            return pictureCues(job, entry);
    }
    return {};
}

/// The lines count from the source's own 0, the new file from its first frame.
void shift(std::vector<Cue>& cues, std::int64_t beginMs) {
    for (Cue& cue : cues) {
        cue.startMs -= beginMs;
        cue.endMs -= beginMs;
    }
    std::erase_if(cues, [](const Cue& cue) { return cue.endMs <= 0; });
}

/// Nothing, and a note, when the subtitle has to be left out. It is no reason to go without the
/// film.
std::vector<Cue> cuesOrNote(ConvertJob& job, const Sub& entry) {
    try {
        std::vector<Cue> cues = cuesOf(job, entry);
        shift(cues, job.starts.beginMs());
        if (cues.empty()) job.notes.push_back(ConvertWording::noLines(entry.name));
        return cues;
    } catch (const MFError& failure) {
        job.notes.push_back(entry.name + ": " + failure.description());
        return {};
    }
}

/// Three letters; what a hostile plan says instead never reaches the tool's options.
std::string languageOf(const Sub& entry) {
    const std::string code = PlanLanguage::code(entry.language);
    const bool isCode = code.size() == 3 &&
                        code.find_first_not_of("abcdefghijklmnopqrstuvwxyz") == std::string::npos;
    return isCode ? code : "und";
}

void add(ConvertJob& job, const Sub& entry, const fs::path& file) {
    MuxTrack track{.file = file,
                   .language = languageOf(entry),
                   .name = muxName(entry.name),
                   .group = MuxTrack::Group::subtitles,
                   .isEnabled = false,
                   .isForced = entry.forced};
    job.expected.push_back({.kind = ConvertVerify::Expected::Kind::sub,
                            .forced = entry.forced,
                            .language = track.language});
    job.mux.tracks.push_back(std::move(track));
}

}  // namespace

void run(ConvertJob& job) {
    job.report("Preparing subtitles", 0.36);
    int number = 0;
    bool hasEnabled = false;
    for (const Sub& entry : job.plan().subs) {
        job.control.checkpoint();
        const std::vector<Cue> cues = cuesOrNote(job, entry);
        if (cues.empty()) continue;
        const fs::path file = job.folder.path() / ("s" + std::to_string(++number) + ".srt");
        Durable::writeFile(file, viewOf(SubtitleText::writeSRT(cues)));
        add(job, entry, file);
        // The first forced one shows by itself; without one, none does.
        if (!entry.forced || hasEnabled) continue;
        job.mux.tracks.back().isEnabled = true;
        hasEnabled = true;
    }
}

}  // namespace marlet::SubtitleStep
