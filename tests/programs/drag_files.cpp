// Drags files from another program onto what is shown at a place of the screen, with the pointer
// and the messages of XDND version 5, as a file manager does.
//   drag_files X Y ADDRESS...   "copied" on the standard output when they were taken, "refused"
//                               when the window doesn't want them
#include <poll.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

constexpr int patienceMs = 60000;
constexpr std::uint32_t version = 5;
constexpr int width = 40;  // of the program's own window, which the drag begins in

template <typename Reply>
std::unique_ptr<Reply, decltype(&std::free)> owned(Reply* reply) {
    if (reply == nullptr) throw std::runtime_error("the X server refused");
    return {reply, &std::free};
}

class Drag {
public:
    explicit Drag(std::string addresses) : addresses_(std::move(addresses)) {
        int screen = 0;
        c_ = xcb_connect(nullptr, &screen);
        if (xcb_connection_has_error(c_) != 0) throw std::runtime_error("no display");
        const xcb_screen_t* const first = xcb_setup_roots_iterator(xcb_get_setup(c_)).data;
        root_ = first->root;
        me_ = xcb_generate_id(c_);
        const std::uint32_t events[] = {1, XCB_EVENT_MASK_PROPERTY_CHANGE};
        // No window manager is asked to frame it.
        xcb_create_window(c_, XCB_COPY_FROM_PARENT, me_, root_,
                          static_cast<std::int16_t>(first->width_in_pixels - width),
                          static_cast<std::int16_t>(first->height_in_pixels - width), width, width,
                          0, XCB_WINDOW_CLASS_INPUT_OUTPUT, first->root_visual,
                          XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, events);
        xcb_map_window(c_, me_);
        from_[0] = first->width_in_pixels - width / 2;
        from_[1] = first->height_in_pixels - width / 2;
    }
    ~Drag() { xcb_disconnect(c_); }
    Drag(const Drag&) = delete;
    Drag& operator=(const Drag&) = delete;

    /// True when they were taken.
    bool to(int x, int y) {
        time_ = timeNow();
        xcb_set_selection_owner(c_, me_, atom("XdndSelection"), time_);
        hand(XCB_MOTION_NOTIFY, 0, from_[0], from_[1]);
        hand(XCB_BUTTON_PRESS, 1);
        target_ = 0;
        bool wanted = false;
        // On its way the pointer stops a few times, as a real one reports itself.
        constexpr int steps = 8;
        for (int step = 1; step <= steps; step++) {
            const int nowX = from_[0] + (x - from_[0]) * step / steps;
            const int nowY = from_[1] + (y - from_[1]) * step / steps;
            hand(XCB_MOTION_NOTIFY, 0, nowX, nowY);
            wanted = over(awareWindowAt(), nowX, nowY);
        }
        hand(XCB_BUTTON_RELEASE, 1);
        if (target_ == 0) throw std::runtime_error("nothing there takes drops");
        if (!wanted) {
            tell("XdndLeave", 0, 0, 0, 0);
            return false;
        }
        tell("XdndDrop", 0, time_, 0, 0);
        const auto finished = await("XdndFinished");
        return (finished.data.data32[1] & 1) != 0 &&
               finished.data.data32[2] == atom("XdndActionCopy");
    }

private:
    /// One stop above a window; true when it would take the files there.
    bool over(xcb_window_t window, int x, int y) {
        if (window != target_ && target_ != 0) tell("XdndLeave", 0, 0, 0, 0);
        if (window != target_) {
            target_ = window;
            if (window != 0)
                tell("XdndEnter", version << 24, atom("text/uri-list"), atom("text/plain"), 0);
        }
        if (window == 0) return false;
        tell("XdndPosition", 0, static_cast<std::uint32_t>(x) << 16 | static_cast<std::uint32_t>(y),
             time_, atom("XdndActionCopy"));
        return (await("XdndStatus").data.data32[1] & 1) != 0;
    }

    /// The innermost window below the pointer that speaks XDND; 0 where there is none.
    xcb_window_t awareWindowAt() {
        xcb_window_t window = root_;
        xcb_window_t found = 0;
        while (window != 0) {
            const auto pointer =
                owned(xcb_query_pointer_reply(c_, xcb_query_pointer(c_, window), nullptr));
            window = pointer->child;
            if (window == 0) break;
            const auto aware = owned(xcb_get_property_reply(
                c_, xcb_get_property(c_, 0, window, atom("XdndAware"), XCB_ATOM_ATOM, 0, 1),
                nullptr));
            if (xcb_get_property_value_length(aware.get()) > 0) found = window;
        }
        return found;
    }

