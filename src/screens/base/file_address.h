#pragma once

#include <QUrl>
#include <filesystem>
#include <optional>

namespace marlet {

/// Files as desktops hand them round: addresses of the scheme "file" (RFC 8089). What is encoded in
/// them by percent signs are the path's own bytes, so a name that isn't UTF-8 keeps them here and
/// would lose them in a QString.
namespace FileAddress {

/// The file's path; nothing for what isn't a file of this computer, or can't be a path.
std::optional<std::filesystem::path> pathOf(const QUrl& address);
QUrl of(const std::filesystem::path& path);

}  // namespace FileAddress
}  // namespace marlet
