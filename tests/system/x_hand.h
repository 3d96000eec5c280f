#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct xcb_connection_t;

namespace marlet::test {

struct Point {
    int x = 0;
    int y = 0;
};

/// A person's hand at an X display: the pointer and the keys, through the XTEST extension, so that
/// a program can't tell it from a real one; and the little of a window manager that a person needs.
class XHand {
public:
    explicit XHand(const std::string& display);
    ~XHand();
    XHand(const XHand&) = delete;
    XHand& operator=(const XHand&) = delete;

    /// The window of that title once it is shown; 0 before.
    std::uint32_t window(const std::string& title);
    /// Gives it the keyboard.
    void focus(std::uint32_t window);
    /// As its close button does.
    void close(std::uint32_t window);

    void click(Point at, int button = 1);
    void type(const std::string& ascii);
    /// Such as "ctrl+o", "Return", "ctrl+alt+i".
    void press(const std::string& keys);

private:
    struct Key {
        std::uint8_t code = 0;
        bool shifted = false;
    };
    Key keyFor(std::uint32_t symbol) const;
    void send(int kind, int detail, Point at = {});
    std::uint32_t atom(const std::string& name);
    std::string text(std::uint32_t window, std::uint32_t property);

    xcb_connection_t* connection_ = nullptr;
    std::uint32_t root_ = 0;
    int firstKey_ = 0;
    int symbolsEach_ = 0;
    std::vector<std::uint32_t> symbols_;
};

}  // namespace marlet::test
