#include "convert/chapter_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace marlet {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(ChapterFile, TellsTheStartsToTheMillisecondAndTheTitles) {
    EXPECT_EQ(chapterFile({{.startNs = 0, .title = "One: \"a\" = b"},
                           {.startNs = 3'723'004'600'000, .title = "Ä 😀"}}),
              "CHAPTER01=00:00:00.000\nCHAPTER01NAME=One: \"a\" = b\n"
              "CHAPTER02=01:02:03.005\nCHAPTER02NAME=Ä 😀\n");
}

TEST(ChapterFile, ATitleStaysOneLine) {
    EXPECT_THAT(chapterFile({{.title = "A\nCHAPTER02=00:00:01.000"}}),
                HasSubstr("CHAPTER01NAME=A CHAPTER02=00:00:01.000\n"));
}

TEST(ChapterFile, ALongTitleIsCutBetweenTwoLetters) {
    std::string letters;
    for (int i = 0; i < 200; i++) letters += "Ä";  // two bytes each
    const auto written = [](const std::string& title) {
        const std::string text = chapterFile({{.title = title}});
        const std::size_t from = text.find("NAME=") + 5;
        return text.substr(from, text.size() - from - 1);
    };
    EXPECT_EQ(written(letters), letters.substr(0, 254));
    EXPECT_EQ(written("a" + letters), "a" + letters.substr(0, 254));
}

TEST(ChapterFile, AListHasRoomFor255) {
    const std::string text = chapterFile(std::vector<MKVChapter>(300, {.title = "x"}));
    EXPECT_THAT(text, HasSubstr("CHAPTER255NAME=x\n"));
    EXPECT_THAT(text, Not(HasSubstr("CHAPTER256")));
    EXPECT_THAT(text, HasSubstr("CHAPTER10NAME="));
}

}  // namespace
}  // namespace marlet
