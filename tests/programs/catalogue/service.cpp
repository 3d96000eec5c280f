#include "catalogue/service.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <optional>
#include <regex>
#include <sstream>

#include "catalogue/gallery.h"
#include "catalogue/other_services.h"
#include "catalogue/search.h"
#include "catalogue/shapes.h"

namespace marlet::catalogue {

using Shapes::Json;

namespace {

/// The service appends at most this many answers to one.
constexpr std::size_t mostAppended = 20;

std::optional<std::int64_t> number(const std::string& text) {
    std::int64_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) return std::nullopt;
    return value;
}

std::optional<int> smallNumber(const std::string& text) {
    const std::optional<std::int64_t> value = number(text);
    if (!value || *value < 0 || *value > 100000) return std::nullopt;
    return static_cast<int>(*value);
}

std::vector<std::string> split(const std::string& text, char at) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string piece; std::getline(in, piece, at);)
        if (!piece.empty()) out.push_back(piece);
    return out;
}

std::vector<std::string> appended(const Question& question) {
    return split(question.item("append_to_response"), ',');
}

/// With no list of image languages the answer's own language filters the pictures, and with
/// neither there is no filter; "null" in the list stands for pictures without words.
Shapes::Languages imageLanguages(const Question& question) {
    std::set<std::string> out;
    for (const std::string& name : split(question.item("include_image_language"), ','))
        out.insert(name == "null" ? "" : name);
    if (out.empty() && question.has("language")) out.insert(question.item("language").substr(0, 2));
    if (out.empty()) return std::nullopt;
    return out;
}

Answer said(const Json& body) {
    return {200, body.dump(), jsonType};
}

}  // namespace

struct Service::Parts {
    explicit Parts(Catalogue from) : catalogue(std::move(from)), gallery(catalogue) {}

    using Match = std::vector<std::string>;  // the groups of a route's pattern
    using Handler = Answer (Parts::*)(const Question&, const Match&) const;
    struct Route {
        std::regex pattern;
        Handler handler;
    };

    Answer searchMovie(const Question& question, const Match&) const;
    Answer searchTv(const Question& question, const Match&) const;
    Answer movie(const Question& question, const Match& ids) const;
    Answer movieImages(const Question& question, const Match& ids) const;
    Answer show(const Question& question, const Match& ids) const;
    Answer showImages(const Question& question, const Match& ids) const;
    Answer season(const Question& question, const Match& ids) const;
    Answer seasonImages(const Question& question, const Match& ids) const;
    Answer episode(const Question& question, const Match& ids) const;
    Answer picture(const Question& question, const Match& ids) const;
    Answer thumb(const Question& question, const Match& ids) const;

    template <typename Hits>
    Answer searched(const Question& question, const Hits& hits) const;
    const Film* filmOf(const std::string& id) const;
    const Show* showOf(const std::string& id) const;
    const Season* seasonOf(const Match& ids) const;

    Catalogue catalogue;
    Gallery gallery;
    std::vector<Route> routes = {
        {std::regex("/3/search/movie"), &Parts::searchMovie},
        {std::regex("/3/search/tv"), &Parts::searchTv},
        {std::regex("/3/movie/(\\d+)"), &Parts::movie},
        {std::regex("/3/movie/(\\d+)/images"), &Parts::movieImages},
        {std::regex("/3/tv/(\\d+)"), &Parts::show},
        {std::regex("/3/tv/(\\d+)/images"), &Parts::showImages},
        {std::regex("/3/tv/(\\d+)/season/(\\d+)"), &Parts::season},
        {std::regex("/3/tv/(\\d+)/season/(\\d+)/images"), &Parts::seasonImages},
        {std::regex("/3/tv/(\\d+)/season/(\\d+)/episode/(\\d+)"), &Parts::episode},
        {std::regex("/t/p/(\\w+)(/[^/]+)"), &Parts::picture},
        {std::regex("/image/thumb(/[^/]+)/(\\d+)x(\\d+)(bb|sr|ss)?\\.jpg"), &Parts::thumb},
    };
};

template <typename Hits>
Answer Service::Parts::searched(const Question& question, const Hits& hits) const {
    if (!question.has("query")) {
        const Json body = {{"errors", {"query must be provided"}}};
        return {422, body.dump(), jsonType};
    }
    std::vector<Json> found;
    for (const auto* entry : hits) found.push_back(Shapes::hit(*entry));
    const int page = smallNumber(question.item("page")).value_or(1);
    return said(Shapes::page(found, std::max(page, 1)));
}

const Film* Service::Parts::filmOf(const std::string& id) const {
    return catalogue.film(number(id).value_or(-1));
}

const Show* Service::Parts::showOf(const std::string& id) const {
    return catalogue.show(number(id).value_or(-1));
}

const Season* Service::Parts::seasonOf(const Match& ids) const {
    const Show* owner = showOf(ids.at(0));
    return owner == nullptr ? nullptr : owner->season(smallNumber(ids.at(1)).value_or(-1));
}

Answer Service::Parts::searchMovie(const Question& question, const Match&) const {
    return searched(question, searchFilms(catalogue, question.item("query"),
                                          smallNumber(question.item("year"))));
}

