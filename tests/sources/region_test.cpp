#include "sources/region.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "sources/details_loader.h"
#include "support/temp_folder.h"

namespace marlet {
namespace {

using test::ScopedEnv;

/// The person's locale and list of languages for as long as it lives.
struct Person {
    Person(const std::string& locale, const std::string& languages)
        : all("LC_ALL", locale),
          messages("LC_MESSAGES", ""),
          lang("LANG", ""),
          list("LANGUAGE", languages) {}
    ScopedEnv all, messages, lang, list;
};

TEST(Region, EveryCountryOfTheTableHasItsStore) {
    EXPECT_EQ(Region::storefronts().size(), 30U);
    EXPECT_EQ(Region::storefront("CA"), 143455);
    EXPECT_EQ(Region::storefront("GB"), 143444);
    EXPECT_EQ(Region::storefront("ZA"), 143472);
}

TEST(Region, AnUnknownCountryHasTheStoreOfTheUnitedStates) {
    EXPECT_EQ(Region::storefront("US"), 143441);
    EXPECT_EQ(Region::storefront("XX"), 143441);
    EXPECT_EQ(Region::storefront(""), 143441);
}

TEST(Region, TheStoreIsThatOfTheLocalesCountry) {
    EXPECT_EQ((Person("de_DE.UTF-8", ""), Region::storefront()), 143443);
    EXPECT_EQ((Person("de_AT@euro", ""), Region::storefront()), 143445);
    EXPECT_EQ((Person("is_IS", ""), Region::storefront()), 143441);
    EXPECT_EQ((Person("eo", ""), Region::storefront()), 143441);
    EXPECT_EQ((Person("", ""), Region::storefront()), 143441);
}

TEST(Region, TheCountryOfTheStoreIsThePersonsWhenItHasOne) {
    EXPECT_EQ((Person("de_AT@euro", ""), Region::storeCountry()), "AT");
    EXPECT_EQ((Person("is_IS", ""), Region::storeCountry()), "US");
    EXPECT_EQ((Person("C", ""), Region::storeCountry()), "US");
}

TEST(Region, TheLocaleIsLanguageAndCountryOrAmericanEnglish) {
    EXPECT_EQ((Person("fr_CA.UTF-8", ""), Region::locale()), "fr_CA");
    for (const char* odd : {"", "C", "C.UTF-8", "POSIX", "fr", "fr_", "_FR", "x_YY", "12_34"})
        EXPECT_EQ((Person(odd, ""), Region::locale()), "en_US") << odd;
}

TEST(Region, TheFirstSetVariableDecides) {
    const ScopedEnv all("LC_ALL", "");
    const ScopedEnv messages("LC_MESSAGES", "it_IT.UTF-8");
    const ScopedEnv lang("LANG", "de_DE.UTF-8");
    EXPECT_EQ(Region::locale(), "it_IT");
}

TEST(UserLanguage, IsTwoLettersOfTheFirstPreferredLanguage) {
    EXPECT_EQ((Person("de_DE.UTF-8", "fr:en"), DetailsLoader::userLanguage()), "fr");
    EXPECT_EQ((Person("de_DE.UTF-8", "pt_BR"), DetailsLoader::userLanguage()), "pt");
    EXPECT_EQ((Person("de_DE.UTF-8", ""), DetailsLoader::userLanguage()), "de");
    EXPECT_EQ((Person("de_DE.UTF-8", ":nonsense:es"), DetailsLoader::userLanguage()), "es");
}

TEST(UserLanguage, IsEnglishWhenThereIsNone) {
    EXPECT_EQ((Person("", ""), DetailsLoader::userLanguage()), "en");
    EXPECT_EQ((Person("C.UTF-8", "fr"), DetailsLoader::userLanguage()), "en");
    EXPECT_EQ((Person("7_7", ""), DetailsLoader::userLanguage()), "en");
}

}  // namespace
}  // namespace marlet
