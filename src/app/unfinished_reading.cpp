// The way back: every value is looked at before it is taken, since anybody may have written it.

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

#include "app/unfinished_fields.h"
#include "app/unfinished_json.h"

namespace marlet::UnfinishedJson {

namespace {

using Json = nlohmann::json;
namespace fs = std::filesystem;

[[noreturn]] void refuse() {
    throw std::invalid_argument("not a record of unfinished work");
}

// Declared before what they use of each other.
void take(const Json& json, std::string& value);
void take(const Json& json, fs::path& value);
void take(const Json& json, Verdict& verdict);
void take(const Json& json, EditedDetails& edited);
template <typename T>
void take(const Json& json, std::vector<T>& list);
template <typename T>
void take(const Json& json, std::optional<T>& value);
template <typename K, typename V>
void take(const Json& json, std::map<K, V>& map);
template <typename T>
requires(std::is_class_v<T>) void take(const Json& json, T& value);

void take(const Json& json, bool& value) {
    if (!json.is_boolean()) refuse();
    value = json.get<bool>();
}

void take(const Json& json, double& value) {
    if (!json.is_number()) refuse();
    value = json.get<double>();
}

template <typename T>
requires(std::integral<T> && !std::same_as<T, bool>) void take(const Json& json, T& value) {
    if (json.is_number_unsigned()) {
        const auto number = json.get<std::uint64_t>();
        if (!std::in_range<T>(number)) refuse();
        value = static_cast<T>(number);
    } else if (json.is_number_integer()) {
        const auto number = json.get<std::int64_t>();
        if (!std::in_range<T>(number)) refuse();
        value = static_cast<T>(number);
    } else {
        refuse();
    }
}

void take(const Json& json, std::string& value) {
    if (!json.is_string()) refuse();
    value = json.get<std::string>();
}

template <typename T>
requires std::is_enum_v<T>
void take(const Json& json, T& value) {
    for (std::size_t i = 0; i < namesOf<T>.size(); i++)
        if (json == namesOf<T>[i]) {
            value = static_cast<T>(i);
            return;
        }
    refuse();
}

std::uint8_t nibble(char digit) {
    if (digit >= '0' && digit <= '9') return static_cast<std::uint8_t>(digit - '0');
    if (digit >= 'a' && digit <= 'f') return static_cast<std::uint8_t>(digit - 'a' + 10);
    refuse();
}

/// From the root, and without a zero byte, which no name can hold.
void take(const Json& json, fs::path& value) {
    std::string name;
    if (json.is_string()) {
        name = json.get<std::string>();
    } else {
        std::string hex;
        take(json.at("bytes"), hex);
        if (hex.size() % 2 != 0) refuse();
        for (std::size_t i = 0; i < hex.size(); i += 2)
            name.push_back(static_cast<char>(nibble(hex[i]) * 16 + nibble(hex[i + 1])));
    }
    if (!name.starts_with('/') || name.find('\0') != std::string::npos) refuse();
    value = name;
}

template <typename T>
void take(const Json& json, std::vector<T>& list) {
    if (!json.is_array()) refuse();
    for (const Json& each : json) take(each, list.emplace_back());
}

template <typename T>
void take(const Json& json, std::optional<T>& value) {
    if (json.is_null()) {
        value.reset();
        return;
    }
    take(json, value.emplace());
}

template <typename K, typename V>
void take(const Json& json, std::map<K, V>& map) {
    if (!json.is_array()) refuse();
    for (const Json& pair : json) {
        K key{};
        take(pair.at(0), key);
        take(pair.at(1), map[key]);
    }
}

void take(const Json& json, Verdict& verdict) {
    bool isCertain = false;
    std::vector<std::string> reasons;
    take(json.at("certain"), isCertain);
    take(json.at("reasons"), reasons);
    verdict = isCertain ? Verdict::certain() : Verdict::needsLook(std::move(reasons));
}

void take(const Json& json, EditedDetails& edited) {
    if (!json.is_object()) refuse();
    forEachDetailsField([&](const char* name, auto field) {
        const auto found = json.find(name);
        if (found == json.end()) return;
        take(*found, edited.values.*field);
        edited.fields.insert(name);
    });
}

class Taker {
public:
    explicit Taker(const Json& from) : from_(from) {}
    template <typename T>
    void operator()(const char* name, T& value) {
        const auto found = from_.find(name);
        if (found != from_.end()) take(*found, value);
    }

private:
    const Json& from_;
};

template <typename T>
requires(std::is_class_v<T>) void take(const Json& json, T& value) {
    if (!json.is_object()) refuse();
    Taker taker(json);
    fields(taker, value);
}

/// Throws what the pieces throw.
void takeLine(const Json& json, Content& content) {
    if (const auto restore = json.find("restore"); restore != json.end()) {
        UnfinishedRestore record;
        take(*restore, record);
        if (record.file.empty()) refuse();
        content.restores.push_back(std::move(record));
        return;
    }
    Marked marked;
    take(json.at("mark"), marked.mark);
    take(json.at("queued"), marked.file.isQueued);
    if (const auto since = json.find("since"); since != json.end()) take(*since, marked.since);
    take(json.at("file"), marked.file);
    if (marked.file.resolved.file.url.empty()) refuse();
    content.files.push_back(std::move(marked));
}

}  // namespace

std::optional<Content> decode(ByteView text) {
    const Json json = Json::parse(text.begin(), text.end(), nullptr, false);
    if (!json.is_object() || json.value("version", Json()) != version) return std::nullopt;
    const auto work = json.find("work");
    if (work == json.end() || !work->is_array()) return std::nullopt;
    Content content;
    for (const Json& each : *work) {
        try {
            takeLine(each, content);
        } catch (const std::exception&) {
            // The others are as good as they were.
        }
    }
    return content;
}

}  // namespace marlet::UnfinishedJson
