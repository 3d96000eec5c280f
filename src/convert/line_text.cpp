#include "convert/line_text.h"

#include <algorithm>
#include <cstddef>

namespace marlet {

using RecognitionLanguages::Script;

std::string lineText(const std::vector<LineWord>& words, const std::vector<LoneGlyph>& lone,
                     Script script) {
    std::vector<LineWord> all = words;
    if (script != Script::asian)
        for (LineWord& word : all) word.hasBlankBefore = true;
    for (const LoneGlyph& glyph : lone) {
        const auto isBehind = [&](const LineWord& word) {
            return script == Script::arabic ? word.left < glyph.left : word.left > glyph.left;
        };
        const auto next = std::ranges::find_if(all, isBehind);
        if (next != all.end()) next->hasBlankBefore = true;
        all.insert(next, {.text = glyph.text, .left = glyph.left, .hasBlankBefore = true});
    }
    std::string text;
    for (const LineWord& word : all) {
        if (!text.empty() && word.hasBlankBefore) text += ' ';
        text += word.text;
    }
    return text;
}

}  // namespace marlet
