#include "sources/json_object.h"

#include <algorithm>

namespace marlet {
namespace {

/// The deepest real answer nests 6 levels.
constexpr int mostLevels = 64;

/// Brackets outside texts, counted before anything is built from them.
bool nestsTooDeep(ByteView bytes) {
    int level = 0;
    bool inText = false;
    for (std::size_t i = 0; i < bytes.size(); i++) {
        const char c = static_cast<char>(bytes[i]);
        if (inText) {
            if (c == '\\')
                i++;
            else if (c == '"')
                inText = false;
        } else if (c == '"') {
            inText = true;
        } else if (c == '{' || c == '[') {
            if (++level > mostLevels) return true;
        } else if (c == '}' || c == ']') {
            level = std::max(0, level - 1);
        }
    }
    return false;
}

/// RFC 8259 knows one kind of number: 7.0 is the integer 7.
std::optional<std::int64_t> exactInteger(const Json& value) {
    if (value.is_number_unsigned()) {
        const auto number = value.get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            return std::nullopt;
        return static_cast<std::int64_t>(number);
    }
    if (value.is_number_integer()) return value.get<std::int64_t>();
    if (!value.is_number_float()) return std::nullopt;
    const double number = value.get<double>();
    constexpr double exactLimit = 9007199254740992.0;  // 2^53
    if (std::abs(number) > exactLimit || std::trunc(number) != number) return std::nullopt;
    return static_cast<std::int64_t>(number);
}

}  // namespace

Json parseJson(ByteView bytes) {
    if (nestsTooDeep(bytes))
        throw MFError("The database's answer can't be read: it nests too deep");
    Json value = Json::parse(bytes.begin(), bytes.end(), nullptr, false);
    if (value.is_discarded()) throw MFError("The database's answer can't be read: it isn't JSON");
    return value;
}

JsonObject::JsonObject(const Json& value, std::string what)
    : value_(value), what_(std::move(what)) {
    if (value.is_object()) return;
    throw MFError("The database's answer can't be read: " +
                  (what_.empty() ? std::string("it") : "\"" + what_ + "\"") + " isn't an object");
}

const Json* JsonObject::find(const char* key) const {
    const auto found = value_.find(key);
    return found == value_.end() || found->is_null() ? nullptr : &*found;
}

std::string JsonObject::path(const std::string& key) const {
    return what_.empty() ? key : what_ + "." + key;
}

void JsonObject::fail(const std::string& key, const std::string& fault) const {
    throw MFError("The database's answer can't be read: \"" + path(key) + "\" " + fault);
}

void JsonObject::read(const Json& value, const char* key, std::string& out) const {
    if (!value.is_string()) fail(key, "is not a text");
    out = value.get_ref<const std::string&>();
}

void JsonObject::read(const Json& value, const char* key, std::int64_t& out) const {
    const auto number = exactInteger(value);
    if (!number) fail(key, "is not a whole number");
    out = *number;
}

void JsonObject::read(const Json& value, const char* key, int& out) const {
    const auto number = exactInteger(value);
    if (!number || *number < std::numeric_limits<int>::min() ||
        *number > std::numeric_limits<int>::max()) {
        fail(key, "is not a whole number");
    }
    out = static_cast<int>(*number);
}

void JsonObject::read(const Json& value, const char* key, double& out) const {
    if (!value.is_number()) fail(key, "is not a number");
    out = value.get<double>();
}

}  // namespace marlet
