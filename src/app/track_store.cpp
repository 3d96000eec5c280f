#include "app/track_store.h"

#include <algorithm>

#include "identify/asking.h"
#include "identify/scanner.h"

namespace marlet {

namespace {

bool isMP4(const std::filesystem::path& file) {
    const std::string extension = Scanner::extensionOf(file);
    return extension == "mp4" || extension == "m4v";
}

}  // namespace

TrackStore::~TrackStore() {
    life_.cancel();
}

Task<> TrackStore::load(Path file) {
    if (tracks_.contains(file) || !isMP4(file)) co_return;
    std::function<std::vector<InPlaceTrack>()> work = [file] { return InPlaceTracks::read(file); };
    auto reading = Asking::orCancelled(Async::onWorker(std::move(work)), life_);
    std::vector<InPlaceTrack> tracks = co_await reading;
    // A loading that ended earlier may hold ticks already.
    const bool isFirst = tracks_.try_emplace(file, std::move(tracks)).second;
    const auto wished = wishes_.extract(file);
    if (isFirst && wished)
        for (const int index : wished.mapped()) setKeep(file, index, false);
}

void TrackStore::wish(const Path& file, const std::vector<int>& dropped) {
    // What isn't an MP4 would never be read, and its wish never be looked at.
    if (dropped.empty() || !isMP4(file)) return;
    if (!tracks_.contains(file)) {
        wishes_.insert_or_assign(file, dropped);
        return;
    }
    for (const int index : dropped) setKeep(file, index, false);
}

void TrackStore::forget(const Path& file) {
    tracks_.erase(file);
    wishes_.erase(file);
}

const std::vector<InPlaceTrack>* TrackStore::find(const Path& file) const {
    const auto found = tracks_.find(file);
    return found == tracks_.end() ? nullptr : &found->second;
}

bool TrackStore::setKeep(const Path& file, int index, bool keep) {
    const auto found = tracks_.find(file);
    if (found == tracks_.end()) return false;
    const auto track = std::ranges::find(found->second, index, &InPlaceTrack::index);
    if (track == found->second.end()) return false;
    track->keep = keep;
    if (onTouched) onTouched(file);
    return true;
}

std::vector<int> TrackStore::dropped(const Path& file) const {
    if (const auto wished = wishes_.find(file); wished != wishes_.end()) return wished->second;
    std::vector<int> indices;
    if (const auto* tracks = find(file))
        for (const InPlaceTrack& track : *tracks)
            if (!track.keep) indices.push_back(track.index);
    return indices;
}

}  // namespace marlet
