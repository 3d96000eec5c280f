#pragma once

#include <filesystem>

#include "demo_library/plan.h"

namespace marlet::demo {

/// Makes files of any length from one piece of ten seconds, repeated without encoding it again:
/// H.264 and AAC, very small and low, so that a film takes about a second and a few megabytes.
class Maker {
public:
    /// Makes the piece in a hidden folder of the library. Throws std::runtime_error when FFmpeg
    /// fails.
    explicit Maker(const std::filesystem::path& library);
    ~Maker();
    Maker(const Maker&) = delete;
    Maker& operator=(const Maker&) = delete;

    /// Writes the item into the library, over what stands there. May run in several threads.
    void make(const Item& item) const;

private:
    void write(const Item& item, const std::filesystem::path& file, std::uint64_t moovSize) const;

    std::filesystem::path library_;
    std::filesystem::path work_;
    std::filesystem::path piece_;
};

}  // namespace marlet::demo