    void hand(int kind, int detail, int x = 0, int y = 0) {
        xcb_test_fake_input(c_, static_cast<std::uint8_t>(kind), static_cast<std::uint8_t>(detail),
                            XCB_CURRENT_TIME, root_, static_cast<std::int16_t>(x),
                            static_cast<std::int16_t>(y), 0);
        xcb_flush(c_);
    }

    void tell(const char* what, std::uint32_t one, std::uint32_t two, std::uint32_t three,
              std::uint32_t four) {
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = target_;
        event.type = atom(what);
        event.data.data32[0] = me_;
        event.data.data32[1] = one;
        event.data.data32[2] = two;
        event.data.data32[3] = three;
        event.data.data32[4] = four;
        xcb_send_event(c_, 0, target_, 0, reinterpret_cast<const char*>(&event));
        xcb_flush(c_);
    }

    std::unique_ptr<xcb_generic_event_t, decltype(&std::free)> next() {
        for (;;) {
            if (auto* const event = xcb_poll_for_event(c_)) return {event, &std::free};
            pollfd waiting{xcb_get_file_descriptor(c_), POLLIN, 0};
            if (poll(&waiting, 1, patienceMs) <= 0 || xcb_connection_has_error(c_) != 0)
                throw std::runtime_error("no answer");
        }
    }

    /// Gives out the addresses to whoever asks until that message comes.
    xcb_client_message_event_t await(const char* what) {
        const xcb_atom_t wanted = atom(what);
        for (;;) {
            const auto event = next();
            const int kind = event->response_type & 0x7f;
            if (kind == XCB_SELECTION_REQUEST)
                answer(*reinterpret_cast<xcb_selection_request_event_t*>(event.get()));
            if (kind != XCB_CLIENT_MESSAGE) continue;
            const auto message = *reinterpret_cast<xcb_client_message_event_t*>(event.get());
            if (message.type == wanted) return message;
        }
    }

    void answer(const xcb_selection_request_event_t& asked) {
        xcb_selection_notify_event_t event{};
        event.response_type = XCB_SELECTION_NOTIFY;
        event.time = asked.time;
        event.requestor = asked.requestor;
        event.selection = asked.selection;
        event.target = asked.target;
        if (asked.target == atom("text/uri-list") || asked.target == atom("text/plain")) {
            event.property = asked.property;
            xcb_change_property(c_, XCB_PROP_MODE_REPLACE, asked.requestor, asked.property,
                                asked.target, 8, static_cast<std::uint32_t>(addresses_.size()),
                                addresses_.data());
        }
        xcb_send_event(c_, 0, asked.requestor, 0, reinterpret_cast<const char*>(&event));
        xcb_flush(c_);
    }

    /// The server's, which comes with a change of a property.
    xcb_timestamp_t timeNow() {
        xcb_change_property(c_, XCB_PROP_MODE_APPEND, me_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0,
                            nullptr);
        xcb_flush(c_);
        for (;;) {
            const auto event = next();
            if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY)
                return reinterpret_cast<xcb_property_notify_event_t*>(event.get())->time;
        }
    }

    xcb_atom_t atom(const char* name) {
        const std::string text = name;
        const auto cookie =
            xcb_intern_atom(c_, 0, static_cast<std::uint16_t>(text.size()), text.c_str());
        return owned(xcb_intern_atom_reply(c_, cookie, nullptr))->atom;
    }

    const std::string addresses_;
    xcb_connection_t* c_ = nullptr;
    xcb_window_t root_ = 0;
    xcb_window_t me_ = 0;
    xcb_window_t target_ = 0;
    xcb_timestamp_t time_ = 0;
    int from_[2] = {0, 0};
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) return 2;
    try {
        std::string addresses;
        for (int i = 3; i < argc; i++) addresses += std::string(argv[i]) + "\r\n";
        Drag drag(addresses);
        std::puts(drag.to(std::atoi(argv[1]), std::atoi(argv[2])) ? "copied" : "refused");
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "drag_files: %s\n", failure.what());
        return 1;
    }
}
