#pragma once

#include <QString>
#include <optional>
#include <string>
#include <vector>

#include "foundation/records.h"
#include "write/present_details.h"

namespace marlet {

/// The fields of a draft that a person edits, in the order of the form.
enum class DraftField {
    title,
    description,
    longDescription,
    cast,
    director,
    writer,
    genre,
    rating,
    releaseDate,
    toEpisode,
};

namespace DraftFields {

/// Those that this kind of film has.
std::vector<DraftField> of(MediaKind kind);
QString label(DraftField field);
QString prompt(DraftField field);
bool isLong(DraftField field);

/// As shown; people are divided by commas.
QString text(DraftField field, const Details& details);
/// Takes over what was typed; false when that is nothing such a field can hold.
bool set(DraftField field, const QString& typed, Details& details);

}  // namespace DraftFields
}  // namespace marlet
