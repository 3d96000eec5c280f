#include "helpers/matroska_media.h"

#include <algorithm>
#include <cmath>

#include "foundation/errors.h"
#include "foundation/file_ops.h"
#include "helpers/boxes.h"
#include "helpers/dolby_sound.h"
#include "helpers/picture_boxes.h"
#include "helpers/picture_kind.h"
#include "helpers/sample_entries.h"
#include "matroska/picture_shape.h"
#include "matroska/run_in.h"

namespace marlet {

namespace MatroskaMedia {

namespace {

/// The first bytes of a sample.
Bytes startOf(const MatroskaFrames& frames, std::size_t sample, std::size_t most,
              const FileHandle& source) {
    const std::uint64_t stored = frames.frames.sizes[sample] - frames.prefix.size();
    Bytes bytes(static_cast<std::size_t>(std::min<std::uint64_t>(stored, most)));
    bytes.resize(FileOps::readFull(source.get(), bytes, frames.frames.offsets[sample]));
    bytes.insert(bytes.begin(), frames.prefix.begin(), frames.prefix.end());
    return bytes;
}

std::vector<std::uint32_t> syncSamples(const MKVTrack& track, const MatroskaFrames& frames,
                                       const FileHandle& source) {
    std::vector<std::uint32_t> sync;
    for (const std::uint32_t number : frames.keyframes)
        if (PictureKind::maySync(track, startOf(frames, number - 1, PictureKind::enough, source)))
            sync.push_back(number);
    return sync;
}

void fillVideo(const MKVTrack& track, const MatroskaFrames& frames, const FileHandle& source,
               TrackMedia& media) {
    media.handler = boxCode("vide");
    media.mediaHeader = MediaHeaders::video();
    media.entry = SampleEntries::video(track);
    const PictureShape::Size shown = PictureShape::shown(track);
    media.width = static_cast<std::uint32_t>(shown.width);
    media.height = static_cast<std::uint32_t>(shown.height);
    media.quarterTurns = PictureBoxes::quarterTurns(track);
    std::vector<std::int64_t> times;
    times.reserve(frames.timesNs.size());
    // The frames of a laced picture block are shown one after the other; there are no such files.
    for (const auto& time : frames.timesNs)
        times.push_back(time.value_or(times.empty() ? 0 : times.back()));
    media.times = VideoTimes::make(times, track.defaultDurationNs);
    media.sync = syncSamples(track, frames, source);
    media.allSync = media.sync.size() == frames.frames.sizes.size();
}

/// Kind, rate and length of Dolby's frames are told by the frames alone.
void fillDolby(const MKVTrack& track, const MatroskaFrames& frames, const FileHandle& source,
               TrackMedia& media, std::uint32_t& rate, std::uint32_t& frameLength) {
    constexpr std::size_t wholeSample = 65'536;
    std::optional<DolbySound::Description> found;
    if (!frames.frames.sizes.empty())
        found = DolbySound::describe(startOf(frames, 0, wholeSample, source));
    if (!found)
        throw MFError("track " + std::to_string(track.number) + " doesn't begin with a frame of " +
                      track.codecID);
    media.entry = found->entry;
    rate = found->rate;
    frameLength = found->frameLength;
}

/// An encoder's run-in stays in the track, and an edit keeps it from being heard.
void hideRunIn(const MKVTrack& track, const MatroskaFrames& frames, TrackTimes& times) {
    constexpr double second = 1e9;
    if (frames.timesNs.empty()) return;
    const std::int64_t cut = RunIn::of(track, frames.timesNs.front().value_or(0)).cutNs;
    const auto units = static_cast<std::uint64_t>(
        std::llround(static_cast<double>(cut) * times.timescale / second));
    if (units >= times.length) return;
    times.mediaStart = units;
    times.length -= units;
}

void fillSound(const MKVTrack& track, const MatroskaFrames& frames, const FileHandle& source,
               TrackMedia& media) {
    media.handler = boxCode("soun");
    media.mediaHeader = MediaHeaders::sound();
    std::uint32_t rate = 0;
    std::uint32_t frameLength = 0;
    if (track.codecID.starts_with("A_AAC")) {
        const SampleEntries::AACDescription aac = SampleEntries::aac(track);
        media.entry = aac.entry;
        rate = aac.rate;
        frameLength = aac.frameLength;
    } else if (track.codecID.starts_with("A_AC3") || track.codecID.starts_with("A_EAC3")) {
        fillDolby(track, frames, source, media, rate, frameLength);
    } else {
        throw MFError("track " + std::to_string(track.number) + " is " + track.codecID +
                      ", which this program doesn't copy");
    }
    media.times = SoundTimes::make(frames.timesNs, rate, frameLength);
    hideRunIn(track, frames, media.times);
}

}  // namespace

TrackMedia make(const MKVTrack& track, const MatroskaFrames& frames, const FileHandle& source) {
    constexpr int video = 1;
    TrackMedia media;
    if (track.type == video)
        fillVideo(track, frames, source, media);
    else
        fillSound(track, frames, source, media);
    media.frames = frames.frames;
    return media;
}

}  // namespace MatroskaMedia

namespace MediaHeaders {

Bytes video() {
    return Boxes::full(boxCode("vmhd"), 0, 1, {Boxes::u16s({0, 0, 0, 0})});
}

Bytes sound() {
    return Boxes::full(boxCode("smhd"), 0, 0, {Boxes::u16s({0, 0})});
}

Bytes subtitle() {
    return Boxes::full(boxCode("nmhd"), 0, 0, {});
}

Bytes chapters() {
    // QuickTime File Format: copying as it is, no colour, in the middle of both channels; and the
    // unity transformation of text.
    const Bytes general =
        Boxes::full(boxCode("gmin"), 0, 0, {Boxes::u16s({0x40, 0x8000, 0x8000, 0x8000, 0, 0})});
    return Boxes::box(boxCode("gmhd"), {general, Boxes::box(boxCode("text"), {Boxes::matrix()})});
}

}  // namespace MediaHeaders
}  // namespace marlet
