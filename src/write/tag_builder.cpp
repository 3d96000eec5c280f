#include "write/tag_builder.h"

#include <map>
#include <utility>

#include "foundation/text.h"

namespace marlet::TagBuilder {

const std::set<std::string> managed = {"©nam", "©ART", "aART", "©wrt", "©gen",
                                       "©day", "desc", "ldes", "stik", "tvsh",
                                       "tvsn", "tves", "trkn", "©alb", "covr"};
const std::set<std::string> managedFreeform = {"iTunEXTC", "iTunMOVI"};

namespace {

// The numbers that go with the ratings of the United States in `iTunEXTC`.
const std::map<std::string, int> tvRatings = {{"TV-Y", 100},  {"TV-Y7", 200}, {"TV-G", 300},
                                              {"TV-PG", 400}, {"TV-14", 500}, {"TV-MA", 600}};
const std::map<std::string, int> movieRatings = {
    {"G", 100}, {"PG", 200}, {"PG-13", 300}, {"R", 400}, {"NC-17", 500}};

constexpr int mediaKindMovie = 9;
constexpr int mediaKindTV = 10;
constexpr std::size_t descriptionLimit = 255;  // characters; longer texts stand in `ldes`

/// A plain date gets a time of day: players otherwise show the day before, west of Greenwich.
std::string dateValue(const std::string& date) {
    constexpr std::size_t plainDate = 10;
    return Text::characterCount(date) == plainDate ? date + "T12:00:00Z" : date;
}

/// Track number: two reserved bytes, the number, the total (unknown), two reserved bytes.
Atom trackNumber(int episode) {
    const auto number = static_cast<std::uint32_t>(episode);
    Bytes data = IlstEditor::be32(0);
    append(data, IlstEditor::be32(0));
    append(data, Bytes{0, 0, static_cast<std::uint8_t>(number >> 8),
                       static_cast<std::uint8_t>(number), 0, 0, 0, 0});
    return {"trkn", IlstEditor::box("trkn", IlstEditor::box("data", data))};
}

void addText(std::vector<Atom>& atoms, const std::string& name, const std::string& value) {
    if (!value.empty()) atoms.push_back(IlstEditor::text(name, value));
}

void addDescriptions(std::vector<Atom>& atoms, const Details& details) {
    const std::string& whole = details.description;
    addText(atoms, "desc",
            Text::characterCount(whole) > descriptionLimit ? Text::shorten(whole, descriptionLimit)
                                                           : whole);
    addText(atoms, "ldes", details.longDescription.empty() ? whole : details.longDescription);
}

void addEpisode(std::vector<Atom>& atoms, const Details& details) {
    addText(atoms, "tvsh", details.show);
    addText(atoms, "aART", details.show);
    if (details.season) {
        atoms.push_back(IlstEditor::integer("tvsn", *details.season, 4));
        addText(atoms, "©alb", details.show + ", Season " + std::to_string(*details.season));
    }
    if (details.episode) {
        atoms.push_back(IlstEditor::integer("tves", *details.episode, 4));
        atoms.push_back(trackNumber(*details.episode));
    }
}

struct MovieInfoItem {
    std::size_t at = 0;  ///< place in the list
    std::string text;
};

std::optional<MovieInfoItem> movieInfoIn(const std::vector<Atom>& atoms) {
    for (std::size_t i = 0; i < atoms.size(); i++) {
        if (IlstEditor::freeformName(atoms[i]) != "iTunMOVI") continue;
        if (auto text = IlstEditor::textValue(atoms[i])) return MovieInfoItem{i, std::move(*text)};
    }
    return std::nullopt;
}

/// Cast and crew are ours; the other keys of the file's property list are carried over.
void carryMovieInfo(const std::vector<Atom>& existing, std::vector<Atom>& fresh) {
    const auto old = movieInfoIn(existing);
    if (!old) return;
    const auto ours = movieInfoIn(fresh);
    const auto merged = mergeMovi(old->text, ours ? std::optional(ours->text) : std::nullopt);
    if (!merged) return;
    Atom atom = IlstEditor::freeform("iTunMOVI", *merged);
    if (ours)
        fresh[ours->at] = std::move(atom);
    else
        fresh.push_back(std::move(atom));
}

bool isReplaced(const Atom& atom, bool newHasCover) {
    if (const auto name = IlstEditor::freeformName(atom)) return managedFreeform.contains(*name);
    if (atom.name == "covr") return newHasCover;
    return managed.contains(atom.name);
}

}  // namespace

std::vector<Atom> atoms(const Details& details, const std::optional<CoverImage>& artwork) {
    const bool tv = details.kind == MediaKind::tv;
    std::vector<Atom> atoms;
    addText(atoms, "©nam", details.title);
    addText(atoms, "©ART", Text::join(details.directors, ", "));
    addText(atoms, "©wrt", Text::join(details.writers, ", "));
    addText(atoms, "©gen", details.genre);
    addText(atoms, "©day", dateValue(details.releaseDate));
    addDescriptions(atoms, details);
    atoms.push_back(IlstEditor::integer("stik", tv ? mediaKindTV : mediaKindMovie, 1));
    if (tv) addEpisode(atoms, details);
    if (!details.rating.empty()) atoms.push_back(IlstEditor::freeform("iTunEXTC", extc(details)));
    if (const auto info = movieInfo(details))
        atoms.push_back(IlstEditor::freeform("iTunMOVI", *info));
    if (artwork) atoms.push_back(IlstEditor::covers({*artwork}));
    return atoms;
}

std::vector<Atom> merge(const std::vector<Atom>& existing, std::vector<Atom> fresh) {
    carryMovieInfo(existing, fresh);
    bool newHasCover = false;
    for (const Atom& atom : fresh) newHasCover = newHasCover || atom.name == "covr";

    std::vector<Atom> merged;
    for (const Atom& atom : existing)
        if (!isReplaced(atom, newHasCover)) merged.push_back(atom);
    for (Atom& atom : fresh) merged.push_back(std::move(atom));
    return merged;
}

std::string extc(const Details& details) {
    const bool tv = details.kind == MediaKind::tv;
    const auto& ratings = tv ? tvRatings : movieRatings;
    const auto known = ratings.find(details.rating);
    const int number = known == ratings.end() ? 0 : known->second;
    return (tv ? "us-tv|" : "mpaa|") + details.rating + "|" + std::to_string(number) + "|";
}

}  // namespace marlet::TagBuilder