Answer Service::Parts::searchTv(const Question& question, const Match&) const {
    return searched(question, searchShows(catalogue, question.item("query"),
                                          smallNumber(question.item("first_air_date_year"))));
}

Answer Service::Parts::movie(const Question& question, const Match& ids) const {
    const Film* film = filmOf(ids.at(0));
    if (film == nullptr) return refusal(404);
    Json out = Shapes::details(*film);
    for (const std::string& key : appended(question)) {
        if (key == "credits") out[key] = Shapes::credits(*film);
        if (key == "release_dates") out[key] = Shapes::releaseDates(*film);
        if (key == "images") out[key] = Shapes::images(*film, imageLanguages(question));
    }
    return said(out);
}

Answer Service::Parts::movieImages(const Question& question, const Match& ids) const {
    const Film* film = filmOf(ids.at(0));
    if (film == nullptr) return refusal(404);
    Json out = Shapes::images(*film, imageLanguages(question));
    out["id"] = film->id;
    return said(out);
}

Answer Service::Parts::show(const Question& question, const Match& ids) const {
    const Show* wanted = showOf(ids.at(0));
    if (wanted == nullptr) return refusal(404);
    const std::vector<std::string> keys = appended(question);
    if (keys.size() > mostAppended)
        return refusal(400, 27,
                       "Too many append to response objects: The maximum number of remote calls "
                       "is 20.");
    Json out = Shapes::details(*wanted);
    constexpr std::string_view seasonKey = "season/";
    for (const std::string& key : keys) {
        if (key == "content_ratings") out[key] = Shapes::contentRatings(*wanted);
        if (key == "images") out[key] = Shapes::images(*wanted, imageLanguages(question));
        if (!key.starts_with(seasonKey)) continue;
        const Season* part = wanted->season(smallNumber(key.substr(seasonKey.size())).value_or(-1));
        if (part != nullptr) out[key] = Shapes::season(*wanted, *part);
    }
    return said(out);
}

Answer Service::Parts::showImages(const Question& question, const Match& ids) const {
    const Show* wanted = showOf(ids.at(0));
    if (wanted == nullptr) return refusal(404);
    Json out = Shapes::images(*wanted, imageLanguages(question));
    out["id"] = wanted->id;
    return said(out);
}

Answer Service::Parts::season(const Question&, const Match& ids) const {
    const Season* wanted = seasonOf(ids);
    if (wanted == nullptr) return refusal(404);
    return said(Shapes::season(*showOf(ids.at(0)), *wanted));
}

Answer Service::Parts::seasonImages(const Question& question, const Match& ids) const {
    const Season* wanted = seasonOf(ids);
    if (wanted == nullptr) return refusal(404);
    Json out = Shapes::images(*showOf(ids.at(0)), *wanted, imageLanguages(question));
    out["id"] = wanted->number;
    return said(out);
}

Answer Service::Parts::episode(const Question& question, const Match& ids) const {
    const Season* owner = seasonOf(ids);
    const Episode* wanted =
        owner == nullptr ? nullptr : owner->episode(smallNumber(ids.at(2)).value_or(-1));
    if (wanted == nullptr) return refusal(404);
    const Show& of = *showOf(ids.at(0));
    Json out = Shapes::episode(of, *owner, *wanted);
    for (const std::string& key : appended(question)) {
        if (key == "credits") out[key] = Shapes::credits(of, *wanted);
        if (key == "images")
            out[key] = Shapes::images(of, *owner, *wanted, imageLanguages(question));
    }
    return said(out);
}

Answer Service::Parts::picture(const Question&, const Match& ids) const {
    const std::optional<std::string> bytes = gallery.picture(ids.at(0), ids.at(1));
    if (!bytes) return {404, "<h1>File not Found</h1>", "text/html"};
    return {200, *bytes, ids.at(1).ends_with(".png") ? "image/png" : "image/jpeg"};
}

Answer Service::Parts::thumb(const Question&, const Match& ids) const {
    const std::optional<std::string> bytes = gallery.picture(
        ids.at(0), smallNumber(ids.at(1)).value_or(0), smallNumber(ids.at(2)).value_or(0));
    if (!bytes) return {404, "", "text/html"};
    return {200, *bytes, "image/jpeg"};
}

Service::Service(Catalogue catalogue) : parts_(std::make_unique<Parts>(std::move(catalogue))) {}
Service::~Service() = default;

Answer Service::answer(const Question& question) const {
    if (auto other = answerAsAppleTV(parts_->catalogue, question)) return *other;
    if (auto other = answerAsITunes(parts_->catalogue, question)) return *other;
    for (const Parts::Route& route : parts_->routes) {
        std::smatch found;
        if (!std::regex_match(question.path, found, route.pattern)) continue;
        Parts::Match groups;
        for (std::size_t i = 1; i < found.size(); i++) groups.push_back(found[i].str());
        return ((*parts_).*(route.handler))(question, groups);
    }
    return refusal(404);
}

}  // namespace marlet::catalogue
