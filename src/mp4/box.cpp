#include "mp4/box.h"

#include "mp4/box_cursor.h"

namespace marlet {

std::vector<Box> children(ByteView data, std::int64_t from, std::int64_t to) {
    std::vector<Box> boxes;
    BoxCursor cursor(data, from, to);
    while (const auto span = cursor.next()) boxes.push_back(toBox(data, *span));
    return boxes;
}

std::optional<Box> find(ByteView data, std::int64_t from, std::int64_t to,
                        std::initializer_list<std::string_view> path) {
    std::optional<BoxSpan> found;
    for (const std::string_view type : path) {
        const Bytes code = utf8ToLatin1(type);
        if (code.size() != 4) return std::nullopt;
        found = findSpan(data, from, to, BigEndian::u32(code, 0));
        if (!found) return std::nullopt;
        from = found->start;
        to = found->end;
    }
    if (!found) return std::nullopt;
    return toBox(data, *found);
}

}  // namespace marlet
