#include "helpers/raw_box.h"

#include "foundation/errors.h"

namespace marlet {

namespace {

[[noreturn]] void failLying() {
    throw MFError("a box of the index runs past its end");
}

}  // namespace

StrictBoxes::StrictBoxes(ByteView data, std::size_t from, std::size_t to)
    : data_(data), pos_(from), to_(to) {
    if (from > to || to > data.size()) failLying();
}

std::optional<RawBox> StrictBoxes::next() {
    const std::size_t left = to_ - pos_;
    if (left < 8) return std::nullopt;
    const auto at = static_cast<std::int64_t>(pos_);
    RawBox box{BigEndian::u32(data_, at + 4), pos_, pos_ + 8, 0};
    std::uint64_t size = BigEndian::u32(data_, at);
    if (size == 1) {
        if (left < 16) failLying();
        size = BigEndian::u64(data_, at + 8);
        box.start = pos_ + 16;
    } else if (size == 0) {
        size = left;
    }
    if (size < box.start - box.at || size > left) failLying();
    box.end = pos_ + static_cast<std::size_t>(size);
    pos_ = box.end;
    return box;
}

namespace RawBoxes {

std::optional<RawBox> only(ByteView data, const RawBox& parent, BoxCode type) {
    std::optional<RawBox> found;
    StrictBoxes boxes(data, parent);
    while (const auto box = boxes.next()) {
        if (box->code != type) continue;
        if (found) throw MFError("the index has two \"" + name(type) + "\" boxes in one place");
        found = box;
    }
    return found;
}

std::optional<RawBox> only(ByteView data, const RawBox& parent,
                           std::initializer_list<BoxCode> path) {
    std::optional<RawBox> box = parent;
    for (const BoxCode type : path) {
        if (box) box = only(data, *box, type);
    }
    return box;
}

std::string name(BoxCode code) {
    std::string text;
    for (const int shift : {24, 16, 8, 0}) {
        const auto byte = static_cast<char>(code >> shift & 0xFF);
        text.push_back(byte >= ' ' && byte <= '~' ? byte : '.');
    }
    return text;
}

}  // namespace RawBoxes
}  // namespace marlet
