#pragma once

#include <map>
#include <string>

namespace marlet {

/// The country and language that answers are asked for, from the person's locale (LC_ALL,
/// LC_MESSAGES, LANG) and list of languages (LANGUAGE).
namespace Region {

/// Country code (ISO 3166-1 alpha-2) to the store's number.
const std::map<std::string, int>& storefronts();
/// The store of the person's country; that of the United States when it has none.
int storefront();
int storefront(const std::string& country);
/// The code of that store's country: the person's, or "US" when it has none of its own.
std::string storeCountry();
/// "de_DE"; "en_US" when language or country is not known.
std::string locale();
/// The first of the person's languages ("fr", "pt_BR"); empty when there is none.
std::string preferredLanguage();

}  // namespace Region
}  // namespace marlet
