#include "convert/recognition_languages.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace marlet::RecognitionLanguages {

namespace {

constexpr std::array languages{
    Language{"eng", "en-US", "eng", "tesseract-ocr-eng"},
    Language{"fre", "fr-FR", "fra", "tesseract-ocr-fra"},
    Language{"fra", "fr-FR", "fra", "tesseract-ocr-fra"},
    Language{"ger", "de-DE", "deu", "tesseract-ocr-deu"},
    Language{"deu", "de-DE", "deu", "tesseract-ocr-deu"},
    Language{"spa", "es-ES", "spa", "tesseract-ocr-spa"},
    Language{"ita", "it-IT", "ita", "tesseract-ocr-ita"},
    Language{"por", "pt-BR", "por", "tesseract-ocr-por"},
    Language{"chi", "zh-Hans", "chi_sim", "tesseract-ocr-chi-sim"},
    Language{"zho", "zh-Hans", "chi_sim", "tesseract-ocr-chi-sim"},
    Language{"jpn", "ja-JP", "jpn", "tesseract-ocr-jpn"},
    Language{"kor", "ko-KR", "kor", "tesseract-ocr-kor"},
    Language{"rus", "ru-RU", "rus", "tesseract-ocr-rus"},
    Language{"ukr", "uk-UA", "ukr", "tesseract-ocr-ukr"},
    Language{"tha", "th-TH", "tha", "tesseract-ocr-tha"},
    Language{"vie", "vi-VT", "vie", "tesseract-ocr-vie"},
    Language{"dut", "nl-NL", "nld", "tesseract-ocr-nld"},
    Language{"nld", "nl-NL", "nld", "tesseract-ocr-nld"},
    Language{"swe", "sv-SE", "swe", "tesseract-ocr-swe"},
    Language{"dan", "da-DK", "dan", "tesseract-ocr-dan"},
    Language{"nor", "nb-NO", "nor", "tesseract-ocr-nor"},
    Language{"fin", "fi-FI", "fin", "tesseract-ocr-fin"},
    Language{"pol", "pl-PL", "pol", "tesseract-ocr-pol"},
    Language{"tur", "tr-TR", "tur", "tesseract-ocr-tur"},
    Language{"ara", "ar-SA", "ara", "tesseract-ocr-ara"},
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
