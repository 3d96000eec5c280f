#include "convert/picture_reader.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

#include "convert/glyph_rules.h"
#include "convert/lone_glyphs.h"
#include "convert/picture_ink.h"
#include "convert/picture_lines.h"
#include "convert/reading_rules.h"
#include "convert/recognition_languages.h"

namespace marlet {

namespace {

/// Where a bar alone is no I.
bool isLatin(std::string_view language) {
    constexpr std::array<std::string_view, 7> others{"zh-Hans", "ja-JP", "ko-KR", "ru-RU",
                                                     "uk-UA",   "th-TH", "ar-SA"};
    return std::ranges::find(others, language) == others.end();
}

/// A word of a line with its place; a lone glyph has no shapes to mend it by.
struct Placed {
    double left = 0;
    GlyphRules::Word word;
    std::string text;  ///< of a lone glyph
};

/// Each glyph goes to the word that it stands in, or next to.
std::vector<std::vector<Glyph>> shared(const std::vector<Glyph>& glyphs,
                                       const std::vector<TextRecogniser::Word>& words) {
    std::vector<std::vector<Glyph>> own(words.size());
    for (const Glyph& glyph : glyphs) {
        const double middle = (glyph.left + glyph.right) / 2;
        double nearest = std::numeric_limits<double>::max();
        std::size_t to = 0;
        for (std::size_t i = 0; i < words.size(); i++) {
            const double away = std::max({words[i].left - middle, middle - words[i].right, 0.0});
            if (away >= nearest) continue;
            nearest = away;
            to = i;
        }
        if (!words.empty()) own[to].push_back(glyph);
    }
    return own;
}

/// The words as they were read and mended, with the lone glyphs between them.
std::string lineOfText(const GrayPicture& ink, const PictureLine& line,
                       const std::vector<TextRecogniser::Word>& read, std::vector<Placed> placed) {
    GlyphRules rules(ink);
    std::vector<std::vector<Glyph>> glyphs = shared(line.glyphs, read);
    GlyphRules::Word before;
    for (std::size_t i = 0; i < read.size(); i++) {
        GlyphRules::Word word = GlyphRules::match(read[i], std::move(glyphs[i]), line.capital);
        rules.learn(word);
        rules.learnGap(before, word);
        before = word;
        placed.push_back({.left = static_cast<double>(read[i].left), .word = std::move(word)});
    }
    std::ranges::stable_sort(placed, {}, &Placed::left);
    std::string text;
    for (const Placed& each : placed) {
        if (!text.empty()) text += ' ';
        text += each.text.empty() ? rules.mended(each.word) : each.text;
    }
    return text;
}

}  // namespace

std::unique_ptr<PictureReader> PictureReader::open(const std::string& language) {
    const auto* const row = RecognitionLanguages::byRecognition(language);
    if (row == nullptr) return nullptr;
    auto recogniser = TextRecogniser::open(row->data);
    if (recogniser == nullptr) return nullptr;
    return std::unique_ptr<PictureReader>(new PictureReader(std::move(recogniser), language));
}

std::optional<PGSOCR::Result> PictureReader::read(const PGSOCR::Image& image, RunControl* control) {
    const GrayPicture ink = inkOf(image);
    PGSOCR::Result result;
    int words = 0;
    for (PictureLine& line : linesOf(ink)) {
        if (control != nullptr) control->checkpoint();
        std::vector<Placed> placed;
        for (const LoneGlyph& lone : takeLoneGlyphs(ink, line, isLatin(language_)))
            placed.push_back({.left = lone.left, .text = lone.text});
        const std::vector<TextRecogniser::Word> read = recogniser_->readLine(line.picture);
        for (const TextRecogniser::Word& word : read) result.confidence += word.confidence;
        words += static_cast<int>(read.size());
        const std::string text =
            ReadingRules::mend(lineOfText(ink, line, read, std::move(placed)), language_);
        if (text.empty()) continue;
        if (!result.text.empty()) result.text += '\n';
        result.text += text;
    }
    if (result.text.empty()) return std::nullopt;
    // What was told by its shape alone is certain.
    result.confidence = words > 0 ? result.confidence / static_cast<float>(words) : 1;
    return result;
}

}  // namespace marlet
