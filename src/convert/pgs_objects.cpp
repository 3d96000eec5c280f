#include "convert/pgs_objects.h"

#include <algorithm>

#include "convert/pgs_runs.h"

namespace marlet {

namespace {

/// Of a screen with twice the lines of high definition. Nothing larger is meant to be.
constexpr std::size_t pixelsOfAScreen = std::size_t{3840} * 2160;

std::size_t area(int width, int height) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

}  // namespace

PGSParser::Bitmap PGSPicture::bitmap(std::size_t mostPixels) const {
    const ByteView runs = ByteView(*collected_).first(length_);
    int width = w_;
    int height = h_;
    if (area(width, height) > pixelsOfAScreen) {
        const PGSRuns::Extent extent = PGSRuns::extent(runs, width, height);
        width = extent.columns;
        height = extent.rows;
    }
    if (width == 0 || height == 0) return {};
    const std::size_t rows = mostPixels / static_cast<std::size_t>(width);
    if (rows < static_cast<std::size_t>(height)) height = static_cast<int>(rows);
    if (height == 0) return {};
    return {width, height, PGSParser::decodeRLE(runs, width, height)};
}

std::size_t PGSObjects::Object::bytes() const {
    const bool isApart = whole && whole->collected() != collected;
    return collected->size() + (isApart ? whole->collected()->size() : 0);
}

void PGSObjects::add(const PGSSegments::ObjectPart& part) {
    Object& object = begin(part);
    makeRoom(part.id, part.runs.size());
    bytes_ -= object.bytes();
    if (part.runs.size() <= mostBytes - std::min(mostBytes, bytes_ + object.bytes()))
        append(*object.collected, part.runs);
    if (part.isLast) {
        object.whole.reset();
        if (area(object.width, object.height) > 0)
            object.whole =
                std::make_shared<PGSPicture>(object.collected, object.width, object.height);
    }
    bytes_ += object.bytes();
}

/// The object that the part belongs to, ready to take it.
PGSObjects::Object& PGSObjects::begin(const PGSSegments::ObjectPart& part) {
    const auto [found, isNew] = objects_.try_emplace(part.id);
    Object& object = found->second;
    if (!isNew && !part.isFirst) return object;
    order_.erase(object.begun);
    object.begun = ++begun_;
    order_.emplace(object.begun, part.id);
    if (!part.isFirst) return object;
    bytes_ -= object.bytes();
    object.width = part.width;
    object.height = part.height;
    object.collected = std::make_shared<Bytes>();
    bytes_ += object.bytes();
    return object;
}

/// An epoch that never ends keeps its latest objects. The one that asks stays in any case.
void PGSObjects::makeRoom(int id, std::size_t count) {
    for (auto oldest = order_.begin(); oldest != order_.end() && bytes_ + count > mostBytes;) {
        if (oldest->second == id) {
            ++oldest;
            continue;
        }
        const auto object = objects_.find(oldest->second);
        bytes_ -= object->second.bytes();
        objects_.erase(object);
        oldest = order_.erase(oldest);
    }
}

void PGSObjects::clear() {
    objects_.clear();
    order_.clear();
    bytes_ = 0;
}

std::shared_ptr<const PGSPicture> PGSObjects::picture(int id) const {
    const auto found = objects_.find(id);
    return found == objects_.end() ? nullptr : found->second.whole;
}

}  // namespace marlet
