#include "support/http_stub.h"

#include <httplib.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <ctime>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace marlet::test {

struct HttpStub::Impl {
    httplib::Server server;
    std::thread thread;
    int port = 0;
    mutable std::mutex mutex;
    std::condition_variable changed;
    std::map<std::string, std::vector<Reply>> table;
    std::vector<Seen> seen;
    bool released = false;
    int held = 0;
    int inside = 0;
    int mostInside = 0;

    Reply take(const httplib::Request& request);
    void serve(const httplib::Request& request, httplib::Response& response);
    void send(const Reply& reply, httplib::Response& response);
};

namespace {

httplib::ContentProvider cutShort(std::string body) {
    return [body](std::size_t offset, std::size_t, httplib::DataSink& sink) {
        if (offset < body.size()) return sink.write(body.data() + offset, body.size() - offset);
        return false;
    };
}

bool writeOnAndOn(std::size_t, httplib::DataSink& sink) {
    static const std::string piece(65536, 'x');
    return sink.write(piece.data(), piece.size());
}

}  // namespace

HttpStub::Reply HttpStub::Impl::take(const httplib::Request& request) {
    const std::lock_guard lock(mutex);
    Seen visit{request.target, {}, request.method, request.body};
    for (const auto& [name, value] : request.headers) visit.headers.emplace_back(name, value);
    seen.push_back(visit);
    auto found = table.find(request.target);
    if (found == table.end()) found = table.find(request.path);
    if (found == table.end()) return {404, R"({"status_message":"not here"})", {}};
    auto& replies = found->second;
    const Reply reply = replies.front();
    if (replies.size() > 1) replies.erase(replies.begin());
    return reply;
}

void HttpStub::Impl::send(const Reply& reply, httplib::Response& response) {
    response.status = reply.status;
    if (reply.dated) response.set_header("Date", dateBefore(0));
    for (const auto& [name, value] : reply.headers) response.set_header(name, value);
    switch (reply.manner) {
        case Manner::Cut:
            response.set_content_provider(reply.body.size() + 1, reply.type, cutShort(reply.body));
            break;
        case Manner::Endless:
            response.set_chunked_content_provider(reply.type, writeOnAndOn);
            break;
        case Manner::Whole:
        case Manner::Held:
            response.set_content(reply.body, reply.type);
            break;
    }
}

void HttpStub::Impl::serve(const httplib::Request& request, httplib::Response& response) {
    const Reply reply = take(request);
    {
        std::unique_lock lock(mutex);
        mostInside = std::max(mostInside, ++inside);
        if (reply.manner == Manner::Held) {
            held++;
            changed.wait(lock, [this] { return released; });
            held--;
        }
        inside--;
    }
    send(reply, response);
}

HttpStub::HttpStub() : impl_(std::make_unique<Impl>()) {
    Impl& impl = *impl_;
    impl.server.new_task_queue = [] { return new httplib::ThreadPool(12); };
    // A kept connection would hold up the end of the server for seconds.
    impl.server.set_keep_alive_max_count(1);
    impl.server.set_tcp_nodelay(true);
    const auto serve = [&impl](const httplib::Request& request, httplib::Response& response) {
        impl.serve(request, response);
    };
    impl.server.Get(".*", serve);
    impl.server.Post(".*", serve);
    impl.port = impl.server.bind_to_any_port("127.0.0.1");
    if (impl.port <= 0) throw std::runtime_error("no port for the test server");
    impl.thread = std::thread([&impl] { impl.server.listen_after_bind(); });
    while (!impl.server.is_running()) std::this_thread::yield();
}

HttpStub::~HttpStub() {
    release();
    impl_->server.stop();
    impl_->thread.join();
}

std::string HttpStub::root() const {
    return "http://127.0.0.1:" + std::to_string(impl_->port);
}

void HttpStub::answer(const std::string& target, std::vector<Reply> inTurn) {
    const std::lock_guard lock(impl_->mutex);
    impl_->table[target] = std::move(inTurn);
}

void HttpStub::answer(const std::string& target, const std::string& body) {
    Reply reply;
    reply.body = body;
    answer(target, std::vector<Reply>{reply});
}

void HttpStub::release() {
    const std::lock_guard lock(impl_->mutex);
    impl_->released = true;
    impl_->changed.notify_all();
}

std::vector<HttpStub::Seen> HttpStub::seen() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->seen;
}

std::vector<std::string> HttpStub::targets() const {
    std::vector<std::string> list;
    for (const Seen& visit : seen()) list.push_back(visit.target);
    return list;
}

int HttpStub::held() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->held;
}

int HttpStub::mostAtOnce() const {
    const std::lock_guard lock(impl_->mutex);
    return impl_->mostInside;
}

std::string HttpStub::Seen::header(const std::string& name) const {
    const auto same = [](const std::string& a, const std::string& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
            return std::tolower(static_cast<unsigned char>(x)) ==
                   std::tolower(static_cast<unsigned char>(y));
        });
    };
    for (const auto& [known, value] : headers) {
        if (same(known, name)) return value;
    }
    return {};
}

std::string HttpStub::dateBefore(int seconds) {
    const std::time_t moment = std::time(nullptr) - seconds;
    std::tm parts{};
    gmtime_r(&moment, &parts);
    static constexpr const char* days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    char text[64];
    std::snprintf(text, sizeof text, "%s, %02d %s %04d %02d:%02d:%02d GMT", days[parts.tm_wday],
                  parts.tm_mday, months[parts.tm_mon], parts.tm_year + 1900, parts.tm_hour,
                  parts.tm_min, parts.tm_sec);
    return text;
}

}  // namespace marlet::test
