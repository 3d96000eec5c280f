#include "identify/local_model.h"

#include <cstdlib>
#include <utility>

#include "foundation/errors.h"
#include "foundation/preferences.h"
#include "foundation/text.h"
#include "identify/model_wire.h"
#include "sources/http_session.h"
#include "sources/local_server.h"

namespace marlet::LocalModel {
namespace {

/// What the server at one root was last seen to do.
struct Known {
    enum class Contact { none, answers, silent, refuses };
    std::string root;
    std::string firstModel;  ///< empty until it has told
    Contact contact = Contact::none;
};

/// What is known of the server that is set now.
Known& known() {
    static Known one;
    if (const std::string now = root(); one.root != now) one = {now, {}, Known::Contact::none};
    return one;
}

std::string chosenName() {
    return Text::trim(Preferences::current().text("localModelName").value_or(""));
}

Task<HttpAnswer> exchange(std::string path, std::optional<std::string> json, CancelToken cancel) {
    LocalServer::Question question;
    question.root = root();
    question.path = std::move(path);
    question.json = std::move(json);
    HttpAnswer answer;
    try {
        Task<HttpAnswer> asking = LocalServer::ask(question, std::move(cancel));
        answer = co_await asking;
    } catch (const TransportError&) {
        known().contact = Known::Contact::silent;
        throw;
    }
    const bool good = answer.status == 200;
    known().contact = good ? Known::Contact::answers : Known::Contact::refuses;
    if (!good) throw MFError("The local model refused (" + std::to_string(answer.status) + ")");
    co_return answer;
}

Task<std::string> nameToAsk(CancelToken cancel) {
    std::string name = chosenName();
    if (name.empty()) name = known().firstModel;
    if (!name.empty()) co_return name;
    Task<HttpAnswer> asking = exchange("/v1/models", std::nullopt, std::move(cancel));
    const HttpAnswer answer = co_await asking;
    name = ModelWire::firstModel(answer.body);
    known().firstModel = name;
    co_return name;
}

}  // namespace

std::string root() {
    const char* const variable = std::getenv("MARLET_LOCAL_MODEL");
    std::string text =
        Text::trim(variable != nullptr ? std::string(variable)
                                       : Preferences::current().text("localModel").value_or(""));
    while (text.ends_with('/')) text.pop_back();
    // Their own pages give the address with it.
    if (text.ends_with("/v1")) text.erase(text.size() - 3);
    while (text.ends_with('/')) text.pop_back();
    return text;
}

std::optional<std::string> refusal() {
    const std::string now = root();
    if (now.empty()) return std::nullopt;
    return LocalServer::refusal(now);
}

bool isSet() {
    return !root().empty() && !refusal();
}

std::string note() {
    if (root().empty()) return "Off: no local model is set";
    if (const auto refused = refusal()) return *refused;
    switch (known().contact) {
        case Known::Contact::answers:
            return "Ready on this computer";
        case Known::Contact::silent:
            return "The local model doesn't answer";
        case Known::Contact::refuses:
            return "The local model refuses to answer";
        case Known::Contact::none:
            break;
    }
    return "On this computer, not asked yet";
}

Task<std::string> lookAgain(CancelToken cancel) {
    if (!isSet()) co_return note();
    try {
        Task<HttpAnswer> asking = exchange("/v1/models", std::nullopt, std::move(cancel));
        const HttpAnswer answer = co_await asking;
        known().firstModel = ModelWire::firstModel(answer.body);
    } catch (const CancelError&) {
        throw;
    } catch (const std::exception&) {
        // The note tells of it.
        if (known().contact == Known::Contact::answers) known().contact = Known::Contact::refuses;
    }
    co_return note();
}

Task<FileGuess> ask(std::string instructions, std::string prompt, CancelToken cancel) {
    Task<std::string> naming = nameToAsk(cancel);
    const std::string model = co_await naming;
    try {
        Task<HttpAnswer> asking = exchange(
            "/v1/chat/completions", ModelWire::question(model, instructions, prompt), cancel);
        const HttpAnswer answer = co_await asking;
        co_return ModelWire::answer(answer.body);
    } catch (const MFError&) {
        // The server may have been started anew with another model.
        known().firstModel.clear();
        throw;
    }
}

}  // namespace marlet::LocalModel
