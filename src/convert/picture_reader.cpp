#include "convert/picture_reader.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "convert/glyph_rules.h"
#include "convert/line_text.h"
#include "convert/lone_glyphs.h"
#include "convert/picture_ink.h"
#include "convert/picture_lines.h"
#include "convert/reading_rules.h"
#include "convert/recognition_languages.h"

namespace marlet {

using RecognitionLanguages::Script;

namespace {

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

/// All the pixels that it says.
bool isWhole(const PGSOCR::Image& image) {
    return image.width > 0 && image.height > 0 &&
           image.rgba.size() ==
               static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height) * 4;
}

/// Only letters that stand side by side, a shape each, can be mended by their shapes.
bool isSpelled(Script script) {
    return script == Script::latin || script == Script::cyrillic;
}

/// The words as they were read, mended by their shapes.
std::vector<LineWord> mendedWords(const GrayPicture& ink, const PictureLine& line,
                                  const std::vector<TextRecogniser::Word>& read, Script script) {
    GlyphRules rules(ink);
    std::vector<std::vector<Glyph>> glyphs = shared(line.glyphs, read);
    std::vector<GlyphRules::Word> words;
    for (std::size_t i = 0; i < read.size(); i++) {
        words.push_back(GlyphRules::match(read[i], std::move(glyphs[i]), line.capital));
        rules.learn(words.back());
        if (i > 0) rules.learnGap(words[i - 1], words.back());
    }
    std::vector<LineWord> mended;
    for (std::size_t i = 0; i < read.size(); i++)
        mended.push_back({.text = isSpelled(script) ? rules.mended(words[i]) : read[i].text,
                          .left = static_cast<double>(read[i].left),
                          .hasBlankBefore = read[i].hasBlankBefore});
    return mended;
}

}  // namespace

std::unique_ptr<PictureReader> PictureReader::open(const std::string& language) {
    const auto* const row = RecognitionLanguages::byRecognition(language);
    if (row == nullptr) return nullptr;
    auto recogniser = TextRecogniser::open(row->data);
    if (recogniser == nullptr) return nullptr;
    return std::unique_ptr<PictureReader>(new PictureReader(std::move(recogniser), *row));
}

std::optional<PGSOCR::Result> PictureReader::read(const PGSOCR::Image& image, RunControl* control) {
    if (!isWhole(image)) return std::nullopt;
    const GrayPicture ink = inkOf(image);
    PGSOCR::Result result;
    int words = 0;
    for (PictureLine& line : linesOf(ink)) {
        if (control != nullptr) control->checkpoint();
        const std::vector<LoneGlyph> lone =
            takeLoneGlyphs(ink, line, language_.script == Script::latin);
        const std::vector<TextRecogniser::Word> read = recogniser_->readLine(line.picture);
        for (const TextRecogniser::Word& word : read) result.confidence += word.confidence;
        words += static_cast<int>(read.size());
        const std::string text = ReadingRules::mend(
            lineText(mendedWords(ink, line, read, language_.script), lone, language_.script),
            language_.recognition);
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
