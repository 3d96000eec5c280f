#include "screens/pictures/art_address.h"

#include <QByteArray>
#include <QStringList>

namespace marlet::ArtAddress {

namespace {

constexpr auto alphabet = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

QString encoded(const std::string& place) {
    return QString::fromLatin1(QByteArray::fromStdString(place).toBase64(alphabet));
}

QString address(const char* kind, const std::string& more, const std::string& place) {
    if (place.empty()) return {};
    return QStringLiteral("image://art/%1/%2/%3")
        .arg(QLatin1String(kind), QString::fromStdString(more), encoded(place));
}

std::optional<Art::Kind> kindOf(const QString& word) {
    if (word == QLatin1String("remote")) return Art::Kind::remote;
    if (word == QLatin1String("saved")) return Art::Kind::saved;
    if (word == QLatin1String("inFile")) return Art::Kind::inFile;
    return std::nullopt;
}

}  // namespace

QString remote(const std::string& path, const std::string& size) {
    return address("remote", size, path);
}

QString remote(const std::optional<std::string>& path, const std::string& size) {
    return path ? remote(*path, size) : QString();
}

QString saved(const std::filesystem::path& file) {
    return address("saved", "", file.string());
}

QString inFile(const std::filesystem::path& file, const std::string& stamp) {
    return address("inFile", stamp, file.string());
}

std::optional<Art> parse(const QString& id) {
    const QStringList parts = id.split(u'/');
    if (parts.size() != 3) return std::nullopt;
    const auto kind = kindOf(parts[0]);
    const auto place = QByteArray::fromBase64Encoding(
        parts[2].toLatin1(), alphabet | QByteArray::AbortOnBase64DecodingErrors);
    if (!kind || !place || place.decoded.isEmpty()) return std::nullopt;
    return Art{*kind, parts[1].toStdString(), place.decoded.toStdString()};
}

}  // namespace marlet::ArtAddress
