#include "app/virtual_map.h"

#include "foundation/text.h"

namespace marlet::VirtualMap {

std::vector<Entry> parse(std::string_view text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";  // some editors begin with it
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    std::vector<Entry> entries;
    for (std::string& line : Text::words(text, '\n')) {
        if (line.ends_with('\r')) line.pop_back();
        const std::vector<std::string> fields = Text::split(line, '\t');
        if (fields.size() < 2 || fields[0].starts_with('#')) continue;
        entries.push_back({fields[0], fields[1], fields.size() > 2 && fields[2] == "1"});
    }
    return entries;
}

}  // namespace marlet::VirtualMap
