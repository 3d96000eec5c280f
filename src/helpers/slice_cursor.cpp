#include "helpers/slice_cursor.h"

namespace marlet {

namespace {

__extension__ using Wide = __int128;

Wide floorDivide(Wide value, Wide by) {
    return value >= 0 ? value / by : -((-value + by - 1) / by);
}

}  // namespace

SliceCursor::SliceCursor(const MappedTrack& track, std::uint32_t sliceMilliseconds)
    : chunks_(track.tables),
      times_(track.tables),
      tables_(&track.tables),
      scale_(std::int64_t{track.timescale} * sliceMilliseconds),
      time_(track.start) {
    enterSlice();
    chunk_ = chunks_.next();
}

// Slice n holds the times from n * scale / 1000 on. Times stay within 62 bits: a start of at most
// 10^18 units, and 2^27 samples of less than 2^31.
void SliceCursor::enterSlice() {
    slice_ = static_cast<std::int64_t>(floorDivide(Wide{time_} * 1000, scale_));
    sliceEnd_ = static_cast<std::int64_t>(-floorDivide(-(Wide{slice_} + 1) * scale_, 1000));
}

std::optional<Piece> SliceCursor::next() {
    while (chunk_ && taken_ == chunk_->samples) {
        chunk_ = chunks_.next();
        taken_ = 0;
        bytesTaken_ = 0;
    }
    if (!chunk_) return std::nullopt;
    Piece piece{slice_, chunk_->offset + bytesTaken_, 0, 0, chunk_->description, false};
    while (taken_ < chunk_->samples && time_ < sliceEnd_) {
        piece.bytes += tables_->sizeOf(chunk_->firstSample + taken_);
        piece.samples++;
        taken_++;
        time_ += times_.next();
    }
    bytesTaken_ += piece.bytes;
    piece.beginsChunk =
        !begun_ || piece.slice != lastSlice_ || piece.description != lastDescription_;
    begun_ = true;
    lastSlice_ = piece.slice;
    lastDescription_ = piece.description;
    if (time_ >= sliceEnd_) enterSlice();
    return piece;
}

}  // namespace marlet
