#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>

namespace marlet {

/// Memory for bulk reading and writing, aligned to 4,096 bytes as direct transfers like it.
class AlignedBuffer {
public:
    static constexpr std::size_t alignment = 4096;

    explicit AlignedBuffer(std::size_t size)
        : bytes_(static_cast<std::uint8_t*>(::operator new (size, std::align_val_t{alignment}))),
          size_(size) {}

    std::span<std::uint8_t> bytes() const { return {bytes_.get(), size_}; }

private:
    struct Free {
        void operator()(std::uint8_t* bytes) const {
            ::operator delete (bytes, std::align_val_t{alignment});
        }
    };
    std::unique_ptr<std::uint8_t, Free> bytes_;
    std::size_t size_;
};

}  // namespace marlet
