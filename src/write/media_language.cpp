#include "write/media_language.h"

#include <algorithm>

namespace marlet {

std::string knownLanguage(const std::string& letters) {
    const bool isCode = letters.size() == 3 && std::ranges::all_of(letters, [](char letter) {
                            return letter >= 'a' && letter <= 'z';
                        });
    return isCode ? letters : "und";
}

std::string knownLanguage(std::uint16_t packed) {
    std::string letters;
    for (const int shift : {10, 5, 0})
        letters.push_back(static_cast<char>(0x60 + ((packed >> shift) & 0x1F)));
    return knownLanguage(letters);
}

}  // namespace marlet
