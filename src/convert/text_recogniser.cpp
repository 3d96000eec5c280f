#include "convert/text_recogniser.h"

#include <dlfcn.h>
#include <leptonica/allheaders.h>
#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale is POSIX
#include <tesseract/baseapi.h>
#include <tesseract/resultiterator.h>

#include <mutex>

namespace marlet {

namespace {

/// The engine reads its data files with the numbers of the "C" locale; the program's may be the
/// person's.
class PlainLocale {
public:
    PlainLocale() : before_(uselocale(plain())) {}
    ~PlainLocale() { uselocale(before_); }
    PlainLocale(const PlainLocale&) = delete;
    PlainLocale& operator=(const PlainLocale&) = delete;

private:
    static locale_t plain() {
        static const locale_t c = newlocale(LC_ALL_MASK, "C", nullptr);
        return c;
    }
    locale_t before_;
};

/// The engine would start threads for every line, where there is one reader for each core already.
/// It asks for a number of threads, which only this refuses; a build of it without OpenMP has no
/// such function.
void stayOnThisThread() {
    using SetLevels = void (*)(int);
    static const auto setLevels =
        reinterpret_cast<SetLevels>(dlsym(RTLD_DEFAULT, "omp_set_max_active_levels"));
    if (setLevels != nullptr) setLevels(0);
}

/// Both settings are the process's, not an engine's, so no two threads may make them at once.
void neverPrint(tesseract::TessBaseAPI& api) {
    static std::once_flag isQuiet;
    std::call_once(isQuiet, [&api] {
        setMsgSeverity(L_SEVERITY_NONE);
        api.SetVariable("debug_file", "/dev/null");
    });
}

}  // namespace

class TextRecogniser::Engine {
public:
    tesseract::TessBaseAPI api;
};

TextRecogniser::TextRecogniser(std::unique_ptr<Engine> engine) : engine_(std::move(engine)) {}
TextRecogniser::~TextRecogniser() {
    const PlainLocale locale;
    engine_.reset();
}

std::unique_ptr<TextRecogniser> TextRecogniser::open(const std::string& data) {
    const PlainLocale locale;
    stayOnThisThread();
    auto engine = std::make_unique<Engine>();
    tesseract::TessBaseAPI& api = engine->api;
    neverPrint(api);
    if (api.Init(nullptr, data.c_str(), tesseract::OEM_LSTM_ONLY) != 0) return nullptr;
    api.SetPageSegMode(tesseract::PSM_SINGLE_LINE);
    // Never in a subtitle, and often seen where an I or an l is meant.
    api.SetVariable("tessedit_char_blacklist", "|{}~\\^_=<>©®¢¥§");
    return std::unique_ptr<TextRecogniser>(new TextRecogniser(std::move(engine)));
}

std::vector<TextRecogniser::Word> TextRecogniser::readLine(const GrayPicture& line) {
    const PlainLocale locale;
    stayOnThisThread();
    tesseract::TessBaseAPI& api = engine_->api;
    api.SetImage(line.pixels.data(), line.width, line.height, 1, line.width);
    api.SetSourceResolution(300);
    std::vector<Word> words;
    if (api.Recognize(nullptr) != 0) return words;
    const std::unique_ptr<tesseract::ResultIterator> each(api.GetIterator());
    if (each == nullptr) return words;
    do {
        const std::unique_ptr<char[]> text(each->GetUTF8Text(tesseract::RIL_WORD));
        if (text == nullptr) continue;
        Word word{.text = text.get(), .confidence = each->Confidence(tesseract::RIL_WORD) / 100};
        word.hasBlankBefore = each->BlanksBeforeWord() > 0;
        int top = 0;
        int bottom = 0;
        each->BoundingBox(tesseract::RIL_WORD, &word.left, &top, &word.right, &bottom);
        words.push_back(std::move(word));
    } while (each->Next(tesseract::RIL_WORD));
    api.Clear();
    return words;
}

}  // namespace marlet
