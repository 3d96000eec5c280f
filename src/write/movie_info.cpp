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

/// A dictionary, or null. Only the XML form: a binary list can't stand in a text item.
Node dictionaryFrom(const std::string& text) {
    if (!isReasonable(text)) return nullptr;
    plist_t parsed = nullptr;
    plist_from_xml(text.data(), static_cast<std::uint32_t>(text.size()), &parsed);
    Node node(parsed);
    return node && plist_get_node_type(node.get()) == PLIST_DICT ? std::move(node) : nullptr;
}

std::vector<std::string> keysOfEmptyArrays(plist_t dictionary) {
    plist_dict_iter position = nullptr;
    plist_dict_new_iter(dictionary, &position);
    const std::unique_ptr<void, FreeMemory> owner(position);
    std::vector<std::string> keys;
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(dictionary, position, &key, &value);
        const std::unique_ptr<char, FreeMemory> keyOwner(key);
        if (key == nullptr || value == nullptr) return keys;
        if (plist_get_node_type(value) == PLIST_ARRAY && plist_array_get_size(value) == 0)
            keys.emplace_back(key);
    }
}

std::optional<std::string> xmlOf(plist_t node) {
    char* text = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(node, &text, &length);
    const std::unique_ptr<char, decltype(&plist_to_xml_free)> owner(text, &plist_to_xml_free);
    if (text == nullptr) return std::nullopt;
    return std::string(text, length);
}

}  // namespace

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
