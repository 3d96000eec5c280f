// What the stage does for the inspector: real films, plans, and what became of a draft.

#include <QBuffer>
#include <QColor>
#include <QImage>
#include <utility>

#include "screens/base/qt_text.h"
#include "screens/stage/stage.h"
#include "support/media.h"
#include "write/ilst_editor.h"

namespace marlet::test {

namespace {

using namespace std::chrono_literals;

CoverImage coverOf(const QString& colour) {
    QImage image(300, 450, QImage::Format_RGB32);
    image.fill(QColor(colour));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return {Bytes(bytes.begin(), bytes.end()), true};
}

QStringList listOf(const std::vector<std::string>& texts) {
    QStringList list;
    for (const std::string& text : texts) list << toQt(text);
    return list;
}

}  // namespace

void Stage::film(const QString& name, const QVariantMap& tags) {
    RealMovie movie{.seconds = 1};
    for (auto [key, value] : tags.asKeyValueRange()) {
        if (key == QLatin1String("cover")) continue;
        if (key == QLatin1String("sounds")) {
            for (const QString& language : value.toStringList())
                movie.soundLanguages.push_back(fromQt(language));
            movie.soundTracks = static_cast<int>(movie.soundLanguages.size());
        } else {
            movie.tags.emplace_back(fromQt(key), fromQt(value.toString()));
        }
    }
    const auto file = path(fromQt(name));
    makeMovie(file, movie);
    if (!tags.contains(QStringLiteral("cover"))) return;
    std::vector<Atom> atoms = IlstEditor::currentIlst(file);
    atoms.push_back(IlstEditor::covers({coverOf(tags.value(QStringLiteral("cover")).toString())}));
    IlstEditor::apply(IlstEditor::plan(file, IlstEditor::ilstBox(atoms)), file);
}

void Stage::plan(const QString& name, const QString& kind) {
    if (kind == QLatin1String("refused"))
        plans_->put(fromQt(name), StagedPlans::refused());
    else
        plans_->put(fromQt(name), StagedPlans::rich(),
                    kind == QLatin1String("checking") ? StagedPlans::Ends::when_released
                                                      : StagedPlans::Ends::at_once);
}

void Stage::inspect(const QString& name) {
    const auto file = path(fromQt(name));
    for (const LibraryItem& item : model_->items())
        for (const ResolvedFile& each : item.files)
            if (each.file.url == file) model_->reviewID = item.id;
    model_->inspectorFile = file;
    model_->inspectorShown = true;
    settle();
    untilQuiet();
}

void Stage::untilQuiet() {
    // What is read for the inspector has no sign of its own at the model.
    for (int turn = 0; turn < 40; turn++) Async::wait(Async::sleep(5ms));
    while (std::as_const(*model_).drafts().anyLoading()) Async::wait(Async::sleep(5ms));
    settle();
}

QVariantMap Stage::draftOf(const QString& name) const {
    const FileDraft* draft = std::as_const(*model_).drafts().find(path(fromQt(name)));
    if (draft == nullptr) return {};
    const Details& details = draft->details;
    const auto picture = [](const std::optional<ArtworkOption>& option) {
        return !option                ? QString()
               : option->keepsFiles() ? QStringLiteral("the file's")
                                      : toQt(option->path);
    };
    return {{QStringLiteral("title"), toQt(details.title)},
            {QStringLiteral("description"), toQt(details.description)},
            {QStringLiteral("longDescription"), toQt(details.longDescription)},
            {QStringLiteral("cast"), listOf(details.cast)},
            {QStringLiteral("directors"), listOf(details.directors)},
            {QStringLiteral("writers"), listOf(details.writers)},
            {QStringLiteral("genre"), toQt(details.genre)},
            {QStringLiteral("rating"), toQt(details.rating)},
            {QStringLiteral("releaseDate"), toQt(details.releaseDate)},
            {QStringLiteral("episodeEnd"), details.episodeEnd.value_or(0)},
            {QStringLiteral("style"), !draft->styleOverride ? QString()
                                      : *draft->styleOverride == ArtworkStyle::wide
                                          ? QStringLiteral("wide")
                                          : QStringLiteral("tall")},
            {QStringLiteral("chosenWide"), picture(draft->chosenWide)},
            {QStringLiteral("chosenTall"), picture(draft->chosenTall)}};
}

}  // namespace marlet::test
