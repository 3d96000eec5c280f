#include "foundation/languages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marlet::test {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto nothing = std::nullopt;
constexpr const char* sdh = "SDH (for the hard of hearing)";

std::optional<std::string> label(const std::optional<std::string>& name) {
    return Lang::descriptor(name, "eng");
}

TEST(Languages, EveryCodeOfALanguageGivesItsCanonicalOne) {
    EXPECT_EQ(Lang::code("en"), "eng");
    EXPECT_EQ(Lang::code("fra"), "fre");
    EXPECT_EQ(Lang::code("deu"), "ger");
    EXPECT_EQ(Lang::code("zh"), "chi");
    EXPECT_EQ(Lang::code("nld"), "dut");
    EXPECT_EQ(Lang::code("nob"), "nor");
    EXPECT_EQ(Lang::code("ces"), "cze");
    EXPECT_EQ(Lang::code("el"), "gre");
    EXPECT_EQ(Lang::code("und"), "und");
}

TEST(Languages, ANameInWordsGivesTheCodeInAnyCaseAndWithBlanksAround) {
    EXPECT_EQ(Lang::code("German"), "ger");
    EXPECT_EQ(Lang::code(" \t vietnamese\n"), "vie");
    EXPECT_EQ(Lang::code("UNKNOWN"), "und");
    EXPECT_EQ(Lang::code(" EN "), "eng");
}

TEST(Languages, ThreeUnknownLettersStayAsTheyAreInLowerCase) {
    EXPECT_EQ(Lang::code("ISL"), "isl");
    EXPECT_EQ(Lang::code("qaa"), "qaa");
    EXPECT_EQ(Lang::code("äöü"), "äöü");
}

TEST(Languages, AnythingElseIsNoLanguage) {
    EXPECT_EQ(Lang::code(""), nothing);
    EXPECT_EQ(Lang::code("   "), nothing);
    EXPECT_EQ(Lang::code("is"), nothing);
    EXPECT_EQ(Lang::code("Klingon"), nothing);
    EXPECT_EQ(Lang::code("deutsch"), nothing);
}

TEST(Languages, ACodeHasANameAndAnUnknownOneReadsInCapitals) {
    EXPECT_EQ(Lang::name("ger"), "German");
    EXPECT_EQ(Lang::name("DEU"), "German");
    EXPECT_EQ(Lang::name("pt"), "Portuguese");
    EXPECT_EQ(Lang::name("und"), "Unknown");
    EXPECT_EQ(Lang::name("isl"), "ISL");
    EXPECT_EQ(Lang::name(""), "");
}

TEST(Languages, ANameIsNoCode) {
    EXPECT_EQ(Lang::name("german"), "GERMAN");
}

TEST(Languages, CodesOfOneLanguageAreTheSame) {
    EXPECT_TRUE(Lang::same("fra", "fr"));
    EXPECT_TRUE(Lang::same("ger", "deu"));
    EXPECT_TRUE(Lang::same("English", "en"));
    EXPECT_FALSE(Lang::same("ger", "dut"));
}

TEST(Languages, WhatIsNoLanguageIsComparedAsItStands) {
    EXPECT_TRUE(Lang::same("Klingon", "Klingon"));
    EXPECT_FALSE(Lang::same("Klingon", "klingon"));
    EXPECT_FALSE(Lang::same("", "und"));
    EXPECT_TRUE(Lang::same("", ""));
}

TEST(Languages, AListIsDividedByCommaSemicolonAndSlash) {
    EXPECT_THAT(Lang::parseList("en,fr/de"), ElementsAre("eng", "fre", "ger"));
    EXPECT_THAT(Lang::parseList("en; fr"), ElementsAre("eng", "fre"));
    EXPECT_THAT(Lang::parseList(",,en//;"), ElementsAre("eng"));
    EXPECT_THAT(Lang::parseList(""), IsEmpty());
}

TEST(Languages, AListTakesWordsKeepsThreeLettersAndDropsTheRest) {
    EXPECT_THAT(Lang::parseList("Spanish, is, isl"), ElementsAre("spa", "isl"));
    EXPECT_THAT(Lang::parseList("en, , Klingon"), ElementsAre("eng"));
}

TEST(Languages, AListKeepsOrderAndRepetitions) {
    EXPECT_THAT(Lang::parseList("de,en,deu"), ElementsAre("ger", "eng", "ger"));
}

TEST(TrackDescriptor, NeverRepeatsTheLanguage) {
    EXPECT_EQ(label("English SDH"), sdh);
    EXPECT_EQ(label("Francais"), nothing);
    EXPECT_EQ(label("FRANÇAIS"), nothing);
    EXPECT_EQ(label("English"), nothing);
    EXPECT_EQ(label("ENG"), nothing);
    EXPECT_EQ(label("日本語"), nothing);
    EXPECT_EQ(label("English Commentary"), "Commentary");
}

TEST(TrackDescriptor, NeverRepeatsTheFormat) {
    EXPECT_EQ(label("English (SRT)"), nothing);
    EXPECT_EQ(label("[UTF-8] Director's notes"), "Director's notes");
    EXPECT_EQ(label("PGS / Signs"), "Signs");
    EXPECT_EQ(label("Subtitles"), nothing);
}

TEST(TrackDescriptor, TakesWholeWordsOnly) {
    EXPECT_EQ(label("Germanic tribes"), "Germanic tribes");
    EXPECT_EQ(label("Subtext"), "Subtext");
    EXPECT_EQ(label("en"), "en");  // codes of two letters are words of their own
}

TEST(Languages, ATagBeginsWithItsLanguage) {
    EXPECT_EQ(Lang::firstPart("en-GB"), "en");
    EXPECT_EQ(Lang::firstPart("zh-Hans-CN"), "zh");
    EXPECT_EQ(Lang::firstPart("ger"), "ger");
    EXPECT_EQ(Lang::firstPart("-x"), "");
    EXPECT_EQ(Lang::firstPart(""), "");
    EXPECT_EQ(Lang::code("en-GB"), nothing) << "a tag is no code";
}

TEST(TrackDescriptor, NothingGivesNothing) {
    EXPECT_EQ(label(nothing), nothing);
    EXPECT_EQ(label(""), nothing);
    EXPECT_EQ(label("  "), nothing);
    EXPECT_EQ(label(" - [] "), nothing);
}

TEST(TrackDescriptor, SoundForTheDeafHasOneWording) {
    EXPECT_EQ(label("for the Hearing Impaired"), sdh);
    EXPECT_EQ(label("CC"), sdh);
    EXPECT_EQ(label("Closed Captions"), sdh);
    EXPECT_EQ(label("English [SDH] forced"), sdh);
    EXPECT_EQ(label("ACCount"), "ACCount");
}

TEST(TrackDescriptor, ForcedTracksHaveNoLabel) {
    EXPECT_EQ(label("forced"), nothing);
    EXPECT_EQ(label("English (Forced)"), nothing);
    EXPECT_EQ(label("Foreign parts only"), nothing);
}

TEST(TrackDescriptor, AnythingElseStaysWithItsCase) {
    EXPECT_EQ(label("Commentary"), "Commentary");
    EXPECT_EQ(label("– Commentary by the Director –"), "Commentary by the Director");
}

}  // namespace
}  // namespace marlet::test
