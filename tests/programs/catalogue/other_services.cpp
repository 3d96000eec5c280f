#include "catalogue/other_services.h"

#include <charconv>
#include <cstdio>
#include <functional>
#include <vector>

#include "catalogue/other_shapes.h"
#include "catalogue/search.h"

namespace marlet::catalogue {

namespace {

using nlohmann::json;

Answer said(const json& body) {
    return {200, body.dump(), jsonType};
}

/// What follows the prefix; nothing when the path begins otherwise.
std::optional<std::string> rest(const std::string& path, const std::string& prefix) {
    if (!path.starts_with(prefix)) return std::nullopt;
    return path.substr(prefix.size());
}

std::int64_t number(const std::string& text) {
    std::int64_t value = -1;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? value : -1;
}

template <typename Entry>
const Entry* entryOf(const std::vector<Entry>& entries, const std::string& id) {
    for (const Entry& entry : entries)
        if (AppleTVShapes::idOf(entry) == id) return &entry;
    return nullptr;
}

bool hasAll(const Question& question, const std::vector<const char*>& names) {
    for (const char* name : names)
        if (question.item(name).empty()) return false;
    return true;
}

/// The first page holds so many.
constexpr std::size_t pageSize = 10;

Answer episodesOf(const Show& show, const Question& question) {
    unsigned first = 0;
    unsigned count = pageSize;
    const std::string token = question.item("nextToken");
    if (!token.empty() && std::sscanf(token.c_str(), "%u:%u", &first, &count) != 2)
        return refusal(400);
    return said(AppleTVShapes::episodes(show, first, count));
}

Answer titleOf(const Catalogue& catalogue, const std::string& path, const Question& question) {
    if (const auto id = rest(path, "movies/")) {
        const Film* film = entryOf(catalogue.films, *id);
        return film == nullptr ? refusal(404) : said(AppleTVShapes::movie(*film, question.root));
    }
    auto id = rest(path, "shows/");
    if (!id) return refusal(404);
    const std::string tail = "/episodes";
    const bool wantsEpisodes = id->ends_with(tail);
    if (wantsEpisodes) id->resize(id->size() - tail.size());
    const Show* show = entryOf(catalogue.shows, *id);
    if (show == nullptr) return refusal(404);
    return wantsEpisodes ? episodesOf(*show, question)
                         : said(AppleTVShapes::show(*show, question.root));
}

std::size_t limitOf(const Question& question) {
    const std::int64_t limit = number(question.item("limit"));
    return limit < 1 || limit > 200 ? 50 : static_cast<std::size_t>(limit);
}

std::vector<json> foundInStore(const Catalogue& catalogue, const Question& question) {
    const std::string term = question.item("term");
    const std::string entity = question.item("entity");
    std::vector<json> results;
    if (entity == "movie") {
        for (const Film* film : searchFilms(catalogue, term, std::nullopt))
            results.push_back(ITunesShapes::movie(*film, question.root));
        return results;
    }
    for (const Show* show : searchShows(catalogue, term, std::nullopt))
        for (const Season& season : show->seasons) {
            if (entity == "tvSeason")
                results.push_back(ITunesShapes::collection(*show, season, question.root));
            if (entity == "tvEpisode")
                for (const Episode& one : season.episodes)
                    results.push_back(ITunesShapes::episode(*show, season, one, question.root));
        }
    return results;
}

std::vector<json> lookedUp(const Catalogue& catalogue, const Question& question) {
    const std::int64_t id = number(question.item("id"));
    std::vector<json> results;
    for (const Show& show : catalogue.shows) {
        if (show.id == id) results.push_back(ITunesShapes::artist(show));
        for (const Season& season : show.seasons) {
            const bool isThisSeason = ITunesShapes::collectionIdOf(show, season) == id;
            if (show.id != id && !isThisSeason) continue;
            results.push_back(ITunesShapes::collection(show, season, question.root));
            if (!isThisSeason || question.item("entity") != "tvEpisode") continue;
            for (const Episode& one : season.episodes)
                results.push_back(ITunesShapes::episode(show, season, one, question.root));
        }
    }
    return results;
}

}  // namespace

std::optional<Answer> answerAsAppleTV(const Catalogue& catalogue, const Question& question) {
    const auto path = rest(question.path, "/uts/v3/");
    if (!path) return std::nullopt;
    if (!hasAll(question, {"caller", "v", "locale", "sf"})) return refusal(400);
    if (*path == "configurations") return said(AppleTVShapes::configurations(sampleKey));
    if (question.item("utsk") != sampleKey || !hasAll(question, {"pfm"})) return refusal(403);
    if (*path == "search") {
        const std::string term = question.item("searchTerm");
        return said(AppleTVShapes::search(searchShows(catalogue, term, std::nullopt),
                                          searchFilms(catalogue, term, std::nullopt),
                                          question.root));
    }
    return titleOf(catalogue, *path, question);
}

std::optional<Answer> answerAsITunes(const Catalogue& catalogue, const Question& question) {
    const auto path = rest(question.path, "/itunes/");
    if (!path) return std::nullopt;
    if (!hasAll(question, {"country", "entity"})) return refusal(400);
    std::vector<json> results;
    if (*path == "search")
        results = foundInStore(catalogue, question);
    else if (*path == "lookup")
        results = lookedUp(catalogue, question);
    else
        return refusal(404);
    if (results.size() > limitOf(question)) results.resize(limitOf(question));
    return said(ITunesShapes::answer(results));
}

}  // namespace marlet::catalogue
