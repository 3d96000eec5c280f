#include "helpers/track_request.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <string_view>

#include "foundation/errors.h"
#include "foundation/languages.h"

namespace marlet::TrackRequests {

namespace {

constexpr std::uint32_t mostDelay = 24 * 3600 * 1000;

[[noreturn]] void refuse(std::string_view option) {
    throw MFError("\"" + std::string(option) + "\" can't be understood");
}

/// Decimal, or hexadecimal behind "0x".
std::uint32_t number(std::string_view option, std::string_view text, std::uint32_t most) {
    const bool isHex = text.starts_with("0x");
    if (isHex) text.remove_prefix(2);
    std::uint32_t value = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, value, isHex ? 16 : 10);
    if (parsed.ec != std::errc() || parsed.ptr != end || value > most) refuse(option);
    return value;
}

std::string fourCharacters(std::string_view option, std::string_view text) {
    if (text.size() != 4) refuse(option);
    return std::string(text);
}

bool isCode(std::string_view text) {
    return text.size() == 3 &&
           std::ranges::all_of(text, [](char letter) { return letter >= 'a' && letter <= 'z'; });
}

/// Three letters (ISO 639-2), the only form that an `mdhd` can hold. Other words are translated
/// where they have such a code, and otherwise say nothing: no film fails for its language.
std::string language(const std::string& text) {
    if (isCode(text)) return text;
    const std::string code = Lang::code(text).value_or("");
    return isCode(code) ? code : "und";
}

using View = std::string_view;
struct Option {
    View key;
    bool (*isGiven)(const TrackRequest&);
    void (*take)(TrackRequest&, View option, View value);
};

constexpr std::array<Option, 7> options = {{
    {"lang=", [](const TrackRequest& r) { return r.language.has_value(); },
     [](TrackRequest& r, View, View value) { r.language = language(std::string(value)); }},
    {"name=", [](const TrackRequest& r) { return r.name.has_value(); },
     [](TrackRequest& r, View, View value) { r.name = std::string(value); }},
    {"hdlr=", [](const TrackRequest& r) { return r.handler.has_value(); },
     [](TrackRequest& r, View option, View value) { r.handler = fourCharacters(option, value); }},
    {"txtflags=", [](const TrackRequest& r) { return r.textFlags.has_value(); },
     [](TrackRequest& r, View option, View value) {
         r.textFlags = number(option, value, std::numeric_limits<std::uint32_t>::max());
     }},
    {"group=", [](const TrackRequest& r) { return r.group.has_value(); },
     [](TrackRequest& r, View option, View value) {
         r.group = static_cast<std::uint16_t>(number(option, value, 0x7FFF));
     }},
    {"disable", [](const TrackRequest& r) { return r.disabled; },
     [](TrackRequest& r, View option, View value) {
         if (!value.empty()) refuse(option);
         r.disabled = true;
     }},
    {"delay=", [](const TrackRequest& r) { return r.delayMs != 0; },
     [](TrackRequest& r, View option, View value) {
         r.delayMs = number(option, value, mostDelay);
     }},
}};

const Option* optionOf(View text) {
    for (const Option& option : options)
        if (text.starts_with(option.key)) return &option;
    return nullptr;
}

}  // namespace

TrackRequest parse(const std::string& argument) {
    TrackRequest request;
    View rest = argument;
    for (std::size_t colon = rest.rfind(':'); colon != View::npos; colon = rest.rfind(':')) {
        const View text = rest.substr(colon + 1);
        const Option* const option = optionOf(text);
        if (option == nullptr) break;
        if (option->isGiven(request)) refuse(text);
        option->take(request, text, text.substr(option->key.size()));
        rest = rest.substr(0, colon);
    }
    const std::size_t mark = rest.rfind('#');
    if (mark != View::npos && rest.find('/', mark) == View::npos) {
        const View track = rest.substr(mark + 1);
        request.track = number(track, track, std::numeric_limits<std::int32_t>::max());
        if (*request.track == 0) refuse(track);
        rest = rest.substr(0, mark);
    }
    if (rest.empty()) throw MFError("\"" + argument + "\" names no file");
    request.file = std::string(rest);
    return request;
}

}  // namespace marlet::TrackRequests
