#include "app/history_json.h"

#include <nlohmann/json.hpp>

#include "app/history_fields.h"
#include "foundation/text.h"

namespace marlet::HistoryJson {

namespace {

using Json = nlohmann::ordered_json;

Json valueOf(const std::string& text) {
    return Text::repairUtf8(viewOf(text));
}

Json valueOf(Moment date) {
    return Dates::iso8601(date);
}

Json valueOf(const std::vector<std::string>& texts) {
    Json list = Json::array();
    for (const std::string& text : texts) list.push_back(valueOf(text));
    return list;
}

template <typename T>
Json valueOf(const T& value) {
    if constexpr (isOptional<T>)
        return valueOf(*value);
    else
        return value;
}

}  // namespace

std::string encode(const HistoryEntry& entry) {
    Json json;
    const auto put = [&](std::string_view name, const auto& value) {
        if constexpr (isOptional<std::remove_cvref_t<decltype(value)>>)
            if (!value) return;
        json[std::string(name)] = valueOf(value);
    };
    for (const Field& field : fields) {
        std::visit([&](auto member) { put(field.name, entry.*member); }, field.member);
        if (field.name == "path" && json["path"].get_ref<const std::string&>() != entry.path)
            json[std::string(pathBytes)] = toHex(viewOf(entry.path));
    }
    return json.dump();
}

std::string encode(const HistoryList& entries) {
    std::string text = "[";
    for (const HistoryEntry& entry : entries) {
        text += text.size() == 1 ? "\n" : ",\n";
        text += encode(entry);
    }
    return text + "\n]";
}

}  // namespace marlet::HistoryJson
