#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace marlet::test {

/// A web server on 127.0.0.1 that answers from a table and remembers what it was asked: for the
/// odd answers that no well-behaved service gives.
class HttpStub {
public:
    using Headers = std::vector<std::pair<std::string, std::string>>;

    enum class Manner {
        Whole,
        Cut,      ///< announces one byte more than it sends
        Endless,  ///< goes on until the visitor leaves
        Held,     ///< answers when release() is called
    };

    struct Reply {
        int status = 200;
        std::string body;
        Headers headers;
        std::string type = "application/json";
        Manner manner = Manner::Whole;
        bool dated = true;  ///< with a Date header that says now
    };

    struct Seen {
        std::string target;  ///< path and query as sent
        Headers headers;
        std::string method = "GET";
        std::string body;
        std::string header(const std::string& name) const;  ///< empty when absent
    };

    HttpStub();
    ~HttpStub();
    HttpStub(const HttpStub&) = delete;
    HttpStub& operator=(const HttpStub&) = delete;

    /// "http://127.0.0.1:40123".
    std::string root() const;
    /// For a path with or without its query; the first replies once each in their order, the last
    /// for ever. What isn't in the table is a 404.
    void answer(const std::string& target, std::vector<Reply> inTurn);
    void answer(const std::string& target, const std::string& body);
    void release();

    std::vector<Seen> seen() const;
    std::vector<std::string> targets() const;
    std::size_t count() const { return seen().size(); }
    int held() const;
    int mostAtOnce() const;

    /// An HTTP date so many seconds before now.
    static std::string dateBefore(int seconds);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace marlet::test
