#include "screens/inspector/inspector_details.h"

#include <utility>

#include "screens/base/qt_text.h"
#include "write/tag_builder.h"

namespace marlet {

namespace {

constexpr std::size_t mostSteps = 100;
constexpr std::size_t mostFiles = 200;

/// What a file with these details would say.
Details asWritten(const Details& details) {
    return PresentDetails::of(TagBuilder::atoms(details, {})).details;
}

}  // namespace

InspectorDetails::InspectorDetails(AppModel& model, QObject* parent)
    : QObject(parent), model_(model) {}

const FileDraft* InspectorDetails::draft() const {
    return file_ ? std::as_const(model_).drafts().find(*file_) : nullptr;
}

void InspectorDetails::refresh(const Inspected& now) {
    const auto file = now.file ? std::optional(now.file->file.url) : std::nullopt;
    if (file != file_ || !now.draft) typed_.clear();
    file_ = file;
    std::vector<FieldRow> rows;
    shown_.clear();
    if (now.draft) {
        shown_ = DraftFields::of(now.draft->details.kind);
        const Details written = asWritten(now.draft->details);
        for (const DraftField field : shown_) rows.push_back(rowOf(field, now, written));
    }
    fields_.set(std::move(rows));
    const bool edited = now.draft && now.draft->details != now.draft->original;
    if (std::exchange(edited_, edited) != edited) Q_EMIT changed();
}

FieldRow InspectorDetails::rowOf(DraftField field, const Inspected& now,
                                 const Details& written) const {
    const Details& details = now.draft->details;
    FieldRow row;
    row.key = QString::number(static_cast<int>(field));
    row.label = DraftFields::label(field);
    row.prompt = DraftFields::prompt(field);
    row.isLong = DraftFields::isLong(field);
    row.text = DraftFields::text(field, details);
    if (const auto typed = typed_.find(field); typed != typed_.end()) {
        // A comma just typed, or a number half typed, stays as long as it means the same.
        Details same = details;
        if (!DraftFields::set(field, typed->second, same) || same == details)
            row.text = typed->second;
    }
    if (!now.present || field == DraftField::toEpisode) return row;
    row.oldValue = DraftFields::text(field, now.present->details.details);
    const bool differs = DraftFields::text(field, written) != row.oldValue;
    // A new file differs in all that its source can't even hold.
    row.mark = differs && (now.keepsTags() || !row.oldValue.isEmpty());
    return row;
}

void InspectorDetails::edit(int row, const QString& typed) {
    const FileDraft* now = draft();
    if (!now || row < 0 || row >= static_cast<int>(shown_.size())) return;
    const DraftField field = shown_[static_cast<std::size_t>(row)];
    typed_[field] = typed;
    Details details = now->details;
    if (!DraftFields::set(field, typed, details) || details == now->details) return;
    remember(field, now->details);
    put(std::move(details));
}

void InspectorDetails::remember(std::optional<DraftField> field, const Details& before) {
    if (steps_.size() > mostFiles) steps_.clear();
    std::vector<Step>& steps = steps_[*file_];
    if (field && !steps.empty() && steps.back().field == field) return;
    steps.push_back({field, before});
    if (steps.size() > mostSteps) steps.erase(steps.begin());
}

void InspectorDetails::put(Details details) {
    model_.editDraft(*file_, [&](FileDraft& draft) { draft.details = std::move(details); });
}

void InspectorDetails::undoAll() {
    const FileDraft* now = draft();
    if (!now || now->details == now->original) return;
    remember(std::nullopt, now->details);
    typed_.clear();
    put(now->original);
}

void InspectorDetails::undo() {
    const FileDraft* now = draft();
    if (!now) return;
    std::vector<Step>& steps = steps_[*file_];
    while (!steps.empty()) {
        Details before = std::move(steps.back().before);
        steps.pop_back();
        // Another match meanwhile: what was typed belongs to the old one.
        if (before.kind != now->details.kind || before == now->details) continue;
        typed_.clear();
        put(std::move(before));
        return;
    }
}

}  // namespace marlet
