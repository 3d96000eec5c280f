#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

#include "convert/pgs_parser.h"
#include "convert/pgs_segments.h"
#include "foundation/bytes.h"

namespace marlet {

/// A whole picture as it was sent. What is collected for the object later changes nothing here.
class PGSPicture {
public:
    PGSPicture(std::shared_ptr<const Bytes> collected, int width, int height)
        : collected_(std::move(collected)), length_(collected_->size()), w_(width), h_(height) {}

    /// With so many pixels at most; the lowest rows go first. A picture larger than any screen
    /// loses what nothing was sent for, since its size is likely to lie. Without pixels when
    /// nothing is left.
    PGSParser::Bitmap bitmap(std::size_t mostPixels) const;
    const std::shared_ptr<const Bytes>& collected() const { return collected_; }

private:
    std::shared_ptr<const Bytes> collected_;
    std::size_t length_;
    int w_;
    int h_;
};

/// The objects of an epoch: what was sent of each so far, and its picture once that was whole.
/// Pictures wait as run lengths, since most are small that way and some are never shown.
class PGSObjects {
public:
    /// Bytes of run lengths that are held. A disc's player has room for one MiB.
    static constexpr std::size_t mostBytes = std::size_t{64} << 20;

    void add(const PGSSegments::ObjectPart& part);
    void clear();
    /// Nothing for an object without a whole picture.
    std::shared_ptr<const PGSPicture> picture(int id) const;

private:
    struct Object {
        int width = 0;
        int height = 0;
        std::shared_ptr<Bytes> collected = std::make_shared<Bytes>();
        std::shared_ptr<const PGSPicture> whole;
        std::uint64_t begun = 0;  ///< its place in `order_`

        std::size_t bytes() const;
    };

    Object& begin(const PGSSegments::ObjectPart& part);
    void makeRoom(int id, std::size_t count);

    std::map<int, Object> objects_;
    std::map<std::uint64_t, int> order_;  // the object begun first stands first
    std::uint64_t begun_ = 0;
    std::size_t bytes_ = 0;  // of all
};

}  // namespace marlet
