#include "support/catalogue.h"

#include <fcntl.h>
#include <httplib.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <nlohmann/json.hpp>
#include <regex>
#include <stdexcept>

#include "support/temp_folder.h"

extern char** environ;

namespace marlet::test {

namespace {

using nlohmann::json;

constexpr const char* loopback = "127.0.0.1";
constexpr int startMs = 60000;  // a loaded machine with a sanitizer build is slow, not broken

struct Started {
    pid_t pid;
    int output;  ///< the reading end of its standard output
};

Started start(const std::vector<std::string>& arguments) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    const std::string program = builtProgram("marlet-catalogue").string();
    std::vector<std::string> words = {program, "--port", "0", "--parent-watch"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    if (error != 0) {
        close(ends[0]);
        throw std::runtime_error("cannot start " + program + ": " + std::strerror(error));
    }
    return {pid, ends[0]};
}

/// The first line, or what came of it before the program ended or the time was over.
std::string firstLine(int descriptor) {
    std::string line;
    char byte = 0;
    pollfd waiting{descriptor, POLLIN, 0};
    while (poll(&waiting, 1, startMs) > 0 && read(descriptor, &byte, 1) == 1 && byte != '\n')
        line += byte;
    return line;
}

int portFrom(const std::string& line) {
    std::smatch found;
    if (!std::regex_match(line, found, std::regex("listening on http://127\\.0\\.0\\.1:(\\d+)")))
        throw std::runtime_error("marlet-catalogue did not start: \"" + line + "\"");
    return std::stoi(found[1]);
}

httplib::Client clientFor(int port) {
    httplib::Client client(loopback, port);
    client.set_url_encode(false);  // targets are sent as the test wrote them
    client.set_read_timeout(60);
    return client;
}

void require(const httplib::Result& result, const std::string& what) {
    if (!result) throw std::runtime_error(what + ": no answer");
    if (result->status >= 300) throw std::runtime_error(what + ": " + result->body);
}

json statsOf(int port) {
    const httplib::Result result = clientFor(port).Get("/_stats");
    require(result, "stats");
    return json::parse(result->body);
}

int countIn(const json& counts, const std::string& pattern) {
    const std::regex wanted(pattern);
    int sum = 0;
    for (const auto& [text, count] : counts.items())
        if (std::regex_search(text, wanted)) sum += count.get<int>();
    return sum;
}

}  // namespace

CatalogueServer::CatalogueServer(const std::vector<std::string>& arguments) {
    const Started started = start(arguments);
    pid_ = started.pid;
    const std::string line = firstLine(started.output);
    close(started.output);
    try {
        port_ = portFrom(line);
    } catch (...) {
        stop();
        throw;
    }
}

CatalogueServer::~CatalogueServer() {
    stop();
}

std::string CatalogueServer::root() const {
    return std::string("http://") + loopback + ":" + std::to_string(port_);
}

std::map<std::string, std::string> CatalogueServer::environment() const {
    return {{"MARLET_TMDB_API", root() + "/3"},
            {"MARLET_TMDB_IMAGES", root()},
            {"MARLET_TMDB_TOKEN", "catalogue"},
            {"MARLET_APPLE_TV_API", root() + "/uts/v3/"},
            {"MARLET_ITUNES_API", root() + "/itunes/"}};
}

void CatalogueServer::fault(const std::string& text) {
    require(clientFor(port_).Post("/_control", text, "application/json"), "fault");
}

void CatalogueServer::clearFaults() {
    require(clientFor(port_).Delete("/_control"), "faults");
}

int CatalogueServer::requestCount(const std::string& pathRegex) const {
    return countIn(statsOf(port_).at("paths"), pathRegex);
}

int CatalogueServer::targetCount(const std::string& targetRegex) const {
    return countIn(statsOf(port_).at("targets"), targetRegex);
}

int CatalogueServer::mostAtOnce() const {
    return statsOf(port_).at("mostAtOnce").get<int>();
}

int CatalogueServer::totalWithToken() const {
    return statsOf(port_).at("withToken").get<int>();
}

std::vector<CatalogueServer::Arrival> CatalogueServer::log() const {
    const httplib::Result result = clientFor(port_).Get("/_log");
    require(result, "log");
    std::vector<Arrival> arrivals;
    for (const json& one : json::parse(result->body))
        arrivals.push_back({one.at("ms").get<long long>(), one.at("target").get<std::string>(),
                            one.at("token").get<bool>()});
    return arrivals;
}

std::vector<CatalogueServer::Arrival> CatalogueServer::log(const std::string& start) const {
    std::vector<Arrival> arrivals = log();
    std::erase_if(arrivals, [&](const Arrival& one) { return !one.target.starts_with(start); });
    return arrivals;
}

void CatalogueServer::resetStats() {
    require(clientFor(port_).Delete("/_stats"), "stats");
}

HttpAnswer CatalogueServer::get(const std::string& target, const std::string& token) const {
    httplib::Headers headers;
    if (!token.empty()) headers.emplace("Authorization", "Bearer " + token);
    const httplib::Result result = clientFor(port_).Get(target, headers);
    if (!result) return {};
    return {result->status, result->body, result->get_header_value("Content-Type"),
            result->get_header_value("Date")};
}

int CatalogueServer::stop() {
    if (pid_ < 0) return 0;
    kill(pid_, SIGTERM);
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) continue;
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace marlet::test
