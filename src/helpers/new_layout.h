#pragma once

#include <cstdint>

#include "helpers/index_writer.h"
#include "helpers/movie_map.h"
#include "helpers/source_file.h"

namespace marlet {

/// All of the result that is known before a byte of it is written.
struct NewLayout {
    struct Places {
        std::uint64_t padding = 0;      ///< size of the `free` box behind the index
        std::uint64_t mediaHeader = 0;  ///< 8 or 16; 0 when the file has no `mdat`
        std::uint64_t mediaAt = 0;      ///< first byte of media data
        std::uint64_t mediaBytes = 0;
    };
    Places places;
    NewIndex index;
};

namespace NewLayouts {

/// `ftyp`, the index, padding, `mdat`. Chunk offsets get 64 bits where they need them or had them,
/// and so does the size of `mdat`.
NewLayout make(const SourceFile& file, const MovieMap& map, std::uint32_t sliceMilliseconds,
               std::uint32_t padding);

}  // namespace NewLayouts
}  // namespace marlet
