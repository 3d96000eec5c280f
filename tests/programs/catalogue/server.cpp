#include "catalogue/server.h"

#include <arpa/inet.h>
#include <httplib.h>
#include <sys/socket.h>

#include <ctime>
#include <stdexcept>
#include <thread>

#include "catalogue/service.h"
#include "catalogue/stats.h"

namespace marlet::catalogue {

namespace {

constexpr const char* loopback = "127.0.0.1";
/// A kept-alive connection holds a thread, and several clients with four connections each may
/// stand open.
constexpr std::size_t threads = 48;
constexpr std::size_t requestsPerConnection = 100000;

/// RFC 9110, 5.6.7.
std::string httpDate() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[40];
    const std::size_t length =
        std::strftime(text, sizeof text, "%a, %d %b %Y %H:%M:%S GMT", &parts);
    return {text, length};
}

/// Breaks the connection that a request came by. The library does not hand out its sockets, so the
/// one whose other end has the request's port is looked for.
void cutConnection(const httplib::Request& request) {
    constexpr int highestDescriptor = 1024;
    for (int fd = 3; fd < highestDescriptor; fd++) {
        sockaddr_in peer{};
        socklen_t size = sizeof peer;
        if (getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &size) != 0) continue;
        if (peer.sin_family == AF_INET && ntohs(peer.sin_port) == request.remote_port)
            shutdown(fd, SHUT_RDWR);
    }
}

Question questionOf(const httplib::Request& request) {
    Question out;
    out.path = request.path;
    out.root = "http://" + request.get_header_value("Host");
    for (const auto& [key, value] : request.params) out.items.emplace(key, value);
    return out;
}

/// Announces the whole body, sends half of it and lets the connection fall.
void sendHalf(httplib::Response& response, const Answer& answer) {
    const std::string half = answer.body.substr(0, answer.body.size() / 2);
    response.set_content_provider(answer.body.size(), answer.type,
                                  [half](std::size_t offset, std::size_t, httplib::DataSink& sink) {
                                      if (offset == 0) sink.write(half.data(), half.size());
                                      return false;
                                  });
}

void send(httplib::Response& response, const Answer& answer, const std::optional<Fault>& fault) {
    std::map<std::string, std::optional<std::string>> headers = {
        {"Date", httpDate()}, {"Server", "marlet-catalogue"}, {"Cache-Control", "max-age=600"}};
    if (fault)
        for (const auto& [name, value] : fault->headers) headers[name] = value;
    for (const auto& [name, value] : headers)
        if (value) response.set_header(name, *value);
    response.status = answer.status;
    if (fault && fault->cut == Cut::inAnswer)
        sendHalf(response, answer);
    else
        response.set_content(answer.body, answer.type);
}

}  // namespace

struct Server::Parts {
    Parts(Catalogue catalogue, std::string wantedToken)
        : service(std::move(catalogue)), token(std::move(wantedToken)) {}

    void handle(const httplib::Request& request, httplib::Response& response);
    void control(const httplib::Request& request, httplib::Response& response);
    Answer trueAnswer(const httplib::Request& request) const;
    void route();

    Service service;
    std::string token;
    Faults faults;
    Stats stats;
    httplib::Server http;
};

Answer Server::Parts::trueAnswer(const httplib::Request& request) const {
    const bool needsToken = request.path.starts_with("/3/");  // pictures and other services don't
    if (!token.empty() && needsToken &&
        request.get_header_value("Authorization") != "Bearer " + token)
        return refusal(401);
    return service.answer(questionOf(request));
}

void Server::Parts::handle(const httplib::Request& request, httplib::Response& response) {
    const Stats::Visit visit(stats, request.path, request.target,
                             request.has_header("Authorization"));
    const std::optional<Fault> fault = faults.take(request.target);
    if (fault) std::this_thread::sleep_for(fault->delay);
    Answer answer = trueAnswer(request);
    if (fault) {
        answer = apply(*fault, std::move(answer));
        if (fault->cut == Cut::beforeAnswer) cutConnection(request);
    }
    send(response, answer, fault);
}

void Server::Parts::control(const httplib::Request& request, httplib::Response& response) {
    try {
        faults.add(parseFault(request.body));
        response.status = 204;
    } catch (const std::exception& error) {
        response.status = 400;
        response.set_content(error.what(), "text/plain");
    }
}

void Server::Parts::route() {
    using httplib::Request;
    using httplib::Response;
    http.new_task_queue = [] { return new httplib::ThreadPool(threads); };
    http.set_keep_alive_max_count(requestsPerConnection);
    http.set_tcp_nodelay(true);
    http.Post("/_control", [this](const Request& q, Response& r) { control(q, r); });
    http.Delete("/_control", [this](const Request&, Response& r) {
        faults.clear();
        r.status = 204;
    });
    http.Get("/_stats", [this](const Request&, Response& r) {
        r.set_content(stats.json(), "application/json");
    });
    http.Get("/_log", [this](const Request&, Response& r) {
        r.set_content(stats.log(), "application/json");
    });
    http.Delete("/_stats", [this](const Request&, Response& r) {
        stats.reset();
        r.status = 204;
    });
    http.Get(".*", [this](const Request& q, Response& r) { handle(q, r); });
}

Server::Server(Catalogue catalogue, std::string token)
    : parts_(std::make_unique<Parts>(std::move(catalogue), std::move(token))) {
    parts_->route();
}

Server::~Server() = default;

void Server::addFault(Fault fault) {
    parts_->faults.add(std::move(fault));
}

int Server::bind(int port) {
    const int got = port == 0 ? parts_->http.bind_to_any_port(loopback)
                              : (parts_->http.bind_to_port(loopback, port) ? port : -1);
    if (got < 0) throw std::runtime_error("cannot listen on port " + std::to_string(port));
    return got;
}

void Server::serve() {
    parts_->http.listen_after_bind();
}

}  // namespace marlet::catalogue
