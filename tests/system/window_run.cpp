#include "system/window_run.h"

#include <fnmatch.h>
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <stdexcept>
#include <thread>

namespace marlet::test {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::seconds patience{60};

bool matches(const std::string& name, const std::string& pattern) {
    return fnmatch(pattern.c_str(), name.c_str(), FNM_NOESCAPE) == 0;
}

bool isButton(const Seen& seen) {
    static const std::set<std::string> roles = {"push button",   "button",   "page tab",
                                                "toggle button", "link",     "radio button",
                                                "check box",     "menu item"};
    return roles.contains(seen.role);
}

bool isRow(const Seen& seen) {
    return seen.role == "list item";
}

/// What only holds or decorates others has nothing to tell.
bool needsName(const Seen& seen) {
    static const std::set<std::string> mute = {"application", "panel",      "filler",
                                               "label",       "scroll bar", "image"};
    return !mute.contains(seen.role);
}

std::string described(const Seen& seen) {
    return seen.role + " “" + seen.name + "” at " + std::to_string(seen.x) + "," +
           std::to_string(seen.y) + " " + std::to_string(seen.width) + "x" +
           std::to_string(seen.height) + (seen.focused ? " focused" : "");
}

bool isAnything(const Seen&) {
    return true;
}

}  // namespace

std::optional<std::string> WindowRun::missing() {
    return XDisplay::missing();
}

WindowRun::WindowRun() : reader_(display_.name()), hand_(display_.name()) {
    for (const auto& [name, value] : reader_.environment()) ground_.environment[name] = value;
    ground_.environment["DISPLAY"] = display_.name();
    ground_.environment["QT_QPA_PLATFORM"] = "xcb";
    ground_.environment["QT_SCALE_FACTOR"] = "1";
    ground_.environment["HOLD_FILE"] = (folder_ / "hold").string();
    ground_.environment["LD_PRELOAD"] = builtProgram("libcrash_shim.so").string();
    // A build with the address sanitizer wants to be loaded first.
    ground_.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
}

fs::path WindowRun::data() const {
    return fs::path(std::getenv("XDG_DATA_HOME")) / "Marlet";
}

fs::path WindowRun::work() const {
    return fs::path(std::getenv("XDG_CACHE_HOME")) / "Marlet" / "work";
}

void WindowRun::start(const std::vector<std::string>& arguments) {
    program_ = ground_.start("marlet", arguments);
    until("the window", [&] { return (window_ = hand_.window("Marlet")) != 0; });
    hand_.focus(window_);
    see("Review, * ready");
}

std::string WindowRun::ended() {
    EXPECT_EQ(program_->wait(), 0);
    return program_->errors();
}

void WindowRun::until(const std::string& what, const std::function<bool()>& holds) {
    const auto end = Clock::now() + patience;
    while (!holds()) {
        if (program_->hasEnded())
            throw std::runtime_error("the program ended before " + what + ": " +
                                     program_->errors());
        if (Clock::now() > end)
            throw std::runtime_error("waited in vain for " + what + "; shown is\n" + screen());
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

std::optional<Seen> WindowRun::find(const std::string& name,
                                    const std::function<bool(const Seen&)>& fits) {
    for (const Seen& each : reader_.look())
        if (matches(each.name, name) && fits(each) && each.width > 0 && each.height > 0)
            return each;
    return std::nullopt;
}

Seen WindowRun::still(const std::string& name, const std::function<bool(const Seen&)>& fits) {
    std::optional<Seen> before;
    std::optional<Seen> now;
    until("“" + name + "”", [&] {
        before = now;
        now = find(name, fits);
        return now && now == before;
    });
    return *now;
}

Seen WindowRun::see(const std::string& name) {
    return still(name, isAnything);
}

void WindowRun::press(const std::string& name) {
    hand_.click(still(name, isButton).centre());
}

std::vector<std::string> WindowRun::nameless() {
    std::vector<std::string> found;
    const std::vector<Seen> shown = reader_.look();
    for (std::size_t i = 0; i < shown.size(); i++) {
        // Qt puts a dialog that it gives no name around each of ours.
        const bool isFrame = shown[i].role == "dialog" && i + 1 < shown.size() &&
                             shown[i + 1].role == "dialog" && !shown[i + 1].name.empty();
        if (shown[i].name.empty() && needsName(shown[i]) && !isFrame)
            found.push_back(described(shown[i]));
    }
    return found;
}

void WindowRun::pressRow(const std::string& name) {
    hand_.click(still(name, isRow).centre());
}

bool WindowRun::isShown(const std::string& name) {
    return find(name, isAnything).has_value();
}

std::string WindowRun::drag(const std::vector<std::string>& addresses) {
    const Point middle = see("Marlet").centre();
    std::vector<std::string> arguments = {std::to_string(middle.x), std::to_string(middle.y)};
    arguments.insert(arguments.end(), addresses.begin(), addresses.end());
    Process dragging(builtProgram("drag_files"), arguments, {{"DISPLAY", display_.name()}});
    dragging.wait();
    return dragging.output() + dragging.errors();
}

void WindowRun::holdWrites(const fs::path& start) {
    fs::remove(folder_ / "hold.held");
    // Whole at once, or a write could see half of the path.
    folder_.write("hold.new", std::string_view(start.string()));
    fs::rename(folder_ / "hold.new", folder_ / "hold");
}

void WindowRun::untilHeld() {
    until("a write to be held", [&] { return fs::exists(folder_ / "hold.held"); });
}

void WindowRun::letGo() {
    fs::remove(folder_ / "hold");
}

std::string WindowRun::screen() {
    std::string text;
    for (const Seen& each : reader_.look())
        text += std::string(static_cast<std::size_t>(2 * each.depth), ' ') + described(each) + "\n";
    return text;
}

}  // namespace marlet::test
