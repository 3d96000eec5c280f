#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/bytes.h"

namespace marlet {

/// A picture of one byte a pixel, 0 black, rows without padding.
struct GrayPicture {
    int width = 0;
    int height = 0;
    Bytes pixels;  ///< width * height

    std::uint8_t at(int x, int y) const {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
    std::uint8_t& at(int x, int y) {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
};

/// One engine of Tesseract for one language; slow to make, for one thread at a time. Neither writes
/// to the console nor starts threads of its own.
class TextRecogniser {
public:
    /// `data` is the name of a trained data file ("eng"). Nothing when it isn't installed.
    static std::unique_ptr<TextRecogniser> open(const std::string& data);
    ~TextRecogniser();
    TextRecogniser(const TextRecogniser&) = delete;
    TextRecogniser& operator=(const TextRecogniser&) = delete;

    /// A word as it stands in the picture: pixels from its left edge.
    struct Word {
        std::string text;      ///< UTF-8
        float confidence = 0;  ///< 0 to 1
        int left = 0;
        int right = 0;
        bool hasBlankBefore = false;
    };
    /// The words of one line, dark on light, in the order in which they are read.
    std::vector<Word> readLine(const GrayPicture& line);

private:
    class Engine;
    explicit TextRecogniser(std::unique_ptr<Engine> engine);
    std::unique_ptr<Engine> engine_;
};

}  // namespace marlet
