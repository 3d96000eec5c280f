#include "write/present_details.h"

#include <algorithm>

#include "foundation/errors.h"
#include "foundation/text.h"
#include "mp4/box.h"
#include "write/tag_builder.h"

namespace marlet {

namespace {

/// An item's first `data` box behind its type and locale; empty without one.
ByteView firstValue(const Atom& atom) {
    const auto size = static_cast<std::int64_t>(atom.bytes.size());
    const auto data = find(atom.bytes, 8, size, {"data"});
    if (!data || data->end - data->start < 8) return {};
    return ByteView(atom.bytes)
        .subspan(static_cast<std::size_t>(data->start + 8),
                 static_cast<std::size_t>(data->end - data->start - 8));
}

std::optional<int> numberIn(ByteView value) {
    if (value.empty() || value.size() > 4) return std::nullopt;
    std::uint32_t number = 0;
    for (const std::uint8_t byte : value) number = number << 8 | byte;
    return static_cast<int>(number);
}

/// `trkn`: two reserved bytes, then the number.
std::optional<int> trackIn(ByteView value) {
    return value.size() < 4 ? std::nullopt : numberIn(value.subspan(2, 2));
}

/// "us-tv|TV-PG|400|" tells TV-PG.
std::string ratingIn(const std::string& text) {
    const auto from = text.find('|');
    if (from == text.npos) return {};
    return text.substr(from + 1, text.find('|', from + 1) - from - 1);
}

/// A date with a time of day is that date.
std::string dayOf(const std::string& date) {
    constexpr std::size_t plainDate = 10;
    return date.size() > plainDate && date[plainDate] == 'T' ? date.substr(0, plainDate) : date;
}

std::vector<std::string> listIn(const std::string& names) {
    std::vector<std::string> list;
    for (const std::string& name : Text::split(names, ','))
        if (std::string trimmed = Text::trim(name); !trimmed.empty())
            list.push_back(std::move(trimmed));
    return list;
}

void takeFreeform(PresentDetails& present, const std::string& name, const std::string& text) {
    if (name == "iTunEXTC") present.details.rating = ratingIn(text);
    if (name == "iTunMOVI") {
        const TagBuilder::People people = TagBuilder::people(text);
        present.details.cast = people.cast;
        if (!people.directors.empty()) present.details.directors = people.directors;
        if (!people.writers.empty()) present.details.writers = people.writers;
    }
}

bool takeText(PresentDetails& present, const std::string& name, const std::string& text) {
    Details& details = present.details;
    if (name == "©nam")
        details.title = text;
    else if (name == "©ART")
        details.directors = listIn(text);
    else if (name == "©wrt")
        details.writers = listIn(text);
    else if (name == "©gen")
        details.genre = text;
    else if (name == "©day")
        details.releaseDate = dayOf(text);
    else if (name == "desc")
        details.description = text;
    else if (name == "ldes")
        details.longDescription = text;
    else if (name == "tvsh")
        details.show = text;
    else if (name == "aART")
        present.albumArtist = text;
    else if (name == "©alb")
        present.album = text;
    else
        return false;
    return true;
}

void takeNumber(PresentDetails& present, const std::string& name, ByteView value) {
    constexpr int mediaKindTV = 10;
    if (name == "tvsn") present.details.season = numberIn(value);
    if (name == "tves") present.details.episode = numberIn(value);
    if (name == "trkn") present.track = trackIn(value);
    if (name == "stik" && numberIn(value) == mediaKindTV) present.details.kind = MediaKind::tv;
    if (name == "covr" && !value.empty()) present.cover = Bytes(value.begin(), value.end());
}

}  // namespace

PresentDetails PresentDetails::of(const std::vector<Atom>& atoms) {
    PresentDetails present;
    const Atom* people = nullptr;
    for (const Atom& atom : atoms) {
        const auto freeform = IlstEditor::freeformName(atom);
        const auto text = IlstEditor::textValue(atom);
        if (freeform ? !TagBuilder::managedFreeform.contains(*freeform)
                     : !TagBuilder::managed.contains(atom.name))
            present.others++;
        else if (freeform == "iTunMOVI")
            people = people == nullptr ? &atom : people;  // told last: it knows more of them
        else if (freeform)
            takeFreeform(present, *freeform, text.value_or(""));
        else if (!text || !takeText(present, atom.name, *text))
            takeNumber(present, atom.name, firstValue(atom));
    }
    if (people != nullptr)
        takeFreeform(present, "iTunMOVI", IlstEditor::textValue(*people).value_or(""));
    return present;
}

PresentDetails PresentDetails::read(const std::filesystem::path& file) {
    try {
        return of(IlstEditor::currentIlst(file));
    } catch (const std::exception&) {
        return {};
    }
}

}  // namespace marlet
