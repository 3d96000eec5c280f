#pragma once

#include <memory>
#include <optional>
#include <string>

#include "support/process.h"

namespace marlet::test {

/// A screen that nobody sees, 1280 x 900: an X server in memory, for as long as this lives. It has
/// no window manager, so a window stands at the top left and has no frame.
class XDisplay {
public:
    XDisplay();
    XDisplay(const XDisplay&) = delete;
    XDisplay& operator=(const XDisplay&) = delete;

    /// Why there can be none on this machine; nothing when there can.
    static std::optional<std::string> missing();
    /// As in DISPLAY.
    const std::string& name() const { return name_; }

private:
    std::unique_ptr<Process> server_;
    std::string name_;
};

}  // namespace marlet::test
