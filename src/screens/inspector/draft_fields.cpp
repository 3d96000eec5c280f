#include "screens/inspector/draft_fields.h"

#include <QCoreApplication>

#include "foundation/text.h"
#include "screens/base/qt_text.h"

namespace marlet::DraftFields {

namespace {

QString say(const char* text) {
    return QCoreApplication::translate("marlet::InspectorDetails", text);
}

std::string* plain(DraftField field, Details& details) {
    switch (field) {
        case DraftField::title:
            return &details.title;
        case DraftField::description:
            return &details.description;
        case DraftField::longDescription:
            return &details.longDescription;
        case DraftField::genre:
            return &details.genre;
        case DraftField::rating:
            return &details.rating;
        case DraftField::releaseDate:
            return &details.releaseDate;
        default:
            return nullptr;
    }
}

std::vector<std::string>* people(DraftField field, Details& details) {
    switch (field) {
        case DraftField::cast:
            return &details.cast;
        case DraftField::director:
            return &details.directors;
        case DraftField::writer:
            return &details.writers;
        default:
            return nullptr;
    }
}

std::vector<std::string> listOf(const std::string& typed) {
    std::vector<std::string> names;
    for (const std::string& part : Text::split(typed, ','))
        if (std::string name = Text::trim(part); !name.empty()) names.push_back(std::move(name));
    return names;
}

}  // namespace

std::vector<DraftField> of(MediaKind kind) {
    using enum DraftField;
    std::vector<DraftField> fields = {title,  description, longDescription, cast,       director,
                                      writer, genre,       rating,          releaseDate};
    if (kind == MediaKind::tv) fields.push_back(toEpisode);
    return fields;
}

QString label(DraftField field) {
    switch (field) {
        case DraftField::title:
            return say(QT_TRANSLATE_NOOP("marlet::InspectorDetails", "Title"));
        case DraftField::description:
            return say(QT_TRANSLATE_NOOP("marlet::InspectorDetails", "Description"));
        case DraftField::longDescription:
            return say(QT_TRANSLATE_NOOP("marlet::InspectorDetails", "Long description"));
        case DraftField::cast:
            return say(QT_TRANSLATE_NOOP("marlet::InspectorDetails", "Cast"));
        case DraftField::director:
            return say(QT_TRANSLATE_NOOP("marlet::InspectorDetails", "Director"));
        case DraftField::writer:
            return say(QT_TRANSLATE_NOOP("marlet::InspectorDetails", "Writer"));
        case DraftField::genre:
            return say(QT_TRANSLATE_NOOP("marlet::InspectorDetails", "Genre"));
        case DraftField::rating:
            return say(QT_TRANSLATE_NOOP("marlet::InspectorDetails", "Content rating"));
        case DraftField::releaseDate:
            return say(QT_TRANSLATE_NOOP("marlet::InspectorDetails", "Release date"));
        case DraftField::toEpisode:
            return say(QT_TRANSLATE_NOOP("marlet::InspectorDetails", "To episode"));
    }
    return {};
}

QString prompt(DraftField field) {
    switch (field) {
        case DraftField::rating:
            return say(QT_TRANSLATE_NOOP("marlet::InspectorDetails", "R, TV-14"));
        case DraftField::releaseDate:
            return say(QT_TRANSLATE_NOOP("marlet::InspectorDetails", "yyyy-mm-dd"));
        case DraftField::toEpisode:
            return say(
                QT_TRANSLATE_NOOP("marlet::InspectorDetails", "For two episodes in one file"));
        default:
            return {};
    }
}

bool isLong(DraftField field) {
    return field == DraftField::description || field == DraftField::longDescription ||
           field == DraftField::cast;
}

QString text(DraftField field, const Details& details) {
    if (field == DraftField::toEpisode)
        return details.episodeEnd ? QString::number(*details.episodeEnd) : QString();
    auto& open = const_cast<Details&>(details);
    if (const std::string* value = plain(field, open)) return toQt(*value);
    const auto* names = people(field, open);
    return names ? toQt(Text::join(*names, ", ")) : QString();
}

bool set(DraftField field, const QString& typed, Details& details) {
    if (field == DraftField::toEpisode) {
        bool isNumber = false;
        const int number = typed.trimmed().toInt(&isNumber);
        if (typed.trimmed().isEmpty()) {
            details.episodeEnd.reset();
            return true;
        }
        if (!isNumber || number <= details.episode.value_or(0)) return false;
        details.episodeEnd = number;
        return true;
    }
    if (std::string* value = plain(field, details)) *value = fromQt(typed);
    if (auto* names = people(field, details)) *names = listOf(fromQt(typed));
    return true;
}

}  // namespace marlet::DraftFields
