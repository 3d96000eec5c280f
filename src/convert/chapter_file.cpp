#include "convert/chapter_file.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace marlet {

namespace {

constexpr std::size_t mostChapters = 255;
constexpr std::size_t longestTitle = 255;  // bytes

std::string stamp(std::uint64_t ns) {
    constexpr std::uint64_t nsPerMs = 1'000'000;
    const std::uint64_t ms = (ns + nsPerMs / 2) / nsPerMs;
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%02llu:%02u:%02u.%03u",
                  static_cast<unsigned long long>(ms / 3'600'000),
                  static_cast<unsigned>(ms / 60'000 % 60), static_cast<unsigned>(ms / 1000 % 60),
                  static_cast<unsigned>(ms % 1000));
    return text.data();
}

bool isMiddleOfCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// One line, and no longer than can be kept.
std::string title(std::string text) {
    std::ranges::replace_if(
        text, [](char each) { return static_cast<unsigned char>(each) < 0x20; }, ' ');
    if (text.size() <= longestTitle) return text;
    std::size_t end = longestTitle;
    while (end > 0 && isMiddleOfCharacter(text[end])) end--;
    text.resize(end);
    return text;
}

}  // namespace

std::string chapterFile(const std::vector<MKVChapter>& chapters) {
    std::string text;
    for (std::size_t i = 0; i < std::min(chapters.size(), mostChapters); i++) {
        const std::string number = (i < 9 ? "0" : "") + std::to_string(i + 1);
        text += "CHAPTER" + number + "=" + stamp(chapters[i].startNs) + "\n";
        text += "CHAPTER" + number + "NAME=" + title(chapters[i].title) + "\n";
    }
    return text;
}

}  // namespace marlet
