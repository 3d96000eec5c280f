#include "foundation/text.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <limits>
#include <locale>

namespace marlet {
namespace {

std::string utf8Of(UChar32 c) {
    char bytes[4];
    std::int32_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, c);
    return {bytes, static_cast<std::size_t>(length)};
}

bool isUtf8(std::string_view text) {
    return Text::repairUtf8(viewOf(text)) == text;
}

const std::string accent = "\u0301";              // combining acute
const std::string family = "👨‍👩‍👧";  // one character of five code points

TEST(Text, EachBadSequenceOfBytesBecomesOneReplacementCharacter) {
    EXPECT_EQ(Text::repairUtf8(viewOf("plain")), "plain");
    EXPECT_EQ(Text::repairUtf8(viewOf("Amélie ³")), "Amélie ³");
    EXPECT_EQ(Text::repairUtf8(viewOf("a\xFF z")), "a\uFFFD z");
    EXPECT_EQ(Text::repairUtf8(viewOf("\xE2\x82")), "\uFFFD");        // cut short
    EXPECT_EQ(Text::repairUtf8(viewOf("\xC0\xAF")), "\uFFFD\uFFFD");  // overlong
    EXPECT_EQ(Text::repairUtf8(viewOf("\xED\xA0\x80")).find('\xED'),
              std::string::npos);  // surrogate
    EXPECT_EQ(Text::repairUtf8({}), "");
}

TEST(Text, TrimmingTakesUnicodeWhiteSpaceOffBothEndsOnly) {
    EXPECT_EQ(Text::trim(" \t\r\n a b \v\f"), "a b");
    EXPECT_EQ(Text::trim("\u00A0\u3000é\u2028\u0085"), "é");
    EXPECT_EQ(Text::trim(" \n "), "");
    EXPECT_EQ(Text::trim(""), "");
}

TEST(Text, TrimmingTakesTheNamedCharactersMixedWithWhiteSpace) {
    EXPECT_EQ(Text::trim(" - .Heat: - ", "-.:"), "Heat");
    EXPECT_EQ(Text::trim("-.:", "-.:"), "");
    EXPECT_EQ(Text::trim("(a-b)", "-"), "(a-b)");
}

TEST(Text, TrimmingStopsAtBytesThatAreNoText) {
    EXPECT_EQ(Text::trim(" \xFF\xA0 "), "\xFF\xA0");
    EXPECT_EQ(Text::trim("\x80\x80\x80\x80\x80"), "\x80\x80\x80\x80\x80");
}

TEST(Text, CollapsingSpaceIsReplacingTheWhiteSpacePatternForEveryCodePoint) {
    const Regex pattern(R"(\s+)");
    for (UChar32 c = 1; c <= UCHAR_MAX_VALUE; ++c) {
        if (U_IS_SURROGATE(c) || (c > 0x3100 && c % 97 != 0)) continue;
        const std::string text = "a" + utf8Of(c) + utf8Of(c) + "b ";
        ASSERT_EQ(Text::collapseSpace(text), pattern.replaceAll(text, " "))
            << "U+" << std::hex << c;
    }
}

TEST(Text, LowerCaseCoversAllAlphabets) {
    EXPECT_EQ(Text::lower("FRASIER 1993"), "frasier 1993");
    EXPECT_EQ(Text::lower("AMÉLIE ΣΑΣ"), "amélie σας");
}

TEST(Text, OnlyTheFirstLetterChangesItsCase) {
    EXPECT_EQ(Text::upperFirst("the Office"), "The Office");
    EXPECT_EQ(Text::upperFirst("élan"), "Élan");
    EXPECT_EQ(Text::upperFirst(""), "");
    EXPECT_EQ(Text::lowerFirst("The Office"), "the Office");
    EXPECT_EQ(Text::lowerFirst("Élan"), "élan");
    EXPECT_EQ(Text::upperFirst("\xFFz"), "\xFFz");
}

TEST(Text, FoldingMakesCaseAndDiacriticsNoDifference) {
    EXPECT_EQ(Text::fold("Amélie"), Text::fold("AMELIE"));
    EXPECT_EQ(Text::fold("Ame" + accent + "lie"), "amelie");
    EXPECT_EQ(Text::fold("Željko Ångström İstanbul"), "zeljko angstrom istanbul");
    EXPECT_EQ(Text::fold("STRASSE"), Text::fold("Straße"));
}

TEST(Text, FoldingKeepsSuperscripts) {
    EXPECT_EQ(Text::fold("Alien³ x² y¹"), "alien³ x² y¹");
}

TEST(Text, FoldingKeepsLettersWithoutADecomposition) {
    EXPECT_EQ(Text::fold("Øresund"), "øresund");
    EXPECT_EQ(Text::fold("한국"), "한국");
}

TEST(Text, FoldingIsTheSameTwice) {
    for (UChar32 c = 1; c <= 0xFFFF; ++c) {
        if (U_IS_SURROGATE(c)) continue;
        const std::string once = Text::fold("x" + utf8Of(c));
        ASSERT_EQ(Text::fold(once), once) << "U+" << std::hex << c;
    }
}

TEST(Text, ReplacingIsPlainAndGoesOnBehindWhatItPutIn) {
    EXPECT_EQ(Text::replaceAll("a.b.c", ".", " "), "a b c");
    EXPECT_EQ(Text::replaceAll("aaa", "aa", "a"), "aa");
    EXPECT_EQ(Text::replaceAll("a", "a", "aa"), "aa");
    EXPECT_EQ(Text::replaceAll("abc", "", "x"), "abc");
    EXPECT_EQ(Text::replaceAll("abc", "x", "y"), "abc");
}

TEST(Text, WordsDropEmptyPiecesAndSplitKeepsThem) {
    EXPECT_EQ(Text::words("  a  b "), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(Text::words(""), std::vector<std::string>{});
    EXPECT_EQ(Text::words("/a//b", '/'), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(Text::split("a,,b,", ','), (std::vector<std::string>{"a", "", "b", ""}));
    EXPECT_EQ(Text::split("", ','), std::vector<std::string>{""});
}

TEST(Text, JoiningPutsTheTextBetweenPiecesEvenEmptyOnes) {
    EXPECT_EQ(Text::join({"a", "b", "c"}, ", "), "a, b, c");
    EXPECT_EQ(Text::join({"", ""}, "-"), "-");
    EXPECT_EQ(Text::join({}, ", "), "");
}

TEST(Text, ContainingStartingAndEndingArePlain) {
    EXPECT_TRUE(Text::contains("left untouched", "untouched"));
    EXPECT_FALSE(Text::contains("left", "untouched"));
    EXPECT_TRUE(Text::startsWith("id3", "id"));
    EXPECT_FALSE(Text::startsWith("i", "id"));
    EXPECT_TRUE(Text::endsWith("a.mp4", ".mp4"));
    EXPECT_FALSE(Text::endsWith("a.mp4", ".m4v"));
}

TEST(Text, AnIntegerIsTheWholeTextInAsciiDigits) {
    EXPECT_EQ(Text::integer("0042"), 42);
    EXPECT_EQ(Text::integer("-7"), -7);
    EXPECT_EQ(Text::integer("+7"), 7);
    EXPECT_EQ(Text::integer("2147483647"), std::numeric_limits<int>::max());
    for (const char* const bad :
         {"", "+", "-", "+-7", "--7", " 7", "7 ", "7x", "٣", "1.0", "0x7"}) {
        EXPECT_EQ(Text::integer(bad), std::nullopt) << bad;
    }
}

TEST(Text, AnIntegerThatOverflowsIsNone) {
    EXPECT_EQ(Text::integer("2147483648"), std::nullopt);
    EXPECT_EQ(Text::integer("99999999999999999999999"), std::nullopt);
}

TEST(Text, CharactersAreWhatAReaderCountsAsOne) {
    EXPECT_EQ(Text::characterCount(""), 0U);
    EXPECT_EQ(Text::characterCount("abc"), 3U);
    EXPECT_EQ(Text::characterCount("a\r\nb"), 3U);
    EXPECT_EQ(Text::characterCount("e" + accent), 1U);
    EXPECT_EQ(Text::characterCount(family + "!"), 2U);
    EXPECT_EQ(Text::characterCount("a\xFF"), 2U);
}

TEST(Text, FirstCharactersNeverCutOneInTwo) {
    EXPECT_EQ(Text::firstCharacters("abc", 2), "ab");
    EXPECT_EQ(Text::firstCharacters("abc", 9), "abc");
    EXPECT_EQ(Text::firstCharacters("abc", 0), "");
    EXPECT_EQ(Text::firstCharacters("e" + accent + "x", 1), "e" + accent);
    EXPECT_EQ(Text::firstCharacters(family + "x", 1), family);
}

TEST(Text, ATextWithinTheLimitIsNotShortened) {
    EXPECT_EQ(Text::shorten("Ten chars.", 10), "Ten chars.");
    EXPECT_EQ(Text::shorten("", 10), "");
}

TEST(Text, ALongTextIsCutBehindItsLastWholeSentence) {
    EXPECT_EQ(Text::shorten("One two. Three four", 12), "One two.");
    EXPECT_EQ(Text::shorten("One two! Three four", 12), "One two!");
    EXPECT_EQ(Text::shorten("Who? Me? Then it goes on", 12), "Who? Me?");
}

TEST(Text, ASentenceThatEndsInTheFirstHalfIsNoPlaceToCut) {
    EXPECT_EQ(Text::shorten("One. Two three four", 12), "One. Two th…");
}

TEST(Text, ASentenceThatEndsAtTheLimitItselfIsOutOfReach) {
    // The cut looks at limit - 1 characters, so that "…" has room.
    EXPECT_EQ(Text::shorten("0123456789.x", 11), "0123456789…");
    EXPECT_EQ(Text::shorten("012345678.xy", 11), "012345678.");
}

TEST(Text, AShortenedTextIsNeverLongerThanTheLimit) {
    const std::string text = "É un film. Un altro! " + family + " e poi? Senza fine ma con parole";
    for (std::size_t limit = 0; limit < 70; ++limit) {
        EXPECT_LE(Text::characterCount(Text::shorten(text, limit)), limit);
    }
}

TEST(Text, ADescriptionOf300CharactersComesBackWithinALimitOf255AtASentencesEnd) {
    std::string text;
    while (text.size() < 300) text += "A sentence of some words. ";
    const std::string shortened = Text::shorten(text, 255);
    EXPECT_LE(Text::characterCount(shortened), 255U);
    EXPECT_TRUE(Text::endsWith(shortened, "words."));
    EXPECT_TRUE(Text::startsWith(text, shortened));
}

TEST(Text, NumbersInNamesAreOrderedByTheirValue) {
    EXPECT_LT(Text::compareNatural("Episode 2", "Episode 10"), 0);
    EXPECT_GT(Text::compareNatural("Episode 10", "Episode 2"), 0);
    EXPECT_LT(Text::compareNatural("a9b", "a10a"), 0);
}

TEST(Text, NamesAreOrderedAsByTheLocaleAndNotByTheirBytes) {
    EXPECT_LT(Text::compareNatural("apple", "Banana"), 0);
    EXPECT_LT(Text::compareNatural("Édith", "Frank"), 0);
}

TEST(Text, NamesAreOrderedAsInEnglishWhereTheSystemHasNoLanguage) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale("en_US_POSIX"), status);
    EXPECT_LT(Text::compareNatural("apple", "Banana"), 0);
    EXPECT_LT(Text::compareNatural("Episode 2", "Episode 10"), 0);
}

TEST(Text, TheOrderIsTotalSoOnlyEqualNamesTie) {
    EXPECT_EQ(Text::compareNatural("same", "same"), 0);
    EXPECT_NE(Text::compareNatural("Episode 1", "Episode 01"), 0);
    EXPECT_NE(Text::compareNatural("a\u00ADb", "ab"), 0);  // the soft hyphen is ignored by locales
    EXPECT_EQ(Text::compareNatural("Episode 1", "Episode 01"),
              -Text::compareNatural("Episode 01", "Episode 1"));
}

TEST(Text, NamesThatAreNoTextCanBeOrdered) {
    std::vector<std::string> names{"b", "\xFF\xFE", "a\xC3", std::string(255, '\x80'), "a", ""};
    std::sort(names.begin(), names.end(), [](const std::string& a, const std::string& b) {
        return Text::compareNatural(a, b) < 0;
    });
    EXPECT_EQ(names.front(), "");
    EXPECT_LT(Text::compareNatural("a", "b"), 0);
}

struct CommaPoint : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

TEST(Text, ADoubleIsPrintedWithItsDecimalsWhateverTheLocale) {
    const std::locale old = std::locale::global(std::locale(std::locale(), new CommaPoint));
    EXPECT_EQ(Text::fixed(1.5, 2), "1.50");
    EXPECT_EQ(Text::fixed(-0.126, 2), "-0.13");
    EXPECT_EQ(Text::fixed(2.5, 0), "2");
    EXPECT_EQ(Text::fixed(1e300, 2).size(), 304U);
    std::locale::global(old);
}

TEST(Text, EveryHelperGivesTextForBytesThatAreNone) {
    const std::string bad = "A\xFF\xC3(\xE2\x82 \xF0\x9F\x98";
    for (const std::string& out : {Text::fold(bad), Text::lower(bad)}) EXPECT_TRUE(isUtf8(out));
    EXPECT_GT(Text::characterCount(bad), 0U);
    EXPECT_FALSE(Text::shorten(bad, 3).empty());
}

}  // namespace
}  // namespace marlet
