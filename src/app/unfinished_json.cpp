#include "app/unfinished_json.h"

#include <cmath>
#include <nlohmann/json.hpp>
#include <utility>

#include "app/unfinished_fields.h"
#include "foundation/text.h"

namespace marlet::UnfinishedJson {

namespace {

using Json = nlohmann::json;
namespace fs = std::filesystem;

std::string readable(const std::string& text) {
    return Text::repairUtf8(viewOf(text));
}

// Declared before what they use of each other.
Json jsonOf(const std::string& text);
Json jsonOf(const fs::path& path);
Json jsonOf(const Verdict& verdict);
Json jsonOf(const EditedDetails& edited);
template <typename T>
Json jsonOf(const std::optional<T>& value);
template <typename T>
Json jsonOf(const std::vector<T>& list);
template <typename K, typename V>
Json jsonOf(const std::map<K, V>& map);
template <typename T>
Json jsonOf(const T& value);

Json jsonOf(const std::string& text) {
    return readable(text);
}

/// A name that is no text stands there by its bytes.
Json jsonOf(const fs::path& path) {
    if (readable(path.native()) == path.native()) return path.native();
    return Json{{"bytes", toHex(viewOf(path.native()))}};
}

Json jsonOf(const Verdict& verdict) {
    return Json{{"certain", verdict.isCertain()}, {"reasons", jsonOf(verdict.reasons())}};
}

Json jsonOf(const EditedDetails& edited) {
    Json json = Json::object();
    forEachDetailsField([&](const char* name, auto field) {
        if (edited.fields.contains(name)) json[name] = jsonOf(edited.values.*field);
    });
    return json;
}

template <typename T>
Json jsonOf(const std::optional<T>& value) {
    return value ? jsonOf(*value) : Json();
}

template <typename T>
Json jsonOf(const std::vector<T>& list) {
    Json json = Json::array();
    for (const T& each : list) json.push_back(jsonOf(each));
    return json;
}

/// A list of pairs, since not every key is a text.
template <typename K, typename V>
Json jsonOf(const std::map<K, V>& map) {
    Json json = Json::array();
    for (const auto& [key, value] : map) json.push_back({jsonOf(key), jsonOf(value)});
    return json;
}

class Putter {
public:
    explicit Putter(Json& to) : to_(to) {}
    template <typename T>
    void operator()(const char* name, const T& value) {
        if (value == T{}) return;
        Json json = jsonOf(value);
        if (!json.is_null()) to_[name] = std::move(json);
    }

private:
    Json& to_;
};

template <typename T>
Json jsonOf(const T& value) {
    if constexpr (std::is_enum_v<T>) {
        return namesOf<T>.at(static_cast<std::size_t>(value));
    } else if constexpr (std::is_floating_point_v<T>) {
        // There is no text for the others, which tell nothing either.
        return std::isfinite(value) ? Json(value) : Json();
    } else if constexpr (std::is_arithmetic_v<T>) {
        return value;
    } else {
        Json json = Json::object();
        Putter putter(json);
        fields(putter, value);
        return json;
    }
}

std::string dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string encode(const UnfinishedFile& file) {
    return dump(jsonOf(file));
}

std::string line(const std::string& record, const FilmMark& mark, bool isQueued,
                 std::int64_t since) {
    return R"({"queued":)" + std::string(isQueued ? "true" : "false") + R"(,"since":)" +
           std::to_string(since) + R"(,"mark":)" + dump(jsonOf(mark)) + R"(,"file":)" + record +
           "}";
}

std::string line(const UnfinishedRestore& restore) {
    return dump(Json{{"restore", jsonOf(restore)}});
}

std::string document(const std::vector<std::string>& lines) {
    return "{\"version\":" + std::to_string(version) + ",\"work\":[\n" + Text::join(lines, ",\n") +
           "\n]}\n";
}

}  // namespace marlet::UnfinishedJson
