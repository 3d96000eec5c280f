#include "convert/reading_crew.h"

#include <algorithm>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "convert/pgs_ocr.h"
#include "convert/picture_reader.h"

namespace marlet {

namespace {

constexpr unsigned mostReaders = 4;

/// The same for pictures that look the same. Discs repeat one whenever a player may join in.
std::array<std::uint8_t, 32> markOf(const PGSParser::Event& event) {
    Sha256 digest;
    const auto number = [&](std::int64_t value) {
        digest.update({reinterpret_cast<const std::uint8_t*>(&value), sizeof value});
    };
    digest.update({reinterpret_cast<const std::uint8_t*>(event.palette.data()),
                   event.palette.size() * sizeof event.palette[0]});
    // A bitmap by when it is first shown, whatever its id, and only then as a whole.
    std::map<int, std::int64_t> shown;
    for (const PGSParser::Obj& object : event.objects) {
        const auto bitmap = event.bitmaps.find(object.id);
        if (bitmap == event.bitmaps.end()) continue;
        const auto [place, isFirst] =
            shown.emplace(object.id, static_cast<std::int64_t>(shown.size()));
        number(place->second);
        number(object.x);
        number(object.y);
        if (!isFirst) continue;
        number(bitmap->second.w);
        number(bitmap->second.h);
        digest.update(bitmap->second.idx);
    }
    return digest.restart();
}

}  // namespace

ReadingCrew::ReadingCrew(std::string language, RunControl& control)
    : language_(std::move(language)),
      control_(control),
      most_(std::clamp(std::thread::hardware_concurrency(), 1U, mostReaders)),
      first_(PictureReader::open(language_)),
      canRead_(first_ != nullptr) {
    readers_.reserve(most_);
}

ReadingCrew::~ReadingCrew() {
    {
        const std::lock_guard guard(mutex_);
        isStopped_ = true;
        changed_.notify_all();
    }
    for (std::thread& reader : readers_) reader.join();
}

void ReadingCrew::hand(PGSParser::Event event) {
    bool isOneMore = false;
    {
        std::unique_lock guard(mutex_);
        changed_.wait(guard, [this] { return isStopped_ || waiting_.size() < most_; });
        throwFailure();
        lines_.push_back({.startMs = event.startMs, .endMs = event.endMs, .text = {}});
        waiting_.push_back({lines_.size() - 1, std::move(event)});
        isOneMore = readers_.size() < most_ && idle_ < waiting_.size();
        changed_.notify_all();
    }
    if (isOneMore) startReader();
}

void ReadingCrew::startReader() {
    try {
        readers_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
        // The system has no thread to give: those that there are read on.
        if (readers_.empty()) throw;
    }
}

std::vector<ReadingCrew::Line> ReadingCrew::finish() {
    {
        const std::lock_guard guard(mutex_);
        isComplete_ = true;
        changed_.notify_all();
    }
    for (std::thread& reader : readers_) reader.join();
    readers_.clear();
    throwFailure();
    return std::move(lines_);
}

void ReadingCrew::throwFailure() {
    if (failure_ != nullptr) std::rethrow_exception(failure_);
}

void ReadingCrew::work() {
    try {
        readAll();
    } catch (...) {
        const std::lock_guard guard(mutex_);
        if (failure_ == nullptr) failure_ = std::current_exception();
        isStopped_ = true;
        changed_.notify_all();
    }
}

std::unique_ptr<PictureReader> ReadingCrew::engine() {
    {
        const std::lock_guard guard(mutex_);
        if (first_ != nullptr) return std::move(first_);
    }
    return PictureReader::open(language_);
}

void ReadingCrew::readAll() {
    const std::unique_ptr<PictureReader> reader = engine();
    for (;;) {
        Waiting next;
        {
            std::unique_lock guard(mutex_);
            idle_++;
            changed_.wait(guard, [this] { return isStopped_ || isComplete_ || !waiting_.empty(); });
            idle_--;
            if (isStopped_ || waiting_.empty()) return;
            next = std::move(waiting_.front());
            waiting_.pop_front();
            changed_.notify_all();
        }
        control_.checkpoint();
        std::string text = textOf(reader.get(), next.event);
        const std::lock_guard guard(mutex_);
        lines_[next.index].text = std::move(text);
    }
}

std::string ReadingCrew::textOf(PictureReader* reader, const PGSParser::Event& event) {
    const Mark mark = markOf(event);
    {
        const std::lock_guard guard(mutex_);
        const auto known = known_.find(mark);
        if (known != known_.end()) return known->second;
    }
    std::string text;
    try {
        const std::optional<PGSOCR::Image> image = PGSOCR::image(event);
        if (image && reader != nullptr) {
            if (const auto result = reader->read(*image, &control_)) text = result->text;
        }
    } catch (const std::bad_alloc&) {
        // A picture too large for the memory that is left is one that can't be read.
    }
    const std::lock_guard guard(mutex_);
    known_.emplace(mark, text);
    return text;
}

}  // namespace marlet
