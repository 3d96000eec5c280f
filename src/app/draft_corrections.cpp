#include "app/draft_corrections.h"

namespace marlet {

namespace {

std::optional<ArtworkOption> picked(const std::optional<ArtworkOption>& chosen,
                                    const std::vector<ArtworkOption>& offered) {
    // The first is what a draft takes by itself.
    if (!chosen || (!offered.empty() && *chosen == offered.front())) return std::nullopt;
    return chosen;
}

}  // namespace

EditedDetails EditedDetails::between(const Details& loaded, const Details& now) {
    EditedDetails edited;
    forEachDetailsField([&](const char* name, auto field) {
        if (loaded.*field == now.*field) return;
        edited.fields.insert(name);
        edited.values.*field = now.*field;
    });
    return edited;
}

void EditedDetails::applyTo(Details& details) const {
    forEachDetailsField([&](const char* name, auto field) {
        if (fields.contains(name)) details.*field = values.*field;
    });
}

DraftCorrections DraftCorrections::of(const FileDraft& draft) {
    DraftCorrections corrections;
    corrections.details = EditedDetails::between(draft.original, draft.details);
    corrections.wide = picked(draft.chosenWide, draft.wide);
    corrections.tall = picked(draft.chosenTall, draft.tall);
    corrections.style = draft.styleOverride;
    return corrections;
}

void DraftCorrections::applyTo(FileDraft& draft) const {
    details.applyTo(draft.details);
    if (wide) draft.chosenWide = wide;
    if (tall) draft.chosenTall = tall;
    if (style) draft.styleOverride = style;
}

}  // namespace marlet
