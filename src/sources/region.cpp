#include "sources/region.h"

#include <cctype>
#include <cstdlib>
#include <string_view>

#include "foundation/text.h"

namespace marlet::Region {
namespace {

constexpr int unitedStates = 143441;

bool allOf(std::string_view text, int (*is)(int)) {
    for (const char c : text) {
        if (is(static_cast<unsigned char>(c)) == 0) return false;
    }
    return !text.empty();
}

/// POSIX: the first of these that is set and not empty decides, without its ".charset" and
/// "@variant". The "C" locale names no language.
std::string posixLocale() {
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value == nullptr || *value == '\0') continue;
        std::string text = value;
        text = text.substr(0, text.find_first_of(".@"));
        return text == "C" || text == "POSIX" ? "" : text;
    }
    return {};
}

struct Parts {
    std::string language;  ///< empty when it isn't two or three letters
    std::string country;   ///< empty when it isn't two letters
};

Parts parts(const std::string& name) {
    const auto cut = name.find('_');
    Parts result{name.substr(0, cut), cut == std::string::npos ? "" : name.substr(cut + 1)};
    if (!allOf(result.language, std::isalpha) || result.language.size() < 2 ||
        result.language.size() > 3) {
        result.language.clear();
    }
    if (!allOf(result.country, std::isalpha) || result.country.size() != 2) result.country.clear();
    for (char& c : result.country)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    for (char& c : result.language)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return result;
}

}  // namespace

const std::map<std::string, int>& storefronts() {
    static const std::map<std::string, int> table = {
        {"US", 143441}, {"CA", 143455}, {"GB", 143444}, {"AU", 143460}, {"NZ", 143461},
        {"IE", 143449}, {"DE", 143443}, {"FR", 143442}, {"ES", 143454}, {"IT", 143450},
        {"BE", 143446}, {"AT", 143445}, {"CH", 143459}, {"SE", 143456}, {"NO", 143457},
        {"DK", 143458}, {"FI", 143447}, {"PT", 143453}, {"PL", 143478}, {"NL", 143452},
        {"CZ", 143489}, {"JP", 143462}, {"KR", 143466}, {"MX", 143468}, {"BR", 143503},
        {"AR", 143505}, {"SG", 143464}, {"HK", 143463}, {"IN", 143467}, {"ZA", 143472},
    };
    return table;
}

int storefront(const std::string& country) {
    const auto found = storefronts().find(country);
    return found == storefronts().end() ? unitedStates : found->second;
}

int storefront() {
    return storefront(storeCountry());
}

std::string storeCountry() {
    const std::string country = parts(posixLocale()).country;
    return storefronts().contains(country) ? country : "US";
}

std::string locale() {
    const Parts known = parts(posixLocale());
    if (known.language.empty() || known.country.empty()) return "en_US";
    return known.language + "_" + known.country;
}

std::string preferredLanguage() {
    // As message catalogues are chosen: LANGUAGE counts only under a locale with a language.
    const std::string own = posixLocale();
    if (own.empty()) return {};
    if (const char* list = std::getenv("LANGUAGE")) {
        for (const std::string& name : Text::words(list, ':')) {
            if (!parts(name).language.empty()) return name;
        }
    }
    return parts(own).language.empty() ? std::string() : own;
}

}  // namespace marlet::Region
