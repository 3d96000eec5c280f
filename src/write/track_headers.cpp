#include "write/track_headers.h"

#include <fcntl.h>

#include <algorithm>
#include <set>

#include "foundation/errors.h"
#include "foundation/languages.h"
#include "foundation/syscalls.h"
#include "foundation/text.h"
#include "mp4/box_cursor.h"
#include "mp4/sample_entry.h"
#include "mp4/track_parser.h"
#include "write/index_in_file.h"
#include "write/media_language.h"
#include "write/stream_descriptor.h"

namespace marlet::TrackHeaders {

namespace fs = std::filesystem;

namespace {

/// A field of fixed size; empty when its box is too short for it.
struct Field {
    std::uint64_t at = 0;  ///< in the file
    Bytes bytes;
};

/// What is put back of `tkhd` or `mdhd`.
struct Header {
    std::int64_t length = 0;  ///< of the payload
    std::uint8_t version = 0;
    Field dates;     ///< creation and modification
    Field language;  ///< `mdhd` only
};

struct StreamID {
    std::size_t entry = 0;  ///< place of its sample entry
    BoxCode type = 0;
    Field id;
};

struct TrackFields {
    std::optional<Header> track;
    std::optional<Header> media;
    std::vector<StreamID> streamIDs;
};

struct Patch {
    Bytes bytes;
    std::uint64_t at = 0;
    std::size_t number = 0;  ///< of the track in the file that is patched, from 1
    std::string what;

    std::string label() const { return "track " + std::to_string(number) + " " + what; }
};

Field fieldAt(const IndexInFile& index, const BoxSpan& box, std::int64_t offset,
              std::int64_t length) {
    const std::int64_t at = box.start + offset;
    Field field{index.fileOffset(at), {}};
    if (box.end - at >= length) {
        const ByteView bytes = slice(index.payload, at, at + length);
        field.bytes.assign(bytes.begin(), bytes.end());
    }
    return field;
}

/// ISO/IEC 14496-12, 8.3.2 and 8.4.2: the dates stand first, with 32 or 64 bits each.
Header headerOf(const IndexInFile& index, const BoxSpan& box) {
    Header header;
    header.length = box.end - box.start;
    header.version = boxVersion(index.payload, box);
    header.dates = fieldAt(index, box, 4, header.version == 1 ? 16 : 8);
    return header;
}

Header mediaHeaderOf(const IndexInFile& index, const BoxSpan& box) {
    Header header = headerOf(index, box);
    header.language = fieldAt(index, box, header.version == 1 ? 32 : 20, 2);
    return header;
}

std::vector<StreamID> streamIDsOf(const IndexInFile& index, const BoxSpan& stsd) {
    // A track of the media tool's has one; what claims thousands is meant to exhaust memory.
    constexpr std::size_t mostEntries = 256;
    std::vector<StreamID> ids;
    const ByteView payload = slice(index.payload, stsd.start, stsd.end);
    const SampleEntries parts = sampleEntries(payload);
    for (std::size_t i = 0; i < std::min(parts.entries.size(), mostEntries); i++) {
        const BoxSpan& entry = parts.entries[i];
        const auto esds = descriptorOf(payload, parts.version(), entry);
        const auto place = esds ? streamIDPlace(payload, *esds) : std::nullopt;
        if (place) ids.push_back({i, entry.code, fieldAt(index, stsd, *place, 2)});
    }
    return ids;
}

TrackFields fieldsOf(const IndexInFile& index, const BoxSpan& trak) {
    TrackFields fields;
    const ByteView moov = index.payload;
    if (const auto tkhd = findSpan(moov, trak, {boxCode("tkhd")}))
        fields.track = headerOf(index, *tkhd);
    if (const auto mdhd = findSpan(moov, trak, {boxCode("mdia"), boxCode("mdhd")}))
        fields.media = mediaHeaderOf(index, *mdhd);
    if (const auto stsd = findSpan(
            moov, trak, {boxCode("mdia"), boxCode("minf"), boxCode("stbl"), boxCode("stsd")}))
        fields.streamIDs = streamIDsOf(index, *stsd);
    return fields;
}

/// One file's fields, so that only one index is in memory at a time.
std::vector<TrackFields> fieldsOf(const fs::path& file) {
    std::vector<TrackFields> tracks;
    const auto index = readIndex(file);
    if (!index) return tracks;
    BoxCursor cursor(index->payload, 0, static_cast<std::int64_t>(index->payload.size()));
    while (const auto box = cursor.next())
        if (box->code == boxCode("trak")) tracks.push_back(fieldsOf(*index, *box));
    return tracks;
}

bool differs(const Field& before, const Field& after) {
    return !before.bytes.empty() && before.bytes.size() == after.bytes.size() &&
           before.bytes != after.bytes;
}

std::string languageName(const Field& language) {
    return Lang::name(knownLanguage(BigEndian::u16(language.bytes, 0)));
}

/// Collects what has to be written for one pair of tracks.
class Comparison {
public:
    Comparison(std::size_t number, std::vector<Patch>& patches)
        : number_(number), patches_(patches) {}

