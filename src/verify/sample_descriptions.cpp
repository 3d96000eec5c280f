#include "verify/sample_descriptions.h"

#include <algorithm>
#include <array>
#include <map>

#include "mp4/sample_entry.h"

namespace marlet {

namespace {

using Reasons = std::vector<std::string>;

/// One sample entry of a payload, in the parts that are judged one by one.
struct Entry {
    std::string type;
    ByteView bytes;                  ///< the whole entry
    std::optional<ByteView> fields;  ///< the fixed fields; nothing for an unknown layout
    std::vector<BoxSpan> children;
    ByteView tail;  ///< what stands behind the last child
};

ByteView bytesOf(ByteView payload, const BoxSpan& box) {
    return slice(payload, box.boxStart, box.end);
}
ByteView contentOf(ByteView payload, const BoxSpan& box) {
    return slice(payload, box.start, box.end);
}
std::string typeOf(ByteView payload, const BoxSpan& box) {
    return BigEndian::fourCC(payload, box.boxStart + 4);
}

bool isSame(ByteView a, ByteView b) {
    return std::ranges::equal(a, b);
}

Entry entryOf(ByteView payload, int version, const BoxSpan& box) {
    Entry entry;
    entry.type = typeOf(payload, box);
    entry.bytes = bytesOf(payload, box);
    const auto length = fixedFieldsLength(payload, version, box);
    if (!length) return entry;
    entry.fields = slice(payload, box.start, box.start + *length);
    std::int64_t walked = box.start + *length;
    BoxCursor cursor(payload, walked, box.end);
    while (const auto child = cursor.next()) {
        entry.children.push_back(*child);
        walked = child->end;
    }
    entry.tail = slice(payload, walked, box.end);
    return entry;
}

/// QuickTime ends the list of an entry's boxes with a size of 0 that may be left out: too short for
/// a box, and without a meaning for a decoder.
bool isTerminator(ByteView tail) {
    return tail.size() < 8 &&
           std::ranges::all_of(tail, [](std::uint8_t byte) { return byte == 0; });
}

struct Rewrite {
    BoxCode type;
    Reasons (*compare)(ByteView original, ByteView rebuilt);
};

/// The boxes that the media tool rewrites, and what proves that the meaning stayed.
constexpr std::array<Rewrite, 3> rewrites = {{
    {boxCode("esds"), compareESDS},
    {boxCode("avcC"), compareAVCC},
    {boxCode("hvcC"), compareHVCC},
}};

/// Two payloads whose entries are being compared.
struct Pair {
    ByteView original;
    ByteView rebuilt;
};

Reasons compareChild(const Pair& pair, const std::string& type, const BoxSpan& original,
                     const BoxSpan& rebuilt) {
    if (isSame(bytesOf(pair.original, original), bytesOf(pair.rebuilt, rebuilt))) return {};
    const auto* const known = std::ranges::find(rewrites, original.code, &Rewrite::type);
    if (known != rewrites.end())
        return known->compare(contentOf(pair.original, original), contentOf(pair.rebuilt, rebuilt));
    return {type + ": box '" + typeOf(pair.original, original) + "' differs"};
}

std::string extraBox(ByteView payload, const std::string& type, const BoxSpan& child) {
    // A box of such a length is no field that a tool adds; its bytes would only fill memory.
    constexpr std::size_t longestShown = 65'536;
    const ByteView bytes = bytesOf(payload, child);
    const std::string hex = toHex(bytes.first(std::min(bytes.size(), longestShown)));
    return type + ": extra box '" + typeOf(payload, child) + "' in rebuilt file (" +
           std::to_string(bytes.size()) + " bytes: " + hex +
           (bytes.size() > longestShown ? "…)" : ")");
}

/// Boxes of one type in both entries are paired in the order in which they stand; their order among
/// boxes of other types means nothing.
Reasons compareChildren(const Pair& pair, const Entry& original, const Entry& rebuilt) {
    std::map<BoxCode, std::vector<std::size_t>> unused;  // the next one last
    for (std::size_t i = rebuilt.children.size(); i-- > 0;)
        unused[rebuilt.children[i].code].push_back(i);

    for (const BoxSpan& child : original.children) {
        auto& candidates = unused[child.code];
        if (candidates.empty())
            return {original.type + ": box '" + typeOf(pair.original, child) +
                    "' missing in rebuilt file"};
        const BoxSpan& other = rebuilt.children[candidates.back()];
        candidates.pop_back();
        if (Reasons reasons = compareChild(pair, original.type, child, other); !reasons.empty())
            return reasons;
    }
    const BoxSpan* firstLeft = nullptr;
    for (const auto& [code, left] : unused)
        if (!left.empty() && (firstLeft == nullptr || &rebuilt.children[left.back()] < firstLeft))
            firstLeft = &rebuilt.children[left.back()];
    if (firstLeft == nullptr) return {};
    return {extraBox(pair.rebuilt, original.type, *firstLeft)};
}

Reasons compareEntries(const Pair& pair, const Entry& original, const Entry& rebuilt) {
    if (isSame(original.bytes, rebuilt.bytes)) return {};
    if (original.type != rebuilt.type)
        return {"sample entry type differs (" + original.type + " vs " + rebuilt.type + ")"};
    if (!original.fields || !rebuilt.fields) return {original.type + " sample entry differs"};
    if (!isSame(*original.fields, *rebuilt.fields))
        return {original.type + " sample entry header fields differ"};
    if (Reasons reasons = compareChildren(pair, original, rebuilt); !reasons.empty())
        return reasons;
    const bool areEnds = isTerminator(original.tail) && isTerminator(rebuilt.tail);
    if (!areEnds && !isSame(original.tail, rebuilt.tail))
        return {original.type + ": bytes behind its boxes differ"};
    return {};
}

std::string countDiffers(std::size_t original, std::size_t rebuilt) {
    return "sample description count differs (" + std::to_string(original) + " vs " +
           std::to_string(rebuilt) + ")";
}

/// What both payloads hold besides their entries.
Reasons compareFrames(const SampleEntries& original, const SampleEntries& rebuilt) {
    if (original.entries.size() != rebuilt.entries.size())
        return {countDiffers(original.entries.size(), rebuilt.entries.size())};
    if (original.statedCount() != rebuilt.statedCount())
        return {countDiffers(original.statedCount(), rebuilt.statedCount())};
    if (!isSame(original.header, rebuilt.header)) return {"sample description version differs"};
    if (!isSame(original.tail, rebuilt.tail))
        return {"bytes behind the sample descriptions differ"};
    return {};
}

}  // namespace

std::vector<std::string> compareSampleDescriptions(ByteView original, ByteView rebuilt) {
    if (isSame(original, rebuilt)) return {};
    const SampleEntries before = sampleEntries(original);
    const SampleEntries after = sampleEntries(rebuilt);
    if (Reasons reasons = compareFrames(before, after); !reasons.empty()) return reasons;
    for (std::size_t i = 0; i < before.entries.size(); i++) {
        Reasons reasons = compareEntries({original, rebuilt},
                                         entryOf(original, before.version(), before.entries[i]),
                                         entryOf(rebuilt, after.version(), after.entries[i]));
        if (!reasons.empty()) return reasons;
    }
    return {};
}

}  // namespace marlet
