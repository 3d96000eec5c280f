#include "screens/inspector/inspector_artwork.h"

#include <algorithm>
#include <utility>

#include "app/settings.h"
#include "foundation/text.h"
#include "screens/base/qt_text.h"
#include "screens/pictures/art_address.h"

namespace marlet {

namespace {

constexpr const char* cellSize = "w300";

/// The services of Apple tell whole addresses.
bool isApples(const ArtworkOption& option) {
    return Text::startsWith(option.path, "http");
}

}  // namespace

InspectorArtwork::InspectorArtwork(AppModel& model, QObject* parent)
    : QObject(parent), model_(model) {}

void InspectorArtwork::refresh(const Inspected& now) {
    file_ = now.file ? now.file->file.url : std::filesystem::path();
    Shown shown;
    std::vector<ArtRow> rows;
    const ArtworkStyle setting = Settings::artworkStyle();
    shown.shapes = {
        setting == ArtworkStyle::tall ? tr("Settings choice (tall)") : tr("Settings choice (wide)"),
        tr("Wide, for Apple TV"), tr("Tall, for Mac & iPhone")};
    seasonKey_.clear();
    if (now.draft) {
        const auto style = now.draft->styleOverride.value_or(setting);
        if (now.draft->styleOverride) shown.shape = style == ArtworkStyle::wide ? 1 : 2;
        rows = rowsOf(now, style, shown);
        seasonKey_ = now.draft->seasonKey.value_or("");
        shown.canShare = !seasonKey_.empty();
        shown.shared = shown.canShare && std::as_const(model_).drafts().sharesSeason(seasonKey_);
        if (rows.empty()) shown.line = tr("No images in the database for this one.");
    } else if (now.file && std::as_const(model_).drafts().isLoading(file_)) {
        shown.line = tr("Fetching artwork…");
    } else if (now.file && now.file->match) {
        // Nobody knows what the database has.
        shown.failed = true;
        shown.line = tr("The artwork couldn't be loaded.");
    } else if (now.file) {
        shown.line = tr("Not matched yet");
    }
    options_.set(std::move(rows));
    if (shown_ != shown) {
        shown_ = std::move(shown);
        Q_EMIT changed();
    }
}

std::vector<ArtRow> InspectorArtwork::rowsOf(const Inspected& now, ArtworkStyle style,
                                             Shown& shown) const {
    const FileDraft& draft = *now.draft;
    const auto shape =
        style == ArtworkStyle::wide ? ArtworkOption::Shape::wide : ArtworkOption::Shape::tall;
    shown.wide = style == ArtworkStyle::wide;
    const auto chosen = draft.chosen(style);
    std::vector<ArtRow> rows;
    const auto add = [&](const ArtworkOption& option, const QString& picture,
                         const QString& label) {
        ArtRow row;
        row.option = option;
        row.key = option.keepsFiles() ? QStringLiteral("in the file") : toQt(option.path);
        row.picture = picture;
        row.label = label;
        row.chosen = chosen && chosen->path == option.path;
        row.spoken = !label.isEmpty() ? label
                     : option.isStill ? tr("Picture %1, from the episode").arg(rows.size() + 1)
                                      : tr("Picture %1").arg(rows.size() + 1);
        const bool isThere = std::ranges::find(rows, row.key, &ArtRow::key) != rows.end();
        if (row.chosen) shown.chosen = static_cast<int>(rows.size());
        if (!isThere) rows.push_back(std::move(row));
    };
    if (now.keepsTags() && now.present && now.present->hasCover)
        add(ArtworkOption::fileKeepsIts(shape),
            ArtAddress::inFile(now.file->file.url, now.present->stamp), tr("In the file now"));
    const auto& options = style == ArtworkStyle::wide ? draft.wide : draft.tall;
    const auto offer = [&](const ArtworkOption& option) {
        const bool isApple = isApples(option);
        shown.fromApple = shown.fromApple || isApple;
        add(option, ArtAddress::remote(option.path, cellSize),
            isApple ? tr("Artwork from Apple") : QString());
    };
    for (const ArtworkOption& option : options) offer(option);
    // One that the season shares may not be among the episode's own.
    if (chosen && !chosen->keepsFiles() && shown.chosen < 0) offer(*chosen);
    return rows;
}

void InspectorArtwork::pick(int row) {
    if (row >= 0 && row < options_.count()) model_.pickArtwork(options_.at(row).option, file_);
}

void InspectorArtwork::setShape(int shape) {
    model_.editDraft(file_, [&](FileDraft& draft) {
        draft.styleOverride.reset();
        if (shape > 0) draft.styleOverride = shape == 1 ? ArtworkStyle::wide : ArtworkStyle::tall;
    });
}

void InspectorArtwork::share(bool on) {
    if (!seasonKey_.empty()) model_.setShareSeason(on, seasonKey_, file_);
}

}  // namespace marlet
