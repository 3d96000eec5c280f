#pragma once

#include <memory>
#include <optional>
#include <string>

#include "convert/pgs_ocr.h"
#include "convert/recognition_languages.h"
#include "convert/text_recogniser.h"

namespace marlet {

/// Reads pictures of one language, one after the other; for one thread at a time.
class PictureReader {
public:
    /// `language` is a recognition language ("en-US"). Nothing when it can't be read here.
    static std::unique_ptr<PictureReader> open(const std::string& language);

    /// A picture that lies about being a subtitle can hold hundreds of lines; before each the
    /// control is asked. Nothing when no text was found. Throws CancelError.
    std::optional<PGSOCR::Result> read(const PGSOCR::Image& image, RunControl* control = nullptr);

private:
    PictureReader(std::unique_ptr<TextRecogniser> recogniser,
                  const RecognitionLanguages::Language& language)
        : recogniser_(std::move(recogniser)), language_(language) {}

    std::unique_ptr<TextRecogniser> recogniser_;
    const RecognitionLanguages::Language& language_;
};

}  // namespace marlet
