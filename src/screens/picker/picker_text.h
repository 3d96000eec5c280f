#pragma once

#include <QString>
#include <optional>
#include <string>

#include "screens/picker/picker_rows.h"
#include "screens/picker/picker_source.h"

namespace marlet {

/// How the picker writes what sources tell.
namespace PickerText {

/// "1963 · 113 min · 2 seasons", whatever of it is known.
QString facts(const PickerTitle& title);
/// "22 min · 3 Jul 2026"
QString facts(const PickerEpisode& episode);
QString seasonName(int season);
PickerTitleRow row(const PickerTitle& title, bool fits);
PickerEpisodeRow row(const PickerEpisode& episode, bool withSeason, const QString& file);

}  // namespace PickerText
}  // namespace marlet
