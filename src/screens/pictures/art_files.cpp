#include "screens/pictures/art_files.h"

#include <sys/stat.h>

#include "foundation/file_ops.h"
#include "foundation/paths.h"
#include "screens/pictures/picture_decoder.h"
#include "write/present_details.h"

namespace marlet {

namespace {

HttpRequest requestFor(const std::string& url) {
    HttpRequest request;
    request.url = url;
    return request;
}

}  // namespace

// The bytes of a picture are looked at once and its pixels are kept elsewhere, so none in memory.
ArtFiles::ArtFiles() : cache_(Paths::tmdbCacheDir(), KeylessCache::Capacity{.memory = 0}) {}

std::string ArtFiles::stampOf(const std::filesystem::path& file) {
    struct stat found = {};
    if (::stat(file.c_str(), &found) != 0 || !S_ISREG(found.st_mode)) return {};
    return std::to_string(found.st_size) + "-" + std::to_string(found.st_mtim.tv_sec) + "-" +
           std::to_string(found.st_mtim.tv_nsec) + "-" + std::to_string(found.st_ino);
}

QImage ArtFiles::local(const Art& art, const QSize& wanted) {
    if (art.kind == Art::Kind::saved) {
        const auto bytes = FileOps::readSmall(art.place, PictureDecoder::mostBytes);
        return bytes ? PictureDecoder::decode(*bytes, wanted) : QImage();
    }
    const auto cover = PresentDetails::read(art.place).cover;
    return cover ? PictureDecoder::decode(*cover, wanted) : QImage();
}

QImage ArtFiles::fetched(const std::string& url, const QSize& wanted) {
    std::optional<HttpAnswer> answer;
    {
        const std::lock_guard guard(lock_);
        answer = cache_.find(requestFor(url));
    }
    return answer ? PictureDecoder::decode(answer->body, wanted) : QImage();
}

QImage ArtFiles::take(const std::string& url, const HttpAnswer& answer, const QSize& wanted) {
    QImage image = PictureDecoder::decode(answer.body, wanted);
    if (image.isNull()) return image;
    const std::lock_guard guard(lock_);
    cache_.store(requestFor(url), answer);
    return image;
}

}  // namespace marlet
