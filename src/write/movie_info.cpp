// The property list of an `iTunMOVI` item: cast, directors and writers.
#include <plist/plist.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include "foundation/text.h"
#include "write/tag_builder.h"

namespace marlet::TagBuilder {

namespace {

constexpr std::array<const char*, 3> sectionKeys = {"cast", "directors", "screenwriters"};

constexpr std::string_view head =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n"
    "<dict>\n";
constexpr std::string_view tail =
    "</dict>\n"
    "</plist>\n";

/// The ampersand first, so that it doesn't escape the escapes.
std::string escaped(std::string text) {
    text = Text::replaceAll(std::move(text), "&", "&amp;");
    text = Text::replaceAll(std::move(text), "<", "&lt;");
    return Text::replaceAll(std::move(text), ">", "&gt;");
}

std::string section(const std::string& key, const std::vector<std::string>& names) {
    if (names.empty()) return {};
    std::string out = "\t<key>" + key + "</key>\n\t<array>\n";
    for (const std::string& name : names)
        out += "\t\t<dict>\n\t\t\t<key>name</key>\n\t\t\t<string>" + escaped(name) +
               "</string>\n\t\t</dict>\n";
    return out + "\t</array>\n";
}

struct FreeNode {
    void operator()(void* node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, FreeNode>;

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

std::size_t countOf(std::string_view text, std::string_view what) {
    std::size_t count = 0;
    for (auto at = text.find(what); at != text.npos; at = text.find(what, at + what.size()))
        count++;
    return count;
}

/// The parser's library walks its tree by recursion, so the text is held to what a real list can
/// have: one container a person, far below what a stack can take even if all were nested.
bool isReasonable(std::string_view text) {
    constexpr std::size_t mostBytes = 4 * 1024 * 1024;
    constexpr std::size_t mostContainers = 8192;
    return text.size() <= mostBytes &&
           countOf(text, "<dict") + countOf(text, "<array") <= mostContainers;
}

/// One step through a dictionary or an array; calls `visit(key, value)` until it gives false. The
/// key is null in an array.
template <typename Visit>
void eachItem(plist_t container, Visit visit) {
    const bool isDictionary = plist_get_node_type(container) == PLIST_DICT;
    void* position = nullptr;
    isDictionary ? plist_dict_new_iter(container, &position)
                 : plist_array_new_iter(container, &position);
    const std::unique_ptr<void, FreeMemory> owner(position);
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        if (isDictionary)
            plist_dict_next_item(container, position, &key, &value);
        else
            plist_array_next_item(container, position, &value);
        const std::unique_ptr<char, FreeMemory> keyOwner(key);
        if (value == nullptr || !visit(key, value)) return;
    }
}

/// Written out, every level indents all that it holds: a deep list would grow by its square.
bool isDeeperThan(plist_t node, int levels) {
    const plist_type type = plist_get_node_type(node);
    if (type != PLIST_DICT && type != PLIST_ARRAY) return false;
    if (levels == 0) return true;
    bool deeper = false;
    eachItem(node, [&](const char*, plist_t value) {
        deeper = isDeeperThan(value, levels - 1);
        return !deeper;
    });
    return deeper;
}

/// A dictionary, or null. Only the XML form: a binary list can't stand in a text item.
Node dictionaryFrom(const std::string& text) {
    constexpr int mostLevels = 32;
    if (!isReasonable(text)) return nullptr;
    plist_t parsed = nullptr;
    plist_from_xml(text.data(), static_cast<std::uint32_t>(text.size()), &parsed);
    Node node(parsed);
    const bool isUsable = node && plist_get_node_type(node.get()) == PLIST_DICT &&
                          !isDeeperThan(node.get(), mostLevels);
    return isUsable ? std::move(node) : nullptr;
}

std::vector<std::string> keysOfEmptyArrays(plist_t dictionary) {
    std::vector<std::string> keys;
    eachItem(dictionary, [&](const char* key, plist_t value) {
        if (plist_get_node_type(value) == PLIST_ARRAY && plist_array_get_size(value) == 0)
            keys.emplace_back(key);
        return true;
    });
    return keys;
}

std::optional<std::string> xmlOf(plist_t node) {
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(node, &text, &length);
    const std::unique_ptr<char, decltype(&plist_to_xml_free)> owner(text, &plist_to_xml_free);
    if (text == nullptr) return std::nullopt;
    return std::string(text, length);
}

std::vector<std::string> namesIn(plist_t dictionary, const char* key) {
    std::vector<std::string> names;
    plist_t list = plist_dict_get_item(dictionary, key);
    if (list == nullptr || plist_get_node_type(list) != PLIST_ARRAY) return names;
    eachItem(list, [&](const char*, plist_t person) {
        plist_t name = plist_get_node_type(person) == PLIST_DICT
                           ? plist_dict_get_item(person, "name")
                           : nullptr;
        if (name != nullptr && plist_get_node_type(name) == PLIST_STRING) {
            char* text = nullptr;
            plist_get_string_val(name, &text);
            const std::unique_ptr<char, FreeMemory> owner(text);
            if (text != nullptr && *text != 0) names.emplace_back(text);
        }
        return true;
    });
    return names;
}

}  // namespace

People people(const std::string& movieInfo) {
    const Node dictionary = dictionaryFrom(movieInfo);
    if (!dictionary) return {};
    return {namesIn(dictionary.get(), sectionKeys[0]), namesIn(dictionary.get(), sectionKeys[1]),
            namesIn(dictionary.get(), sectionKeys[2])};
}

std::optional<std::string> movieInfo(const Details& details) {
    const std::string sections = section(sectionKeys[0], details.cast) +
                                 section(sectionKeys[1], details.directors) +
                                 section(sectionKeys[2], details.writers);
    if (sections.empty()) return std::nullopt;
    return std::string(head) + sections + std::string(tail);
}

std::optional<std::string> mergeMovi(const std::string& old,
                                     const std::optional<std::string>& fresh) {
    const Node merged = dictionaryFrom(old);
    if (!merged) return std::nullopt;
    const Node ours = fresh ? dictionaryFrom(*fresh) : nullptr;
    for (const char* key : sectionKeys) {
        plist_t value = ours ? plist_dict_get_item(ours.get(), key) : nullptr;
        if (value != nullptr)
            plist_dict_set_item(merged.get(), key, plist_copy(value));
        else
            plist_dict_remove_item(merged.get(), key);
    }
    for (const std::string& key : keysOfEmptyArrays(merged.get()))
        plist_dict_remove_item(merged.get(), key.c_str());
    if (plist_dict_get_size(merged.get()) == 0) return std::nullopt;
    return xmlOf(merged.get());
}

}  // namespace marlet::TagBuilder
