#include "convert/recognition_languages.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace marlet::RecognitionLanguages {

namespace {

constexpr std::array languages{
    Language{"eng", "en-US", "eng", "tesseract-ocr-eng", Script::latin},
    Language{"fre", "fr-FR", "fra", "tesseract-ocr-fra", Script::latin},
    Language{"fra", "fr-FR", "fra", "tesseract-ocr-fra", Script::latin},
    Language{"ger", "de-DE", "deu", "tesseract-ocr-deu", Script::latin},
    Language{"deu", "de-DE", "deu", "tesseract-ocr-deu", Script::latin},
    Language{"spa", "es-ES", "spa", "tesseract-ocr-spa", Script::latin},
    Language{"ita", "it-IT", "ita", "tesseract-ocr-ita", Script::latin},
    Language{"por", "pt-BR", "por", "tesseract-ocr-por", Script::latin},
    Language{"chi", "zh-Hans", "chi_sim", "tesseract-ocr-chi-sim", Script::asian},
    Language{"zho", "zh-Hans", "chi_sim", "tesseract-ocr-chi-sim", Script::asian},
    Language{"jpn", "ja-JP", "jpn", "tesseract-ocr-jpn", Script::asian},
    Language{"kor", "ko-KR", "kor", "tesseract-ocr-kor", Script::asian},
    Language{"rus", "ru-RU", "rus", "tesseract-ocr-rus", Script::cyrillic},
    Language{"ukr", "uk-UA", "ukr", "tesseract-ocr-ukr", Script::cyrillic},
    Language{"tha", "th-TH", "tha", "tesseract-ocr-tha", Script::asian},
    Language{"vie", "vi-VT", "vie", "tesseract-ocr-vie", Script::latin},
    Language{"dut", "nl-NL", "nld", "tesseract-ocr-nld", Script::latin},
    Language{"nld", "nl-NL", "nld", "tesseract-ocr-nld", Script::latin},
    Language{"swe", "sv-SE", "swe", "tesseract-ocr-swe", Script::latin},
    Language{"dan", "da-DK", "dan", "tesseract-ocr-dan", Script::latin},
    Language{"nor", "nb-NO", "nor", "tesseract-ocr-nor", Script::latin},
    Language{"fin", "fi-FI", "fin", "tesseract-ocr-fin", Script::latin},
    Language{"pol", "pl-PL", "pol", "tesseract-ocr-pol", Script::latin},
    Language{"tur", "tr-TR", "tur", "tesseract-ocr-tur", Script::latin},
    Language{"ara", "ar-SA", "ara", "tesseract-ocr-ara", Script::arabic},
};

const Language* find(const char* Language::*field, std::string_view value) {
    const auto found = std::ranges::find_if(
        languages, [&](const Language& language) { return language.*field == value; });
    return found == languages.end() ? nullptr : &*found;
}

}  // namespace

const Language* byCode(const std::string& code) {
    return find(&Language::code, code);
}

const Language* byRecognition(const std::string& recognition) {
    return find(&Language::recognition, recognition);
}

}  // namespace marlet::RecognitionLanguages
