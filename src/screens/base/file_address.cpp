#include "screens/base/file_address.h"

#include <QByteArray>
#include <QSysInfo>

namespace marlet::FileAddress {

namespace {

bool isThisComputer(const QString& host) {
    return host.isEmpty() || host.compare(QStringLiteral("localhost"), Qt::CaseInsensitive) == 0 ||
           host.compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0;
}

}  // namespace

std::optional<std::filesystem::path> pathOf(const QUrl& address) {
    if (!address.isLocalFile() || !isThisComputer(address.host())) return std::nullopt;
    const QByteArray bytes =
        QByteArray::fromPercentEncoding(address.path(QUrl::FullyEncoded).toLatin1());
    // A path's end for the system; what stands behind it would be dropped in silence.
    if (!bytes.startsWith('/') || bytes.contains('\0')) return std::nullopt;
    return bytes.toStdString();
}

QUrl of(const std::filesystem::path& path) {
    // What may stand in a path as it is (RFC 3986, 3.3).
    constexpr const char* plain = "/!$&'()*+,;=:@";
    return QUrl::fromEncoded("file://" +
                             QByteArray::fromStdString(path.string()).toPercentEncoding(plain));
}

}  // namespace marlet::FileAddress
