#pragma once

#include <cstdint>
#include <optional>

#include "foundation/bytes.h"
#include "mp4/box_cursor.h"

namespace marlet {

/// One entry of an edit list (ISO/IEC 14496-12, 8.6.6).
struct Edit {
    std::uint64_t duration = 0;  ///< units of the movie
    std::int64_t mediaTime = 0;  ///< units of the media; negative for an empty edit
    std::int64_t at = 0;         ///< where its duration stands; its media time stands behind that
    int width = 4;               ///< bytes of each of the two
};

/// Walks a track's edit list, allocating nothing; of a track without one there is nothing.
class EditCursor {
public:
    EditCursor(ByteView data, const BoxSpan& trak);

    bool hasList() const { return hasList_; }
    /// Nothing behind the last entry that lies in the box.
    std::optional<Edit> next();

private:
    ByteView data_;
    bool hasList_ = false;
    bool isWide_ = false;
    std::uint32_t left_ = 0;
    std::int64_t at_ = 0;
    std::int64_t end_ = 0;
};

}  // namespace marlet
