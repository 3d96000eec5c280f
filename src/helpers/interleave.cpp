#include "helpers/interleave.h"

namespace marlet {

Interleave::Interleave(const MovieMap& map, std::uint32_t sliceMilliseconds) : map_(&map) {
    states_.reserve(map.tracks.size());
    for (const MappedTrack& track : map.tracks) {
        State& state = states_.emplace_back(State{SliceCursor(track, sliceMilliseconds), {}});
        state.piece = state.cursor.next();
        if (state.piece) turns_.push({state.piece->slice, states_.size() - 1});
    }
}

std::uint32_t Interleave::gapAhead(std::size_t track, const Piece& piece) const {
    const State& state = states_[track];
    const bool goesOn = state.begun && state.end == at_ && state.lastSlice != piece.slice;
    return goesOn && map_->tracks[track].isSound ? gapBytes : 0;
}

std::optional<PlacedPiece> Interleave::next() {
    if (turns_.empty()) return std::nullopt;
    const std::size_t track = turns_.top().track;
    State& state = states_[track];
    PlacedPiece placed{*state.piece, track, at_, gapAhead(track, *state.piece)};
    placed.at += placed.gap;
    at_ = placed.at + placed.piece.bytes;
    state.begun = true;
    state.end = at_;
    state.lastSlice = placed.piece.slice;
    state.piece = state.cursor.next();
    // A track keeps its turn for all of its slice: nothing else may come between.
    if (!state.piece || state.piece->slice != placed.piece.slice) {
        turns_.pop();
        if (state.piece) turns_.push({state.piece->slice, track});
    }
    return placed;
}

}  // namespace marlet
