#include "helpers/index_writer.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <set>
#include <utility>

#include "foundation/errors.h"
#include "helpers/interleave.h"
#include "helpers/removed_tracks.h"

namespace marlet::IndexWriter {

namespace {

void store32(std::uint8_t* at, std::uint32_t value) {
    for (int i = 0; i < 4; i++) at[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}

void store64(std::uint8_t* at, std::uint64_t value) {
    store32(at, static_cast<std::uint32_t>(value >> 32));
    store32(at + 4, static_cast<std::uint32_t>(value));
}

/// Writes boxes behind each other; one index at a time.
class Writer {
public:
    Writer(ByteView moov, const MovieMap& map, const LayoutPlan& plan,
           const std::vector<bool>& wide)
        : moov_(moov), map_(map), plan_(plan), wide_(wide), gone_(RemovedTracks::ids(moov, map)) {}

    NewIndex write() {
        index_.offsets.resize(map_.tracks.size());
        index_.moov.reserve(moov_.size() + newTables());
        container(map_.root, [this](const RawBox& child) { return movieBox(child); });
        return std::move(index_);
    }

private:
    /// Bytes of the new chunk tables at most: growing step by step would cost the index once more.
    std::size_t newTables() const {
        std::size_t bytes = 0;
        for (const PlannedTrack& track : plan_.tracks)
            bytes += 32 + track.rows.size() * 12 + std::size_t{track.chunks} * 8;
        return bytes;
    }

    /// True when it wrote the box, or left it out; false when it is to be copied.
    using Change = std::function<bool(const RawBox& child)>;

    void copy(std::size_t from, std::size_t to) {
        append(index_.moov, moov_.subspan(from, to - from));
    }

    /// The box with its header's form, its children changed where `change` says so, and the bytes
    /// behind the last one.
    void container(const RawBox& box, const Change& change) {
        const std::size_t at = index_.moov.size();
        copy(box.at, box.start);
        StrictBoxes boxes(moov_, box);
        while (const auto child = boxes.next())
            if (!change(*child)) copy(child->at, child->end);
        copy(boxes.rest(), box.end);
        setSize(at, box.start - box.at);
    }

    void setSize(std::size_t at, std::size_t header) {
        const std::uint64_t size = index_.moov.size() - at;
        if (header == 16) return store64(&index_.moov[at + 8], size);
        if (size > std::numeric_limits<std::uint32_t>::max()) throw MFError("moov too large");
        store32(&index_.moov[at], static_cast<std::uint32_t>(size));
    }

    bool movieBox(const RawBox& box) {
        if (box.code == boxCode("mvhd") && !gone_.empty()) {
            const std::size_t at = index_.moov.size();
            copy(box.at, box.end);
            RemovedTracks::shortenMovie(moov_, map_, index_.moov, at);
            return true;
        }
        if (box.code != boxCode("trak")) return false;
        // Both lists are in the order of the file.
        if (removed_ < map_.removedTracks.size() && map_.removedTracks[removed_] == box) {
            removed_++;
            return true;
        }
        container(box, [this](const RawBox& child) { return trackBox(child); });
        track_++;
        return true;
    }

    bool trackBox(const RawBox& box) {
        if (box.code == boxCode("tref") && !gone_.empty()) {
            append(index_.moov, RemovedTracks::withoutReferences(moov_, box, gone_));
            return true;
        }
        if (box.code != boxCode("mdia") || !map_.tracks[track_].stbl) return false;
        container(box, [this](const RawBox& child) { return mediaBox(child); });
        return true;
    }

    bool mediaBox(const RawBox& box) {
        if (box.code != boxCode("minf")) return false;
        container(box, [this](const RawBox& child) {
            if (child.code != boxCode("stbl")) return false;
            container(child, [this](const RawBox& table) { return tableBox(table); });
            return true;
        });
        return true;
    }

    bool tableBox(const RawBox& box) {
        if (box.code == boxCode("stsc")) {
            writeRows(box);
            return true;
        }
        if (box.code == boxCode("stco") || box.code == boxCode("co64")) {
            writeOffsets(box);
            return true;
        }
        return false;
    }

    /// Header, the old table's version and flags, and the number of rows.
    void tableHead(BoxCode code, const RawBox& old, std::size_t rows, std::size_t width) {
        const std::uint64_t size = 16 + std::uint64_t{rows} * width;
        if (size > std::numeric_limits<std::uint32_t>::max()) throw MFError("moov too large");
        BigEndian::put32(index_.moov, static_cast<std::uint32_t>(size));
        BigEndian::put32(index_.moov, code);
        copy(old.start, old.start + 4);
        BigEndian::put32(index_.moov, static_cast<std::uint32_t>(rows));
    }

    void writeRows(const RawBox& stsc) {
        const std::vector<ChunkRow>& rows = plan_.tracks[track_].rows;
        tableHead(stsc.code, stsc, rows.size(), 12);
        for (const ChunkRow& row : rows)
            for (const std::uint32_t value : {row.firstChunk, row.samples, row.description})
                BigEndian::put32(index_.moov, value);
    }

    void writeOffsets(const RawBox& old) {
        const bool wide = wide_[track_];
        const std::size_t width = wide ? 8 : 4;
        const std::size_t chunks = plan_.tracks[track_].chunks;
        tableHead(wide ? boxCode("co64") : boxCode("stco"), old, chunks, width);
        index_.offsets[track_] = {index_.moov.size(), wide};
        index_.moov.resize(index_.moov.size() + chunks * width);
    }

    ByteView moov_;
    const MovieMap& map_;
    const LayoutPlan& plan_;
    const std::vector<bool>& wide_;
    std::set<std::uint32_t> gone_;
    NewIndex index_;
    std::size_t track_ = 0;
    std::size_t removed_ = 0;
};

}  // namespace

NewIndex write(ByteView moov, const MovieMap& map, const LayoutPlan& plan,
               const std::vector<bool>& wide) {
    return Writer(moov, map, plan, wide).write();
}

void fillOffsets(NewIndex& index, const MovieMap& map, std::uint32_t sliceMilliseconds,
                 std::uint64_t base) {
    std::vector<std::size_t> at;
    for (const NewIndex::Offsets& table : index.offsets) at.push_back(table.at);
    Interleave pieces(map, sliceMilliseconds);
    while (const auto placed = pieces.next()) {
        if (!placed->piece.beginsChunk) continue;
        std::uint8_t* row = index.moov.data() + at[placed->track];
        const bool wide = index.offsets[placed->track].wide;
        if (wide)
            store64(row, base + placed->at);
        else
            store32(row, static_cast<std::uint32_t>(base + placed->at));
        at[placed->track] += wide ? 8 : 4;
    }
}

}  // namespace marlet::IndexWriter