    void compare(const TrackFields& before, const TrackFields& after) {
        if (isAlike(before.track, after.track))
            compare(before.track->dates, after.track->dates, "track modification date");
        if (isAlike(before.media, after.media)) {
            compare(before.media->dates, after.media->dates, "media dates");
            compareLanguages(before.media->language, after.media->language);
        }
        for (const StreamID& stream : before.streamIDs) compareID(stream, after.streamIDs);
    }

private:
    /// Fields stand at the same places only in boxes of one version and length.
    static bool isAlike(const std::optional<Header>& before, const std::optional<Header>& after) {
        return before && after && before->length == after->length &&
               before->version == after->version;
    }

    void compare(const Field& before, const Field& after, const std::string& what) {
        if (differs(before, after)) patches_.push_back({before.bytes, after.at, number_, what});
    }

    void compareLanguages(const Field& before, const Field& after) {
        if (!differs(before, after)) return;
        compare(
            before, after,
            "language (" + languageName(before) + ", MP4Box wrote " + languageName(after) + ")");
    }

    void compareID(const StreamID& stream, const std::vector<StreamID>& rebuilt) {
        const auto other = std::ranges::find(rebuilt, stream.entry, &StreamID::entry);
        if (other != rebuilt.end() && other->type == stream.type)
            compare(stream.id, other->id, "stream id");
    }

    const std::size_t number_;
    std::vector<Patch>& patches_;
};

/// The original's tracks in the candidate's order; nothing when they can't be told.
std::optional<std::vector<std::size_t>> partners(std::size_t originals, std::size_t candidates,
                                                 const std::optional<std::vector<int>>& keep) {
    std::vector<std::size_t> list;
    if (keep) {
        for (const int index : *keep) list.push_back(static_cast<std::size_t>(index));
    } else {
        for (std::size_t i = 0; i < originals; i++) list.push_back(i);
    }
    const bool isThere =
        std::ranges::all_of(list, [&](std::size_t index) { return index < originals; });
    if (!isThere || list.size() != candidates) return std::nullopt;
    return list;
}

std::vector<Patch> patchesFor(const fs::path& original, const fs::path& candidate,
                              const std::optional<std::vector<int>>& keep) {
    const std::vector<TrackFields> before = fieldsOf(original);
    const std::vector<TrackFields> after = fieldsOf(candidate);
    std::vector<Patch> patches;
    const auto pairs = partners(before.size(), after.size(), keep);
    if (!pairs) return patches;
    for (std::size_t i = 0; i < after.size(); i++)
        Comparison(i + 1, patches).compare(before[(*pairs)[i]], after[i]);
    return patches;
}

void write(const std::vector<Patch>& patches, const fs::path& candidate) {
    const FileHandle file = FileHandle::open(
        candidate, O_WRONLY, "cannot open the rebuilt file to restore header fields");
    for (const Patch& patch : patches) {
        const ssize_t written =
            Sys::pwrite(file.get(), patch.bytes.data(), patch.bytes.size(), patch.at);
        if (written != static_cast<ssize_t>(patch.bytes.size()))
            throw MFError("could not restore " + patch.label());
    }
    if (Sys::fsync(file.get()) != 0) failWithErrno("could not restore header fields");
}

}  // namespace

std::vector<std::string> restore(const fs::path& original, const fs::path& candidate,
                                 const std::optional<std::vector<int>>& keep) {
    const std::vector<Patch> patches = patchesFor(original, candidate, keep);
    if (patches.empty()) return {};
    write(patches, candidate);
    std::set<std::string> restored;
    for (const Patch& patch : patches) restored.insert(patch.what);
    return {"restored " + Text::join({restored.begin(), restored.end()}, ", ")};
}

}  // namespace marlet::TrackHeaders
