#include "convert/pgs_displays.h"

#include <algorithm>
#include <utility>

namespace marlet {

void PGSDisplays::frame(ByteView segments, std::int64_t ms, const Body& body) {
    while (const auto segment = PGSSegments::next(segments)) {
        switch (segment->type) {
            case PGSSegments::Type::Palette:
                PGSSegments::readPalette(segment->payload, palette_);
                break;
            case PGSSegments::Type::Object:
                if (const auto part = PGSSegments::readObject(segment->payload))
                    objects_.add(*part);
                break;
            case PGSSegments::Type::Composition:
                compose(segment->payload);
                break;
            case PGSSegments::Type::End:
                show(ms, body);
                break;
        }
    }
}

void PGSDisplays::compose(ByteView payload) {
    auto composition = PGSSegments::readComposition(payload);
    if (!composition) return;
    if (composition->startsEpoch) {
        palette_.fill(0);
        objects_.clear();
    }
    pending_ = std::move(composition);
}

void PGSDisplays::show(std::int64_t ms, const Body& body) {
    if (!pending_) return;
    std::optional<Display> ended = std::exchange(shown_, std::nullopt);
    if (!pending_->objects.empty()) shown_ = pendingDisplay(ms);
    pending_.reset();
    if (!ended || ended->event.startMs >= ms) return;

    PGSParser::Event& event = ended->event;
    event.endMs = ms;
    std::size_t left = PGSParser::mostPixels;
    for (const PGSParser::Obj& object : event.objects) {
        const auto picture = ended->pictures.find(object.id);
        if (picture == ended->pictures.end() || event.bitmaps.contains(object.id)) continue;
        PGSParser::Bitmap bitmap = picture->second->bitmap(left);
        if (bitmap.idx.empty()) continue;
        left -= bitmap.idx.size();
        event.bitmaps.emplace(object.id, std::move(bitmap));
    }
    body(std::move(event));
}

PGSDisplays::Display PGSDisplays::pendingDisplay(std::int64_t ms) const {
    Display display;
    PGSParser::Event& event = display.event;
    event.startMs = ms;
    event.endMs = ms;
    event.objects = pending_->objects;
    event.palette = palette_;
    event.forced = std::any_of(event.objects.begin(), event.objects.end(),
                               [](const PGSParser::Obj& object) { return object.forced; });
    for (const PGSParser::Obj& object : event.objects)
        if (auto picture = objects_.picture(object.id))
            display.pictures.try_emplace(object.id, std::move(picture));
    return display;
}

}  // namespace marlet
