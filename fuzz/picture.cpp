// Any bytes as a picture: the answer is a picture within the limits, or none.
#include <cstdlib>

#include "screens/pictures/picture_decoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace marlet;
    const QImage image = PictureDecoder::decode(ByteView(data, size), QSize(36, 0));
    if (image.isNull()) return 0;
    const qint64 pixels = qint64{image.width()} * image.height();
    if (pixels > PictureDecoder::mostPixels || image.width() > PictureDecoder::longestSide)
        std::abort();
    return 0;
}
