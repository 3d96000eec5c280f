#include "mp4/large_pages.h"

#include <sys/mman.h>

#include <cstdint>

namespace marlet {

namespace {

constexpr std::uintptr_t largePage = 2 * 1024 * 1024;

}  // namespace

void hintLargePages(void* memory, std::size_t bytes) {
    // Only pages that lie within as a whole, so that no more memory is held than was asked for.
    const auto begin = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t first = (begin + largePage - 1) & ~(largePage - 1);
    const std::uintptr_t last = (begin + bytes) & ~(largePage - 1);
    if (first >= last) return;
    static_cast<void>(::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE));
}

}  // namespace marlet
