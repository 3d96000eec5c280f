// Chapters (RFC 9559, 5.1.7).

#include <algorithm>

#include "matroska/element_ids.h"
#include "matroska/mkv_headers.h"

namespace marlet::MKVHeaders {

namespace {

/// A film has some dozens. Also of those that wait to be read.
constexpr std::size_t mostChapters = 65'536;

struct Atom {
    MKVChapter chapter;
    bool isHidden = false;
    std::optional<std::string> title;
    std::vector<Element> nested;
};

/// The first title and the first language of the atom count, over all its displays.
void readDisplay(HeaderReader& reader, const Element& parent, Atom& atom) {
    ElementWalk walk = reader.children(parent);
    while (const auto child = walk.next()) {
        if (child->id == ElementID::chapString && !atom.title) atom.title = reader.text(*child);
        if (child->id == ElementID::chapLanguage && !atom.chapter.language)
            atom.chapter.language = reader.text(*child);
    }
}

Atom readAtom(HeaderReader& reader, const Element& parent) {
    Atom atom;
    ElementWalk walk = reader.children(parent);
    while (const auto child = walk.next()) {
        if (child->id == ElementID::chapterTimeStart) atom.chapter.startNs = reader.number(*child);
        if (child->id == ElementID::chapterFlagHidden) atom.isHidden = reader.flag(*child);
        if (child->isMaster(ElementID::chapterDisplay)) readDisplay(reader, *child, atom);
        if (child->isMaster(ElementID::chapterAtom) && atom.nested.size() < mostChapters)
            atom.nested.push_back(*child);
    }
    atom.chapter.title = atom.title.value_or("");
    return atom;
}

/// An atom, then those inside it. Without recursion: a file decides how deep they nest.
void readAtoms(HeaderReader& reader, const Element& first, std::vector<MKVChapter>& chapters) {
    std::vector<Element> waiting = {first};
    while (!waiting.empty() && chapters.size() < mostChapters) {
        const Element next = waiting.back();
        waiting.pop_back();
        Atom atom = readAtom(reader, next);
        if (!atom.isHidden) chapters.push_back(std::move(atom.chapter));
        if (waiting.size() + atom.nested.size() > mostChapters) continue;
        waiting.insert(waiting.end(), atom.nested.rbegin(), atom.nested.rend());
    }
}

}  // namespace

std::vector<MKVChapter> readChapters(HeaderReader& reader, const Element& parent) {
    std::vector<MKVChapter> chapters;
    ElementWalk editions = reader.children(parent);
    while (const auto edition = editions.next()) {
        if (!edition->isMaster(ElementID::editionEntry) || !chapters.empty()) continue;
        ElementWalk atoms = reader.children(*edition);
        while (const auto atom = atoms.next())
            if (atom->isMaster(ElementID::chapterAtom)) readAtoms(reader, *atom, chapters);
    }
    std::stable_sort(
        chapters.begin(), chapters.end(),
        [](const MKVChapter& a, const MKVChapter& b) { return a.startNs < b.startNs; });
    return chapters;
}

}  // namespace marlet::MKVHeaders
