#include "system/x_hand.h"

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>

#include "foundation/text.h"

namespace marlet::test {

namespace {

template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;

template <typename Reply>
Owned<Reply> owned(Reply* reply) {
    return {reply, &std::free};
}

/// Symbols of keys that aren't letters, as X names and numbers them.
const std::map<std::string, std::uint32_t>& namedKeys() {
    static const std::map<std::string, std::uint32_t> keys = {
        {"ctrl", 0xffe3}, {"alt", 0xffe9},  {"shift", 0xffe1}, {"Return", 0xff0d},
        {"Tab", 0xff09},  {"Down", 0xff54}, {"Up", 0xff52},    {"Escape", 0xff1b},
        {"space", 0x20},  {"F1", 0xffbe},   {"F2", 0xffbf}};
    return keys;
}

std::uint32_t symbolOf(const std::string& key) {
    if (key.size() == 1) return static_cast<unsigned char>(key[0]);
    return namedKeys().at(key);
}

}  // namespace

XHand::XHand(const std::string& display) {
    int screen = 0;
    connection_ = xcb_connect(display.c_str(), &screen);
    if (xcb_connection_has_error(connection_) != 0)
        throw std::runtime_error("cannot reach display " + display);
    const xcb_setup_t* const setup = xcb_get_setup(connection_);
    root_ = xcb_setup_roots_iterator(setup).data->root;
    firstKey_ = setup->min_keycode;
    const auto map = owned(xcb_get_keyboard_mapping_reply(
        connection_,
        xcb_get_keyboard_mapping(
            connection_, setup->min_keycode,
            static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1)),
        nullptr));
    symbolsEach_ = map->keysyms_per_keycode;
    const std::uint32_t* const first = xcb_get_keyboard_mapping_keysyms(map.get());
    symbols_.assign(first, first + xcb_get_keyboard_mapping_keysyms_length(map.get()));
}

XHand::~XHand() {
    xcb_disconnect(connection_);
}

std::uint32_t XHand::atom(const std::string& name) {
    const auto reply = owned(xcb_intern_atom_reply(
        connection_,
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
        nullptr));
    return reply->atom;
}

std::string XHand::text(std::uint32_t window, std::uint32_t property) {
    const auto reply = owned(xcb_get_property_reply(
        connection_, xcb_get_property(connection_, 0, window, property, XCB_ATOM_ANY, 0, 256),
        nullptr));
    if (reply == nullptr) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

std::uint32_t XHand::window(const std::string& title) {
    const std::uint32_t name = atom("_NET_WM_NAME");
    const auto tree =
        owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root_), nullptr));
    const xcb_window_t* const children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); i++) {
        const auto state = owned(xcb_get_window_attributes_reply(
            connection_, xcb_get_window_attributes(connection_, children[i]), nullptr));
        if (state != nullptr && state->map_state == XCB_MAP_STATE_VIEWABLE &&
            text(children[i], name) == title)
            return children[i];
    }
    return 0;
}

void XHand::focus(std::uint32_t window) {
    xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    xcb_flush(connection_);
}

void XHand::close(std::uint32_t window) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom("WM_PROTOCOLS");
    event.data.data32[0] = atom("WM_DELETE_WINDOW");
    event.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(connection_, 0, window, 0, reinterpret_cast<const char*>(&event));
    xcb_flush(connection_);
}

void XHand::send(int kind, int detail, Point at) {
    xcb_test_fake_input(connection_, static_cast<std::uint8_t>(kind),
                        static_cast<std::uint8_t>(detail), XCB_CURRENT_TIME, root_,
                        static_cast<std::int16_t>(at.x), static_cast<std::int16_t>(at.y), 0);
    xcb_flush(connection_);
}

void XHand::click(Point at, int button) {
    send(XCB_MOTION_NOTIFY, 0, at);
    send(XCB_BUTTON_PRESS, button);
    send(XCB_BUTTON_RELEASE, button);
}

XHand::Key XHand::keyFor(std::uint32_t symbol) const {
    for (std::size_t i = 0; i < symbols_.size(); i++) {
        const int column = static_cast<int>(i) % symbolsEach_;
        if (symbols_[i] == symbol && column < 2)
            return {static_cast<std::uint8_t>(firstKey_ + static_cast<int>(i) / symbolsEach_),
                    column == 1};
    }
    throw std::runtime_error("no key for symbol " + std::to_string(symbol));
}

void XHand::type(const std::string& ascii) {
    for (const char letter : ascii) {
        const Key key = keyFor(static_cast<unsigned char>(letter));
        const Key shift = keyFor(symbolOf("shift"));
        if (key.shifted) send(XCB_KEY_PRESS, shift.code);
        send(XCB_KEY_PRESS, key.code);
        send(XCB_KEY_RELEASE, key.code);
        if (key.shifted) send(XCB_KEY_RELEASE, shift.code);
    }
}

void XHand::press(const std::string& keys) {
    std::vector<Key> pressed;
    for (const std::string& each : Text::split(keys, '+')) {
        pressed.push_back(keyFor(symbolOf(each)));
        send(XCB_KEY_PRESS, pressed.back().code);
    }
    for (auto key = pressed.rbegin(); key != pressed.rend(); ++key)
        send(XCB_KEY_RELEASE, key->code);
}

}  // namespace marlet::test
