// What the engine mistakes is mended, and what is right in a language stays.

#include "convert/reading_rules.h"

#include <gtest/gtest.h>

namespace marlet::test {
namespace {

using ReadingRules::mend;

void expectKept(const std::string& line, const std::string& language) {
    EXPECT_EQ(mend(line, language), line) << language;
}

TEST(ReadingRules, AnUmlautReadTwiceAtTheStartOfAWordIsOne) {
    EXPECT_EQ(mend("UÜber den Wolken", "de-DE"), "Über den Wolken");
    EXPECT_EQ(mend("EÉtienne et EÉmile", "fr-FR"), "Étienne et Émile");
    EXPECT_EQ(mend("\"AÁngel\"", "es-ES"), "\"Ángel\"");
}

TEST(ReadingRules, TwoVowelsWithinAWordOfCapitalsAreTwo) {
    expectKept("¿ME CREÉIS?", "es-ES");
    expectKept("EL ZOÓLOGO", "es-ES");
    expectKept("O ZOÓLOGO", "pt-BR");
    expectKept("ÑOÓ", "es-ES");
}

TEST(ReadingRules, TwoCapitalIAheadOfASmallLetterAreIAndL) {
    EXPECT_EQ(mend("IIsa and IIya", "en-US"), "Ilsa and Ilya");
    EXPECT_EQ(mend("\"IIlinois\"", "en-US"), "\"Illinois\"");
    EXPECT_EQ(mend("IIs sont là, IIdefonse.", "fr-FR"), "Ils sont là, Ildefonse.");
}

TEST(ReadingRules, RomanNumbersStay) {
    expectKept("World War II", "en-US");
    expectKept("Au IIe siècle", "fr-FR");
    expectKept("La IIème République", "fr-FR");
    expectKept("Le IInd Empire, la IInde", "fr-FR");
    expectKept("Napoléon III", "fr-FR");
    expectKept("la IIa planta", "es-ES");
}

TEST(ReadingRules, TypographicMarksBecomeThoseOfSubtitles) {
    EXPECT_EQ(mend("“It’s me…” she said", "en-US"), "\"It's me...\" she said");
    EXPECT_EQ(mend("Wait. . . . what ?", "en-US"), "Wait... what ?");
}

TEST(ReadingRules, QuotesThatOpenBelowTheLineKeepTheirEnds) {
    expectKept("„Ja“, sagte er.", "de-DE");
    expectKept("„Tak”, powiedział.", "pl-PL");
    EXPECT_EQ(mend("„Ja”, sagte er.", "de-DE"), "„Ja“, sagte er.");
    expectKept("Er sagte: ‚Nein‘.", "de-DE");
    EXPECT_EQ(mend("‚Wir gehen.", "de-DE"), "Wir gehen.");
}

TEST(ReadingRules, MarksOfChineseAndJapaneseStay) {
    expectKept("“你好……”", "zh-Hans");
    expectKept("そう…", "ja-JP");
}

}  // namespace
}  // namespace marlet::test
