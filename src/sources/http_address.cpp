#include "sources/http_address.h"

#include <algorithm>
#include <cstdlib>

#include "foundation/bytes.h"
#include "foundation/text.h"

namespace marlet::HttpAddress {
namespace {

void sortByName(Query& query) {
    std::stable_sort(query.begin(), query.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
}

}  // namespace

std::string rootOf(const char* variable, const char* usual) {
    const char* value = std::getenv(variable);
    std::string root = value != nullptr && *value != '\0' ? value : usual;
    while (root.ends_with('/')) root.pop_back();
    return root;
}

std::string escaped(std::string_view text) {
    static constexpr char hex[] = "0123456789ABCDEF";
    static constexpr std::string_view plain = "-._~";
    std::string result;
    for (const std::uint8_t byte : viewOf(text)) {
        const char c = static_cast<char>(byte);
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (letter || (c >= '0' && c <= '9') || plain.find(c) != std::string_view::npos)
            result += c;
        else
            result += {'%', hex[byte >> 4], hex[byte & 15]};
    }
    return result;
}

std::string withQuery(const std::string& address, Query query) {
    sortByName(query);
    std::string result = address;
    char separator = '?';
    for (const auto& [name, value] : query) {
        result += separator + escaped(name) + "=" + escaped(value);
        separator = '&';
    }
    return result;
}

std::string plainQuery(Query query) {
    sortByName(query);
    std::vector<std::string> pairs;
    for (const auto& [name, value] : query) pairs.push_back(name + "=" + value);
    return Text::join(pairs, "&");
}

}  // namespace marlet::HttpAddress
