#include <algorithm>

#include "verify/rebuild_verifier.h"

namespace marlet {

namespace {

bool isSame(const Chapter& a, const Chapter& b) {
    constexpr std::int64_t tolerance = 10;  // ms: time scales differ between a list and a track
    return std::abs(a.ms - b.ms) <= tolerance && a.title == b.title;
}

}  // namespace

bool chaptersMatch(const std::vector<Chapter>& a, const std::vector<Chapter>& b) {
    return std::ranges::equal(a, b, isSame);
}

}  // namespace marlet
