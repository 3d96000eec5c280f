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

TEST(ReadingRules, AnAccentReadTwiceIsOneBehindAnyMark) {
    EXPECT_EQ(mend("¿EÉl?", "es-ES"), "¿Él?");
    EXPECT_EQ(mend("-EÉ verdade.", "pt-BR"), "-É verdade.");
    EXPECT_EQ(mend("AÀ demain", "fr-FR"), "À demain");
}

TEST(ReadingRules, UpperAustriaKeepsItsName) {
    expectKept("In OÖ regnet es. OÖ!", "de-DE");
    expectKept("OÖ", "de-DE");
    EXPECT_EQ(mend("OÖsterreich", "de-DE"), "Österreich");
}

TEST(ReadingRules, RomanNumbersThatCountOnStay) {
    expectKept("Phase IIb, Typ IIa", "de-DE");
    expectKept("XIIe, IIe et IIème", "fr-FR");
    expectKept("II.", "en-US");
    EXPECT_EQ(mend("-IIs sont là, «IIs» aussi.", "fr-FR"), "-Ils sont là, «Ils» aussi.");
}

TEST(ReadingRules, AnEllipsisAheadOfAnotherStays) {
    expectKept("Well... ...maybe.", "en-US");
    expectKept("I see. ...and then?", "en-US");
    expectKept("Mr. Smith vs. Dr. No.", "en-US");
    expectKept("1.5 or 2.5", "en-US");
    expectKept("Hm.. no", "en-US");
    EXPECT_EQ(mend("Wait.... now", "en-US"), "Wait... now");
    EXPECT_EQ(mend("Wait. .. now", "en-US"), "Wait... now");
    EXPECT_EQ(mend(". . .and", "en-US"), "...and");
    EXPECT_EQ(mend(".", "en-US"), ".");
    EXPECT_EQ(mend("", "en-US"), "");
}

TEST(ReadingRules, WhatEachLanguageWritesStays) {
    for (const char* line : {"I'll be there. If I were you...", "- Who's there?\n- It's only me.",
                             "It's 7:15, 1 or 11.", "All's well", "Henry VIII and Louis XIV",
                             "♪ Down by the river ♪", "Either | or"})
        expectKept(line, "en-US");
    for (const char* line : {"L'homme de l'île", "Il l'a dit.", "Où étais-tu ?", "« Ah ! »"})
        expectKept(line, "fr-FR");
    for (const char* line : {"Ich liebe Süßes.", "Öl, Äpfel, Übel", "Ihr Igel"})
        expectKept(line, "de-DE");
    for (const char* line : {"¿Quién? ¡Él!", "El niño, la 1ª vez", "Leí, oí, creí."})
        expectKept(line, "es-ES");
    expectKept("Il l'ha detto all'Isola.", "it-IT");
    expectKept("I dag er jeg i Oslo. Å, nei!", "nb-NO");
    expectKept("Привет, Иль!", "ru-RU");
    expectKept("Це м'ята. Її", "uk-UA");
    expectKept("어디 있어?", "ko-KR");
    expectKept("أين أنت؟", "ar-SA");
}

TEST(ReadingRules, BytesThatAreNoTextDoNoHarm) {
    expectKept("\xFF\xFEII\xC3", "en-US");
}

}  // namespace
}  // namespace marlet::test
