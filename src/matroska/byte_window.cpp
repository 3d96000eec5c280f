#include "matroska/byte_window.h"

#include <algorithm>

#include "foundation/syscalls.h"

namespace marlet {

namespace {

/// A page: what lies this close behind the window was read from the disk with it.
constexpr std::uint64_t nearBy = 4096;

}  // namespace

std::size_t readWhatIsThere(int fd, std::uint64_t at, std::span<std::uint8_t> into) {
    std::size_t done = 0;
    while (done < into.size()) {
        const ssize_t got = Sys::pread(fd, into.data() + done, into.size() - done, at + done);
        if (got < 1) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

ByteWindow::ByteWindow(int fd, std::uint64_t fileSize, Reach reach)
    : fd_(fd), fileSize_(fileSize), reach_(reach), ahead_(reach.least) {}

bool ByteWindow::isNear(std::uint64_t offset) const {
    return have_ > 0 && offset >= start_ && offset - start_ <= have_ + nearBy;
}

ByteView ByteWindow::at(std::uint64_t offset, std::size_t count) {
    if (offset >= fileSize_) return {};
    const std::uint64_t left = fileSize_ - offset;
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, left));
    const bool inside =
        offset >= start_ && offset - start_ <= have_ && have_ - (offset - start_) >= wanted;
    if (!inside) {
        ahead_ = isNear(offset) ? std::min(ahead_ * 2, reach_.most) : reach_.least;
        const auto length = std::min<std::uint64_t>(std::max(wanted, ahead_), left);
        if (buffer_.size() < length) buffer_.resize(static_cast<std::size_t>(length));
        start_ = offset;
        have_ = readWhatIsThere(fd_, offset,
                                std::span(buffer_).first(static_cast<std::size_t>(length)));
    }
    const auto from = static_cast<std::size_t>(offset - start_);
    return ByteView(buffer_).subspan(from, std::min(wanted, have_ - from));
}

}  // namespace marlet
