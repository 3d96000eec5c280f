#pragma once

#include <string>
#include <vector>

#include "support/http_stub.h"

namespace marlet::test {

/// Stands in for a local model runner: a server on 127.0.0.1 that speaks the chat-completions JSON
/// and says what a test tells it to, rightly or not. Until told, it has a model and says nothing
/// that can be used.
class ModelStub {
public:
    static constexpr const char* chat = "/v1/chat/completions";
    static constexpr const char* models = "/v1/models";

    ModelStub();

    /// A chat completion whose message is this text.
    static HttpStub::Reply saying(const std::string& content);
    /// The guess as the schema asks for it, as a text.
    static std::string guess(bool isTVEpisode, const std::string& title, int year = 0,
                             int season = 0, int episode = 0);

    /// What it says to each question from now on ...
    void says(const std::string& content);
    /// ... or to one after the other, the last for ever.
    void replies(std::vector<HttpStub::Reply> inTurn);
    void hasModels(const std::vector<std::string>& names);

    /// The bodies of the questions so far.
    std::vector<std::string> questions() const;
    /// Each question's prompt, in the order in which they came.
    std::vector<std::string> prompts() const;
    std::string root() const { return http.root(); }

    HttpStub http;
};

}  // namespace marlet::test
