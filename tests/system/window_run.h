#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "system/program_run.h"
#include "system/screen_reader.h"
#include "system/x_display.h"
#include "system/x_hand.h"

namespace marlet::test {

/// The real program with a real window on a display of its own, and a person before it: what they
/// see is what a screen reader is told, what they do is done by pointer and keys. Names are
/// patterns as of a shell ("Queue, * waiting"). Whoever waits in vain throws, with what is shown.
class WindowRun {
public:
    WindowRun();
    /// Why there can be none on this machine; nothing when there can.
    static std::optional<std::string> missing();

    ProgramRun& ground() { return ground_; }
    std::filesystem::path library() const { return ground_.library(); }
    std::filesystem::path data() const;
    std::filesystem::path work() const;

    /// Starts the program and waits until its window is there.
    void start(const std::vector<std::string>& arguments = {});
    Process& program() { return *program_; }
    XHand& hand() { return hand_; }
    /// The window's close button.
    void close() { hand_.close(window_); }
    /// Waits for its end: what it said on the standard error stream. It has to end with 0.
    std::string ended();

    /// What is shown under that name, once it is there and stands still.
    Seen see(const std::string& name);
    /// The same of buttons, tabs and the like, pressed by the pointer. Whether they can be isn't
    /// told: Qt 6.4 keeps it from screen readers.
    void press(const std::string& name);
    void pressRow(const std::string& name);
    bool isShown(const std::string& name);
    /// The controls that are shown and have no name: a screen reader would have nothing to say.
    std::vector<std::string> nameless();
    void until(const std::string& what, const std::function<bool()>& holds);
    /// Drags from another program onto the middle of the window; what came of it.
    std::string drag(const std::vector<std::string>& addresses);

    /// From now on a write to a file whose path begins so doesn't return.
    void holdWrites(const std::filesystem::path& start);
    /// Waits until one is held.
    void untilHeld();
    void letGo();

    /// All that is shown, for a person who reads why a test failed.
    std::string screen();

private:
    std::optional<Seen> find(const std::string& name, const std::function<bool(const Seen&)>& fits);
    Seen still(const std::string& name, const std::function<bool(const Seen&)>& fits);

    ProgramRun ground_;
    TempFolder folder_;
    XDisplay display_;
    ScreenReader reader_;
    XHand hand_;
    std::unique_ptr<Process> program_;
    std::uint32_t window_ = 0;
};

}  // namespace marlet::test
