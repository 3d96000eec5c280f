#include "app/history_json.h"

#include <nlohmann/json.hpp>

#include "foundation/text.h"

namespace marlet::HistoryJson {

namespace {

using Json = nlohmann::ordered_json;

std::string readable(const std::string& text) {
    return Text::repairUtf8(viewOf(text));
}

template <typename T>
void put(Json& json, const char* key, const std::optional<T>& value) {
    if (!value) return;
    if constexpr (std::is_same_v<T, std::string>)
        json[key] = readable(*value);
    else
        json[key] = *value;
}

template <typename T>
void take(const Json& json, const char* key, std::optional<T>& value) {
    const auto found = json.find(key);
    if (found != json.end() && !found->is_null()) value = found->get<T>();
}

Bytes fromHex(const std::string& hex) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    return bytes;
}

Json encodeEntry(const HistoryEntry& entry) {
    Json json;
    json["id"] = entry.id;
    json["date"] = Dates::iso8601(entry.date);
    json["path"] = readable(entry.path);
    if (json["path"].get_ref<const std::string&>() != entry.path)
        json["pathBytes"] = toHex(viewOf(entry.path));
    json["title"] = readable(entry.title);
    put(json, "show", entry.show);
    put(json, "season", entry.season);
    put(json, "episode", entry.episode);
    json["isMovie"] = entry.isMovie;
    json["result"] = entry.result;
    put(json, "before", entry.before);
    put(json, "after", entry.after);
    json["changes"] = Json::array();
    for (const std::string& change : entry.changes) json["changes"].push_back(readable(change));
    json["message"] = readable(entry.message);
    json["size"] = entry.size;
    put(json, "batchID", entry.batchID);
    put(json, "isRestore", entry.isRestore);
    put(json, "posterPath", entry.posterPath);
    put(json, "year", entry.year);
    put(json, "how", entry.how);
    put(json, "summary", entry.summary);
    return json;
}

/// Throws whatever the JSON library throws on a missing or odd field.
HistoryEntry decodeEntry(const Json& json) {
    HistoryEntry entry;
    entry.id = json.at("id").get<std::string>();
    const auto date = Dates::parseIso8601(json.at("date").get<std::string>());
    if (!date) throw std::invalid_argument("date");
    entry.date = *date;
    entry.path = json.at("path").get<std::string>();
    if (json.contains("pathBytes"))
        entry.path = textOf(fromHex(json["pathBytes"].get<std::string>()));
    entry.title = json.at("title").get<std::string>();
    take(json, "show", entry.show);
    take(json, "season", entry.season);
    take(json, "episode", entry.episode);
    entry.isMovie = json.at("isMovie").get<bool>();
    entry.result = json.at("result").get<std::string>();
    take(json, "before", entry.before);
    take(json, "after", entry.after);
    entry.changes = json.at("changes").get<std::vector<std::string>>();
    entry.message = json.at("message").get<std::string>();
    entry.size = json.at("size").get<std::uint64_t>();
    take(json, "batchID", entry.batchID);
    take(json, "isRestore", entry.isRestore);
    take(json, "posterPath", entry.posterPath);
    take(json, "year", entry.year);
    take(json, "how", entry.how);
    take(json, "summary", entry.summary);
    return entry;
}

}  // namespace

std::string encode(const HistoryEntry& entry) {
    return encodeEntry(entry).dump(2);
}

std::string array(const std::vector<std::string>& encoded) {
    return "[\n" + Text::join(encoded, ",\n") + "\n]";
}

std::optional<std::vector<HistoryEntry>> decode(ByteView text) {
    try {
        const Json json = Json::parse(text.begin(), text.end());
        if (!json.is_array()) return std::nullopt;
        std::vector<HistoryEntry> entries;
        entries.reserve(json.size());
        for (const Json& each : json) entries.push_back(decodeEntry(each));
        return entries;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

}  // namespace marlet::HistoryJson
