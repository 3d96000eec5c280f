#include "write/restore_manifest.h"

#include <nlohmann/json.hpp>

namespace marlet::RestorePoints {

namespace {

using nlohmann::json;

/// nlohmann converts numbers freely; a position or a size must be a whole one from 0 on.
std::uint64_t wholeNumber(const json& value) {
    if (!value.is_number_unsigned()) throw json::other_error::create(501, "not a size", &value);
    return value.get<std::uint64_t>();
}

Manifest fromJson(const json& document) {
    Manifest manifest;
    manifest.path = document.at("path").get<std::string>();
    const auto date = Dates::parseIso8601(document.at("date").get<std::string>());
    if (!date) throw json::other_error::create(501, "not a date", &document);
    manifest.date = *date;
    manifest.fileSize = wholeNumber(document.at("fileSize"));
    manifest.ilstSHA256 = document.at("ilstSHA256").get<std::string>();
    const json& carried = document.at("carried");
    if (!carried.is_array()) throw json::other_error::create(501, "not a list", &carried);
    for (const json& item : carried)
        manifest.carried.push_back(
            {item.at("name").get<std::string>(), wholeNumber(item.at("index"))});
    return manifest;
}

}  // namespace

std::string encode(const Manifest& manifest) {
    json carried = json::array();
    for (const Carried& item : manifest.carried)
        carried.push_back({{"name", item.name}, {"index", item.index}});
    const json document = {{"path", manifest.path},
                           {"date", Dates::iso8601(manifest.date)},
                           {"fileSize", manifest.fileSize},
                           {"ilstSHA256", manifest.ilstSHA256},
                           {"carried", std::move(carried)}};
    return document.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

std::optional<Manifest> decodeManifest(ByteView text) {
    try {
        return fromJson(json::parse(text.begin(), text.end()));
    } catch (const json::exception&) {
        return std::nullopt;
    }
}

}  // namespace marlet::RestorePoints
