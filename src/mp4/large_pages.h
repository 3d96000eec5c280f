#pragma once

#include <cstddef>
#include <vector>

namespace marlet {

/// Asks the kernel to back the memory with large pages, where it holds whole ones: filling a long
/// table page by page costs more than reading it. A hint; without it nothing else changes.
void hintLargePages(void* memory, std::size_t bytes);

/// Room for that many values, so hinted. Nothing is touched yet.
template <typename Value>
void reserveLarge(std::vector<Value>& values, std::size_t count) {
    values.reserve(count);
    hintLargePages(values.data(), values.capacity() * sizeof(Value));
}

}  // namespace marlet
