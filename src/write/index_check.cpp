#include "write/index_check.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "mp4/box.h"
#include "write/ilst_region.h"

namespace marlet {

namespace {

constexpr std::int64_t headerSize = 8;
/// `meta` is a full box: a version and flags word stands ahead of its children.
constexpr std::int64_t fullBoxWord = 4;

std::int64_t sizeOf(ByteView data) {
    return static_cast<std::int64_t>(data.size());
}

ByteView bytesOf(ByteView data, const Box& box) {
    return slice(data, box.boxStart, box.end);
}

std::string_view asText(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool isSame(ByteView a, ByteView b) {
    return std::ranges::equal(a, b);
}

/// One side of the comparison.
struct Index {
    ByteView moov;
    std::vector<Box> boxes;
    IlstEditor::TagPath tags;

    explicit Index(ByteView data)
        : moov(data),
          boxes(children(data, headerSize, sizeOf(data))),
          tags(IlstEditor::findTags(data)) {}

    /// What no child covers.
    ByteView tail() const {
        return slice(moov, boxes.empty() ? headerSize : boxes.back().end, sizeOf(moov));
    }
    std::vector<Box> udtaItems() const { return children(moov, tags.udta->start, tags.udta->end); }
    std::vector<Box> metaItems() const {
        return children(moov, tags.meta->start + fullBoxWord, tags.meta->end);
    }
};

class IndexComparison {
public:
    IndexComparison(ByteView original, ByteView candidate)
        : original_(original), candidate_(candidate) {}

    std::vector<std::string> reasons(const std::vector<Atom>& target) {
        compareStructure();
        compareBoxes();
        compareUdta();
        compareMeta();
        compareTags(target);
        return std::move(reasons_);
    }

private:
    void add(std::string reason) { reasons_.push_back(std::move(reason)); }

    /// A file without `udta` may have got one, as the last box.
    void compareStructure() {
        const std::size_t count = original_.boxes.size();
        const bool hasNewUdta = candidate_.boxes.size() == count + 1 &&
                                candidate_.boxes.back().type == "udta" && !original_.tags.udta;
        if ((candidate_.boxes.size() != count && !hasNewUdta) ||
            !isSame(original_.tail(), candidate_.tail()))
            add("the index boxes differ in structure");
    }

    void compareBoxes() {
        const std::size_t count = std::min(original_.boxes.size(), candidate_.boxes.size());
        for (std::size_t i = 0; i < count; i++) {
            const Box& box = original_.boxes[i];
            const Box& other = candidate_.boxes[i];
            if (box.type != other.type) return add("index box order differs");
            if (box.type != "udta" &&
                !isSame(bytesOf(original_.moov, box), bytesOf(candidate_.moov, other)))
                add("index box " + box.type + " differs");
        }
    }

    /// Each item but the excepted one must be among the candidate's, byte for byte.
    void requireItems(const std::vector<Box>& items, const std::vector<Box>& others,
                      const std::string& except, const std::string& what) {
        // A set, since a hostile box can hold a quarter of a million items.
        std::set<std::string_view> there;
        for (const Box& other : others) there.insert(asText(bytesOf(candidate_.moov, other)));
        for (const Box& item : items)
            if (item.type != except && !there.contains(asText(bytesOf(original_.moov, item))))
                add(what + " " + item.type + " differs");
    }

    void compareUdta() {
        if (!original_.tags.udta) return;
        requireItems(original_.udtaItems(),
                     candidate_.tags.udta ? candidate_.udtaItems() : std::vector<Box>{}, "meta",
                     "udta item");
    }

    void compareMeta() {
        if (!original_.tags.meta || !candidate_.tags.meta) return;
        const std::int64_t start = original_.tags.meta->start;
        const std::int64_t other = candidate_.tags.meta->start;
        if (!isSame(slice(original_.moov, start, start + fullBoxWord),
                    slice(candidate_.moov, other, other + fullBoxWord)))
            add("meta header differs");
        requireItems(original_.metaItems(), candidate_.metaItems(), "ilst", "meta item");
    }

    void compareTags(const std::vector<Atom>& target) {
        const auto& ilst = candidate_.tags.ilst;
        if (!ilst) return add("no tag block in the result");
        const std::vector<Atom> atoms = IlstEditor::parse(bytesOf(candidate_.moov, *ilst));
        if (atoms != target) add("the tag block isn't exactly the intended one");
        const auto isPersonal = [](const Atom& atom) {
            return IlstEditor::personal.contains(atom.name);
        };
        // An account tag that was meant to be there is the file's own, or the last test would
        // have failed.
        if (std::ranges::none_of(target, isPersonal) && std::ranges::any_of(atoms, isPersonal))
            add("an account tag is present");
    }

    Index original_;
    Index candidate_;
    std::vector<std::string> reasons_;
};

}  // namespace

std::vector<std::string> compareIndexes(ByteView original, ByteView candidate,
                                        const std::vector<Atom>& target) {
    return IndexComparison(original, candidate).reasons(target);
}

}  // namespace marlet
