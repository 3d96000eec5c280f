// What the stage does for the inspector: real films, plans, and what became of a draft.

#include <QBuffer>
#include <QColor>
#include <QImage>
#include <QPainter>
#include <map>
#include <utility>

#include "screens/base/qt_text.h"
#include "screens/stage/stage.h"
#include "support/media.h"
#include "write/ilst_editor.h"

namespace marlet::test {

namespace {

using namespace std::chrono_literals;

/// A poster of that colour, as somebody may have made it at home: an evening, a moon, a road.
CoverImage coverOf(const QString& colour) {
    QImage image(300, 450, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QColor tone(colour);
    QLinearGradient sky(0, 0, 0, 320);
    sky.setColorAt(0, tone.darker(230));
    sky.setColorAt(1, tone.lighter(140));
    painter.fillRect(image.rect(), sky);
    painter.setBrush(QColor(255, 240, 214));
    painter.drawEllipse(QPoint(206, 112), 34, 34);
    painter.setBrush(tone.darker(170));
    painter.drawEllipse(QPoint(60, 450), 260, 150);
    painter.setBrush(tone.darker(240));
    painter.drawEllipse(QPoint(270, 480), 250, 150);
    painter.setBrush(QColor(255, 240, 214, 160));
    painter.drawPolygon(QPolygon({{148, 450}, {176, 450}, {172, 356}, {168, 356}}));
    painter.end();
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

/// Much time in few bytes: a picture every ten seconds, and ten seconds over and over. Made once,
/// since pictures ask for the same films again and again.
void makeLongMovie(const std::filesystem::path& file, RealMovie movie, int minutes) {
    static const TempFolder shelf;
    static std::map<std::string, std::filesystem::path> made;
    std::string key = file.extension().string() + std::to_string(minutes);
    for (const auto& [name, value] : movie.tags) key += "|" + name + "=" + value;
    for (const std::string& language : movie.soundLanguages) key += "|" + language;
    auto& film = made[key];
    if (film.empty()) {
        const std::string name = std::to_string(made.size()) + file.extension().string();
        const auto piece = shelf / ("piece of " + name);
        movie.seconds = 10;
        movie.extraArguments = {"-r", "0.1"};
        makeMovie(piece, movie);
        ffmpeg({"-stream_loop", "-1", "-i", piece.string(), "-map", "0", "-map_metadata", "0", "-c",
                "copy", "-t", std::to_string(60 * minutes), (shelf / name).string()});
        film = shelf / name;
    }
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::copy_file(film, file, std::filesystem::copy_options::overwrite_existing);
}

}  // namespace

void Stage::film(const QString& name, const QVariantMap& tags) {
    const int minutes = tags.value(QStringLiteral("minutes")).toInt();
    RealMovie movie{.seconds = 1, .soundTracks = minutes > 0 ? 0 : 1};
    for (auto [key, value] : tags.asKeyValueRange()) {
        if (key == QLatin1String("cover") || key == QLatin1String("minutes")) continue;
        if (key == QLatin1String("sounds")) {
            for (const QString& language : value.toStringList())
                movie.soundLanguages.push_back(fromQt(language));
            movie.soundTracks = static_cast<int>(movie.soundLanguages.size());
        } else {
            movie.tags.emplace_back(fromQt(key), fromQt(value.toString()));
        }
    }
    const auto file = path(fromQt(name));
    if (minutes > 0)
        makeLongMovie(file, movie, minutes);
    else
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
    // What is read for the inspector has no sign of its own at the model: a worker reads it, and
    // an answer of a worker may lead to the next. A staged plan may keep one busy for good.
    for (int quiet = 0; quiet < 3; quiet++) {
        if (!Async::settle(200ms)) quiet = 2;
        Async::wait(Async::sleep(1ms));
        if (std::as_const(*model_).drafts().anyLoading()) quiet = -1;
    }
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
