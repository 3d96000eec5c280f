#pragma once

#include <QImage>
#include <QString>
#include <cstdint>
#include <list>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace marlet {

/// Decoded pictures, those used last, up to so many bytes in all. Any thread.
class ArtMemory {
public:
    explicit ArtMemory(std::int64_t bytes) : capacity_(bytes) {}

    /// A null image when it isn't there.
    QImage find(const QString& key) {
        const std::lock_guard guard(lock_);
        const auto found = byKey_.find(key);
        if (found == byKey_.end()) return {};
        pictures_.splice(pictures_.begin(), pictures_, found->second);
        return found->second->image;
    }
    /// A picture larger than all the room isn't kept.
    void keep(const QString& key, const QImage& image) {
        const std::lock_guard guard(lock_);
        if (const auto old = byKey_.find(key); old != byKey_.end()) letGo(old->second);
        if (image.sizeInBytes() > capacity_) return;
        pictures_.push_front({key, image});
        byKey_[key] = pictures_.begin();
        used_ += image.sizeInBytes();
        while (used_ > capacity_) letGo(std::prev(pictures_.end()));
    }
    std::int64_t used() const {
        const std::lock_guard guard(lock_);
        return used_;
    }

private:
    struct Held {
        QString key;
        QImage image;
    };
    using Place = std::list<Held>::iterator;

    void letGo(Place place) {
        used_ -= place->image.sizeInBytes();
        byKey_.erase(place->key);
        pictures_.erase(place);
    }

    mutable std::mutex lock_;
    const std::int64_t capacity_;
    std::int64_t used_ = 0;
    std::list<Held> pictures_;  ///< last used first
    std::unordered_map<QString, Place> byKey_;
};

}  // namespace marlet
