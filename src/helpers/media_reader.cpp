#include "helpers/media_reader.h"

#include <algorithm>
#include <numeric>

#include "foundation/errors.h"
#include "foundation/file_ops.h"

namespace marlet {

namespace {

constexpr std::uint64_t largestWindow = std::uint64_t{16} << 20;
constexpr std::uint64_t smallestWindow = std::uint64_t{256} << 10;
constexpr std::uint64_t dropStep = std::uint64_t{16} << 20;

}  // namespace

MediaReader::MediaReader(const SourceFile& file, const std::vector<std::uint64_t>& shares)
    : file_(file), keptBehind_(std::max(largestWindow, Sys::cacheShare())) {
    const double all = std::accumulate(shares.begin(), shares.end(), 1.0);
    for (const std::uint64_t share : shares) {
        const double fair = static_cast<double>(largestWindow) * static_cast<double>(share) / all;
        windows_.push_back({std::max(smallestWindow, static_cast<std::uint64_t>(fair))});
    }
}

void MediaReader::expect(std::size_t reader, std::uint64_t at, std::uint64_t bytes) {
    Window& window = windows_[reader];
    // Only going on from the last place is foreseen; a jump starts anew.
    if (at < window.kept || at > window.asked) window.asked = window.kept = at;
    window.read = at + bytes;
    const std::uint64_t wanted = std::min(at + bytes + window.size, file_.size);
    if (window.asked + window.size / 2 <= wanted) {
        Sys::readAhead(file_.handle.get(), window.asked, wanted - window.asked);
        window.asked = wanted;
    }
}

void MediaReader::read(std::size_t reader, std::span<std::uint8_t> part, std::uint64_t at) {
    if (FileOps::readFull(file_.handle.get(), part, at) != part.size())
        throw MFError("the file became shorter while it was read");
    Window& window = windows_[reader];
    // A window's length stays at least: another track's data may lie there and be read next. Most
    // films stay whole, since their proof reads them once more.
    while (at > window.kept + dropStep + keptBehind_) {
        Sys::dropCache(file_.handle.get(), window.kept, dropStep);
        window.kept += dropStep;
    }
}

}  // namespace marlet
