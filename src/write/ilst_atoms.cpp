#include "foundation/text.h"
#include "mp4/box.h"
#include "write/ilst_editor.h"

// Tag items as iTunes and QuickTime write them (QuickTime File Format, "Metadata"): an item box
// holds `data` boxes of a type word, a locale word and the value.
namespace marlet::IlstEditor {

const std::set<std::string> personal = {"apID", "ownr", "purd", "akID"};

namespace {

constexpr std::int64_t boxHeader = 8;
constexpr std::uint32_t typeUtf8 = 1;
constexpr std::uint32_t typeJpeg = 13;
constexpr std::uint32_t typePng = 14;
constexpr std::uint32_t typeInteger = 21;

Bytes dataBox(std::uint32_t type, ByteView value) {
    Bytes payload = be32(type);
    append(payload, be32(0));
    append(payload, value);
    return box("data", payload);
}

/// `mean` and `name` are full boxes: a version and flags word ahead of the text.
Bytes fullTextBox(const std::string& type, const std::string& value) {
    Bytes payload = be32(0);
    append(payload, viewOf(value));
    return box(type, payload);
}

std::optional<Box> childOf(const Atom& item, std::string_view type) {
    return find(item.bytes, boxHeader, static_cast<std::int64_t>(item.bytes.size()), {type});
}

/// The payload of a child from `skip` bytes on; empty when it is shorter.
ByteView payloadFrom(const Atom& item, const Box& child, std::int64_t skip) {
    return child.end - child.start > skip ? slice(item.bytes, child.start + skip, child.end)
                                          : ByteView{};
}

}  // namespace

Bytes be32(std::uint32_t value) {
    Bytes out;
    BigEndian::put32(out, value);
    return out;
}

Bytes box(const std::string& type, ByteView payload) {
    Bytes out;
    out.reserve(payload.size() + boxHeader);
    BigEndian::put32(out, static_cast<std::uint32_t>(payload.size() + boxHeader));
    append(out, utf8ToLatin1(type));
    append(out, payload);
    return out;
}

Bytes ilstBox(const std::vector<Atom>& atoms) {
    Bytes payload;
    for (const Atom& atom : atoms) append(payload, atom.bytes);
    return box("ilst", payload);
}

Atom text(const std::string& name, const std::string& value) {
    return {name, box(name, dataBox(typeUtf8, viewOf(value)))};
}

Atom integer(const std::string& name, std::int64_t value, int bytes) {
    Bytes number;
    for (int i = bytes - 1; i >= 0; i--)
        number.push_back(static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> (8 * i)));
    return {name, box(name, dataBox(typeInteger, number))};
}

Atom freeform(const std::string& name, const std::string& value) {
    Bytes payload = fullTextBox("mean", "com.apple.iTunes");
    append(payload, fullTextBox("name", name));
    append(payload, dataBox(typeUtf8, viewOf(value)));
    return {"----", box("----", payload)};
}

Atom covers(const std::vector<CoverImage>& list) {
    Bytes payload;
    for (const CoverImage& image : list)
        append(payload, dataBox(image.isPNG ? typePng : typeJpeg, image.data));
    return {"covr", box("covr", payload)};
}

std::vector<Atom> parse(ByteView ilstBox) {
    std::vector<Atom> atoms;
    for (const Box& item :
         children(ilstBox, boxHeader, static_cast<std::int64_t>(ilstBox.size()))) {
        const ByteView bytes = slice(ilstBox, item.boxStart, item.end);
        atoms.push_back({item.type, {bytes.begin(), bytes.end()}});
    }
    return atoms;
}

std::optional<std::string> textValue(const Atom& atom) {
    const auto data = childOf(atom, "data");
    const ByteView head = data ? payloadFrom(atom, *data, 0) : ByteView{};
    if (head.size() < 4 || (BigEndian::u32(head, 0) & 0xFFFFFF) != typeUtf8) return std::nullopt;
    return Text::repairUtf8(payloadFrom(atom, *data, 8));
}

std::optional<std::string> freeformName(const Atom& atom) {
    if (atom.name != "----") return std::nullopt;
    const auto name = childOf(atom, "name");
    if (!name) return std::nullopt;
    return Text::repairUtf8(payloadFrom(atom, *name, 4));
}

}  // namespace marlet::IlstEditor
