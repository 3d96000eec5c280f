#include "catalogue/search.h"

#include <QString>
#include <QStringList>
#include <algorithm>

namespace marlet::catalogue {

namespace {

QString foldedText(const std::string& text) {
    QString out;
    for (const QChar c :
         QString::fromStdString(text).normalized(QString::NormalizationForm_KD).toCaseFolded()) {
        if (c.category() == QChar::Mark_NonSpacing) continue;  // the accent of a letter before it
        if (c == '\'' || c == QChar(0x2019) || c == '`') continue;  // joins: "aint"
        if (c == '&')
            out += " and ";
        else
            out += c.isLetterOrNumber() ? c : QChar(' ');
    }
    return out.simplified();
}

bool wordsFound(const QStringList& wanted, const QStringList& words) {
    return std::all_of(wanted.begin(), wanted.end(), [&](const QString& want) {
        return std::any_of(words.begin(), words.end(),
                           [&](const QString& word) { return word.startsWith(want); });
    });
}

bool matches(const QString& query, const std::vector<std::string>& titles) {
    const QStringList wanted = query.split(' ', Qt::SkipEmptyParts);
    if (wanted.isEmpty()) return false;
    return std::any_of(titles.begin(), titles.end(), [&](const std::string& raw) {
        const QString title = foldedText(raw);
        return wordsFound(wanted, title.split(' ')) ||
               QString(title).remove(' ') == QString(query).remove(' ');
    });
}

std::vector<std::string> titlesOf(const Film& film) {
    std::vector<std::string> titles = film.alsoKnownAs;
    titles.push_back(film.title);
    titles.push_back(film.originalTitle);
    return titles;
}

std::vector<std::string> titlesOf(const Show& show) {
    return {show.name};
}

template <typename Entry>
std::vector<const Entry*> search(const std::vector<Entry>& entries, const std::string& query,
                                 std::optional<int> year) {
    const QString wanted = foldedText(query);
    std::vector<const Entry*> hits;
    for (const Entry& entry : entries)
        if ((!year || entry.year() == *year) && matches(wanted, titlesOf(entry)))
            hits.push_back(&entry);
    std::stable_sort(hits.begin(), hits.end(),
                     [](const Entry* a, const Entry* b) { return a->popularity > b->popularity; });
    return hits;
}

}  // namespace

std::string folded(const std::string& text) {
    return foldedText(text).toStdString();
}

std::vector<const Film*> searchFilms(const Catalogue& catalogue, const std::string& query,
                                     std::optional<int> year) {
    return search(catalogue.films, query, year);
}

std::vector<const Show*> searchShows(const Catalogue& catalogue, const std::string& query,
                                     std::optional<int> year) {
    return search(catalogue.shows, query, year);
}

}  // namespace marlet::catalogue
