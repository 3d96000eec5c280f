#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace marlet::test {

/// What an HTTP request came to.
struct HttpAnswer {
    int status = 0;  ///< 0: the connection broke
    std::string body;
    std::string type;  ///< the Content-Type header
    std::string date;  ///< the Date header
};

/// The built `marlet-catalogue` on a free port, for as long as this lives. Start it from a thread
/// that lives as long: the program ends with the thread that started it. Failures of the program
/// itself are std::runtime_error.
class CatalogueServer {
public:
    /// With further arguments, such as {"--require-token", "T"}.
    explicit CatalogueServer(const std::vector<std::string>& arguments = {});
    ~CatalogueServer();
    CatalogueServer(const CatalogueServer&) = delete;
    CatalogueServer& operator=(const CatalogueServer&) = delete;

    int port() const { return port_; }
    /// "http://127.0.0.1:PORT"
    std::string root() const;
    /// What to set so that the program under test asks this server and no other: the roots of all
    /// services, and a token for the one that wants it.
    std::map<std::string, std::string> environment() const;

    /// Sets a fault; its form is told by `marlet-catalogue --help`.
    void fault(const std::string& json);
    void clearFaults();

    /// Requests so far whose path a regular expression is found in, without their query ...
    int requestCount(const std::string& pathRegex) const;
    /// ... or whose path and query, as they came.
    int targetCount(const std::string& targetRegex) const;
    /// The most requests that were being answered at one time.
    int mostAtOnce() const;
    int totalWithToken() const;
    /// Every request so far, in the order of arrival.
    struct Arrival {
        long long ms = 0;    ///< counts up from some moment
        std::string target;  ///< path and query, as they came
        bool hasToken = false;
    };
    std::vector<Arrival> log() const;
    /// Of the log: requests whose target begins so ("/uts/v3/", "/itunes/", "/3/").
    std::vector<Arrival> log(const std::string& start) const;
    void resetStats();

    /// Asks the server for a target ("/3/movie/192201") over a connection of its own.
    HttpAnswer get(const std::string& target, const std::string& token = "") const;

    pid_t pid() const { return pid_; }
    /// Ends the program with SIGTERM and gives its exit code; -1 for an end by a signal.
    int stop();

private:
    pid_t pid_ = -1;
    int port_ = 0;
};

}  // namespace marlet::test
