#pragma once

#include <QString>
#include <filesystem>
#include <optional>
#include <string>

namespace marlet {

/// What a picture on a screen is of: one of a catalogue, a file of ours, or the cover that lies in
/// an MP4 now.
struct Art {
    enum class Kind { remote, saved, inFile };
    Kind kind = Kind::remote;
    std::string size;   ///< for remote: the width that the image service shall send ("w185")
    std::string place;  ///< a service's path or full address, or a file's path
    bool operator==(const Art&) const = default;
};

/// The address under which QML asks for a picture ("image://art/..."). A place may hold any bytes,
/// as file names do, so it stands there as base64. Nothing to show has an empty address.
namespace ArtAddress {

/// A path of the image service ("/abc.jpg"), or a full address, which knows no sizes.
QString remote(const std::string& path, const std::string& size);
QString remote(const std::optional<std::string>& path, const std::string& size);
QString saved(const std::filesystem::path& file);
/// The cover in an MP4. A stamp that changes with the file lets a view see that.
QString inFile(const std::filesystem::path& file, const std::string& stamp = {});

/// From an address without "image://art/"; nothing for what none of the above made.
std::optional<Art> parse(const QString& id);

}  // namespace ArtAddress
}  // namespace marlet
