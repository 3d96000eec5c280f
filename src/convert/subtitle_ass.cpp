#include <string_view>

#include "convert/subtitle_text.h"
#include "foundation/text.h"

// Advanced SubStation lines as Matroska stores them (RFC 9559 leaves them to the codec
// specifications of its project): eight fields, then the text.
namespace marlet::SubtitleText {

namespace {

constexpr int fieldsBeforeText = 8;

/// What stands behind the eighth comma; nothing when there are fewer.
std::optional<std::string_view> textField(std::string_view line) {
    for (int i = 0; i < fieldsBeforeText; i++) {
        const std::size_t comma = line.find(',');
        if (comma == std::string_view::npos) return std::nullopt;
        line.remove_prefix(comma + 1);
    }
    return line;
}

/// "\p1" in an override block, alone or behind other overrides, begins a drawing; "\p0" ends one.
bool startsDrawing(std::string_view block) {
    constexpr std::string_view drawing = "\\p";
    for (std::size_t at = block.find(drawing); at != std::string_view::npos;
         at = block.find(drawing, at + 1)) {
        const std::size_t digit = at + drawing.size();
        if (digit < block.size() && block[digit] >= '1' && block[digit] <= '9') return true;
    }
    return false;
}

/// The text without its override blocks; nothing when one of them begins a drawing.
std::optional<std::string> withoutOverrides(std::string_view text) {
    std::string out;
    while (!text.empty()) {
        const std::size_t open = text.find('{');
        out += text.substr(0, open);
        if (open == std::string_view::npos) break;
        text.remove_prefix(open);
        const std::size_t close = text.find('}');
        if (startsDrawing(text.substr(0, close))) return std::nullopt;
        if (close == std::string_view::npos) {
            out += text;  // a brace that nothing closes is text
            break;
        }
        text.remove_prefix(close + 1);
    }
    return out;
}

}  // namespace

std::string assText(const std::string& line) {
    const auto field = textField(line);
    if (!field) return line;
    auto text = withoutOverrides(*field);
    if (!text) return {};
    for (const std::string_view lineEnd : {"\\N", "\\n"})
        text = Text::replaceAll(*std::move(text), lineEnd, "\n");
    return Text::replaceAll(*std::move(text), "\\h", " ");
}

}  // namespace marlet::SubtitleText
