#include "catalogue/faults.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

namespace marlet::catalogue {

using nlohmann::json;

namespace {

const std::map<std::string, Spoil, std::less<>> spoils = {
    {"html", Spoil::html}, {"half", Spoil::half}, {"types", Spoil::types}};
const std::map<std::string, Cut, std::less<>> cuts = {{"before", Cut::beforeAnswer},
                                                      {"middle", Cut::inAnswer}};

template <typename Value>
Value oneOf(const std::map<std::string, Value, std::less<>>& known, const std::string& name) {
    const auto found = known.find(name);
    if (found == known.end()) throw std::runtime_error("no such kind of fault: " + name);
    return found->second;
}

/// Each key of the JSON form with what it sets.
const std::map<std::string, void (*)(Fault&, const json&), std::less<>>& keys() {
    static const std::map<std::string, void (*)(Fault&, const json&), std::less<>> all = {
        {"path", [](Fault& f, const json& v) { f.target = std::regex(v.get<std::string>()); }},
        {"after", [](Fault& f, const json& v) { f.after = v.get<int>(); }},
        {"times", [](Fault& f, const json& v) { f.times = v.get<int>(); }},
        {"delayMs",
         [](Fault& f, const json& v) { f.delay = std::chrono::milliseconds(v.get<int>()); }},
        {"status", [](Fault& f, const json& v) { f.status = v.get<int>(); }},
        {"body", [](Fault& f, const json& v) { f.body = v.get<std::string>(); }},
        {"type", [](Fault& f, const json& v) { f.type = v.get<std::string>(); }},
        {"answer", [](Fault& f, const json& v) { f.spoil = oneOf(spoils, v.get<std::string>()); }},
        {"cut", [](Fault& f, const json& v) { f.cut = oneOf(cuts, v.get<std::string>()); }},
        {"headers", [](Fault& f, const json& v) {
             for (const auto& [name, value] : v.items())
                 f.headers[name] = value.is_null()
                                       ? std::optional<std::string>()
                                       : std::optional<std::string>(value.get<std::string>());
         }}};
    return all;
}

json withWrongTypes(const json& value) {
    if (value.is_object() || value.is_array()) {
        json out = value;
        for (json& item : out) item = withWrongTypes(item);
        return out;
    }
    if (value.is_number()) return value.dump();
    if (value.is_string()) return 7;
    return value;
}

constexpr const char* gatePage =
    "<!DOCTYPE html>\n<html><head><title>Welcome</title></head>\n"
    "<body><h1>Please accept the terms to use this network</h1></body></html>\n";

}  // namespace

Fault parseFault(const std::string& text) {
    Fault fault;
    fault.target = std::regex("");
    const json parsed = json::parse(text);
    for (const auto& [key, value] : parsed.items()) {
        const auto known = keys().find(key);
        if (known == keys().end()) throw std::runtime_error("a fault has no \"" + key + "\"");
        known->second(fault, value);
    }
    return fault;
}

Answer apply(const Fault& fault, Answer answer) {
    if (fault.status) answer = refusal(*fault.status);
    if (fault.body) answer.body = *fault.body;
    if (fault.type) answer.type = *fault.type;
    switch (fault.spoil) {
        case Spoil::none:
            break;
        case Spoil::html:
            answer.body = gatePage;
            answer.type = "text/html";
            break;
        case Spoil::half:
            answer.body.resize(answer.body.size() / 2);
            break;
        case Spoil::types:
            answer.body = withWrongTypes(json::parse(answer.body)).dump();
            break;
    }
    return answer;
}

void Faults::add(Fault fault) {
    const std::lock_guard hold(lock_);
    faults_.push_back(std::move(fault));
}

void Faults::clear() {
    const std::lock_guard hold(lock_);
    faults_.clear();
}

std::optional<Fault> Faults::take(const std::string& target) {
    const std::lock_guard hold(lock_);
    for (auto fault = faults_.begin(); fault != faults_.end(); ++fault) {
        if (!std::regex_search(target, fault->target)) continue;
        if (fault->after > 0) {
            fault->after--;
            continue;
        }
        const Fault hit = *fault;
        if (fault->times > 0 && --fault->times == 0) faults_.erase(fault);
        return hit;
    }
    return std::nullopt;
}

}  // namespace marlet::catalogue
