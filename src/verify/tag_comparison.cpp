#include <string_view>
#include <unordered_map>

#include "mp4/tag_values.h"
#include "verify/rebuild_verifier.h"

namespace marlet {

namespace {

std::string valueOf(const TagItem& item) {
    return describe(item.raw, item.key == "covr");
}

/// Items by a text, handed out in their order and each only once. A hostile tag block has hundreds
/// of thousands of items, so nothing is searched for twice.
class Unclaimed {
public:
    explicit Unclaimed(const std::vector<TagItem>& items) : items_(items), claimed_(items.size()) {
        // From the last to the first, so that the first lies at the end of its list.
        for (std::size_t i = items.size(); i-- > 0;) {
            byBytes_[textOfRaw(items[i])].push_back(i);
            byKey_[items[i].key].push_back(i);
        }
    }

    const TagItem* claimEqual(const TagItem& item) { return claim(byBytes_[textOfRaw(item)]); }
    const TagItem* claimSameKey(const TagItem& item) { return claim(byKey_[item.key]); }
    bool isClaimed(std::size_t i) const { return claimed_[i]; }

private:
    /// An item's key is made from its bytes, so equal bytes are equal items.
    static std::string_view textOfRaw(const TagItem& item) {
        return {reinterpret_cast<const char*>(item.raw.data()), item.raw.size()};
    }
    const TagItem* claim(std::vector<std::size_t>& list) {
        while (!list.empty()) {
            const std::size_t i = list.back();
            list.pop_back();
            if (claimed_[i]) continue;
            claimed_[i] = true;
            return &items_[i];
        }
        return nullptr;
    }

    const std::vector<TagItem>& items_;
    std::vector<bool> claimed_;
    std::unordered_map<std::string_view, std::vector<std::size_t>> byBytes_;
    std::unordered_map<std::string_view, std::vector<std::size_t>> byKey_;
};

}  // namespace

std::vector<std::string> compareTags(const std::vector<TagItem>& original,
                                     const std::vector<TagItem>& rebuilt) {
    std::vector<std::string> lines;
    Unclaimed others(rebuilt);
    for (const TagItem& item : original) {
        if (others.claimEqual(item) != nullptr) continue;
        if (const TagItem* changed = others.claimSameKey(item))
            lines.push_back(item.label + " differs: " + valueOf(item) + " vs " + valueOf(*changed));
        else
            lines.push_back(item.label + " missing in rebuilt file (original: " + valueOf(item) +
                            ")");
    }
    for (std::size_t i = 0; i < rebuilt.size(); i++)
        if (!others.isClaimed(i))
            lines.push_back(rebuilt[i].label + " added in rebuilt file: " + valueOf(rebuilt[i]));
    return lines;
}

}  // namespace marlet
