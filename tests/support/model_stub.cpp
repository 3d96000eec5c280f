#include "support/model_stub.h"

#include <nlohmann/json.hpp>

namespace marlet::test {

using nlohmann::json;

ModelStub::ModelStub() {
    hasModels({"small-model", "large-model"});
    says("I would rather not.");
}

HttpStub::Reply ModelStub::saying(const std::string& content) {
    HttpStub::Reply reply;
    reply.body = json{{"id", "chatcmpl-1"},
                      {"object", "chat.completion"},
                      {"choices",
                       {{{"index", 0},
                         {"message", {{"role", "assistant"}, {"content", content}}},
                         {"finish_reason", "stop"}}}},
                      {"usage", {{"total_tokens", 99}}}}
                     .dump();
    return reply;
}

std::string ModelStub::guess(bool isTVEpisode, const std::string& title, int year, int season,
                             int episode) {
    return json{{"isTVEpisode", isTVEpisode},
                {"title", title},
                {"year", year},
                {"season", season},
                {"episode", episode}}
        .dump();
}

void ModelStub::says(const std::string& content) {
    replies({saying(content)});
}

void ModelStub::replies(std::vector<HttpStub::Reply> inTurn) {
    http.answer(chat, std::move(inTurn));
}

void ModelStub::hasModels(const std::vector<std::string>& names) {
    json data = json::array();
    for (const std::string& name : names) data.push_back({{"id", name}, {"object", "model"}});
    http.answer(models, json{{"object", "list"}, {"data", data}}.dump());
}

std::vector<std::string> ModelStub::questions() const {
    std::vector<std::string> bodies;
    for (const HttpStub::Seen& visit : http.seen())
        if (visit.target == chat) bodies.push_back(visit.body);
    return bodies;
}

std::vector<std::string> ModelStub::prompts() const {
    std::vector<std::string> list;
    for (const std::string& body : questions())
        list.push_back(json::parse(body).at("messages").at(1).at("content"));
    return list;
}

}  // namespace marlet::test
