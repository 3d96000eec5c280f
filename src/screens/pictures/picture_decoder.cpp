#include "screens/pictures/picture_decoder.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <algorithm>
#include <array>
#include <initializer_list>

namespace marlet::PictureDecoder {

namespace {

bool hasAt(ByteView data, std::size_t at, std::string_view magic) {
    return data.size() >= at + magic.size() &&
           std::equal(magic.begin(), magic.end(), data.begin() + static_cast<std::ptrdiff_t>(at),
                      [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
}

/// What is decoded at all: vector formats and the rare ones stay outside.
const char* formatOf(ByteView data) {
    if (hasAt(data, 0, "\xFF\xD8\xFF")) return "jpeg";
    if (hasAt(data, 0, "\x89PNG\r\n\x1A\n")) return "png";
    if (hasAt(data, 0, "RIFF") && hasAt(data, 8, "WEBP")) return "webp";
    if (hasAt(data, 0, "BM")) return "bmp";
    return nullptr;
}

/// Where the first scan of a JPEG begins (ITU-T T.81, B.1): segments tell their lengths up to
/// there. The end of the data when there is none.
std::size_t scanOf(ByteView data) {
    std::size_t at = 2;
    while (at + 4 <= data.size() && data[at] == 0xFF) {
        if (data[at + 1] == 0xFF) {  // padding
            ++at;
            continue;
        }
        if (data[at + 1] == 0xDA) return at;
        at += 2 + (std::size_t{data[at + 2]} << 8 | data[at + 3]);
    }
    return data.size();
}

/// A JPEG without its end would be shown grey from there on. A small picture in its header has an
/// end of its own, so only what lies behind the header counts.
bool isCutJPEG(ByteView data) {
    constexpr std::array<std::uint8_t, 2> end = {0xFF, 0xD9};
    const auto body = data.subspan(std::min(scanOf(data), data.size()));
    // clang 14 has no std::ranges::search that it can compile.
    return std::search(body.begin(), body.end(), end.begin(), end.end()) == body.end();
}

bool isReasonable(const QSize& size) {
    return size.isValid() && !size.isEmpty() && size.width() <= longestSide &&
           size.height() <= longestSide && qint64{size.width()} * size.height() <= mostPixels;
}

/// The size to decode to.
QSize scaled(const QSize& size, QSize wanted) {
    if (wanted.width() <= 0 && wanted.height() <= 0) return size;
    if (wanted.width() <= 0) wanted.setWidth(1);
    if (wanted.height() <= 0) wanted.setHeight(1);
    const QSize covering = size.scaled(wanted, Qt::KeepAspectRatioByExpanding);
    if (covering.width() >= size.width()) return size;
    return covering.expandedTo(QSize(1, 1));
}

/// As the screen takes it without another pass over the pixels.
QImage forScreen(QImage image) {
    if (image.colorSpace().isValid() && image.colorSpace() != QColorSpace(QColorSpace::SRgb))
        image.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
    const auto format =
        image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
    image.convertTo(format);
    return image;
}

}  // namespace

QImage decode(ByteView data, const QSize& wanted) {
    const char* format = formatOf(data);
    if (format == nullptr || data.size() > mostBytes) return {};
    if (std::string_view(format) == "jpeg" && isCutJPEG(data)) return {};
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data.data()),
                                               static_cast<qsizetype>(data.size()));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, format);
    reader.setAutoDetectImageFormat(false);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (!isReasonable(size)) return {};
    const bool isTurned = reader.transformation() & QImageIOHandler::TransformationRotate90;
    const QSize target = scaled(size, isTurned ? wanted.transposed() : wanted);
    if (target != size) reader.setScaledSize(target);
    QImage image;
    if (!reader.read(&image) || image.isNull()) return {};
    return forScreen(std::move(image));
}

}  // namespace marlet::PictureDecoder
