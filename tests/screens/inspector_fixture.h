#pragma once

#include "app/model_fixture.h"
#include "app/settings.h"
#include "screens/base/qt_text.h"
#include "screens/inspector/inspector_model.h"
#include "screens/stage/staged_plans.h"
#include "support/media.h"
#include "write/ilst_editor.h"

namespace marlet::test {

inline ResolvedFile resolved(const std::filesystem::path& url, std::optional<Match> match,
                             Verdict verdict = Verdict::certain()) {
    ResolvedFile file;
    file.file.url = url;
    if (match)
        file.guess = Guess{.kind = match->kind,
                           .title = match->title,
                           .season = match->season,
                           .episode = match->episode};
    file.match = std::move(match);
    file.verdict = std::move(verdict);
    return file;
}

inline Match film() {
    return {.tmdbID = 1, .kind = MediaKind::movie, .title = "Charade", .year = 1963};
}

inline Match episode(int number) {
    return {.tmdbID = 2,
            .kind = MediaKind::tv,
            .title = "A Show",
            .season = 1,
            .episode = number,
            .episodeTitle = "Part " + std::to_string(number)};
}

/// The inspector over the real model, with films of one row.
class InspectorScreen : public ModelTest {
protected:
    InspectorScreen() {
        parts.planBuilder = StagedPlans::of(plans);
        make();
        inspector = std::make_unique<InspectorModel>(*model);
        model->onChanged = [this] { inspector->refresh(); };
        model->inspectorShown = true;
    }
    ~InspectorScreen() override {
        plans->release();
        model->onChanged = nullptr;
        inspector.reset();
    }

    void place(std::vector<ResolvedFile> files) {
        model->place(files);
        model->reviewID = model->items().front().id;
        model->inspectorFile = files.front().file.url;
        inspector->refresh();
    }
    FileDraft filmDraft() {
        FileDraft draft;
        draft.details.title = "Charade";
        draft.details.genre = "Thriller";
        draft.details.cast = {"Cary Grant", "Audrey Hepburn"};
        draft.details.releaseDate = "1963-12-05";
        draft.original = draft.details;
        draft.tall = {{ArtworkOption::Shape::tall, "/a.jpg"},
                      {ArtworkOption::Shape::tall, "/b.jpg"}};
        draft.wide = {{ArtworkOption::Shape::wide, "/w.jpg"}};
        return draft;
    }
    void draftFor(const std::filesystem::path& url, FileDraft draft) {
        model->drafts().put(url, std::move(draft));
        inspector->refresh();
    }
    template <typename Done>
    void until(const Done& done) {
        for (int turn = 0; turn < 5000 && !done(); turn++) pause();
        EXPECT_TRUE(done());
    }
    static std::vector<std::string> column(RowListBase* list, const char* name) {
        std::vector<std::string> texts;
        for (int row = 0; row < list->rowCount({}); row++)
            texts.push_back(
                fromQt(list->data(list->index(row, 0), list->roleNames().key(name)).toString()));
        return texts;
    }
    std::string field(const char* label, const char* name) {
        RowListBase* fields = inspector->details()->fields();
        const auto labels = column(fields, "label");
        const auto at = std::ranges::find(labels, label) - labels.begin();
        return column(fields, name).at(static_cast<std::size_t>(at));
    }
    int rowOf(const char* label) {
        const auto labels = column(inspector->details()->fields(), "label");
        return static_cast<int>(std::ranges::find(labels, label) - labels.begin());
    }
    const Details& details(const std::filesystem::path& url) {
        return std::as_const(*model).drafts().find(url)->details;
    }
    /// A real film with these tags, in Review with a draft; read.
    std::filesystem::path realFilm(bool cover = true) {
        const auto url = library / "Charade (1963).m4v";
        makeMovie(url, {.soundTracks = 2,
                        .soundLanguages = {"eng", "fre"},
                        .tags = {{"title", "Old"}, {"genre", "Thriller"}, {"comment", "mine"}}});
        if (cover) {
            std::vector<Atom> atoms = IlstEditor::currentIlst(url);
            atoms.push_back(IlstEditor::covers({{bytesOf("picture"), false}}));
            IlstEditor::apply(IlstEditor::plan(url, IlstEditor::ilstBox(atoms)), url);
        }
        place({resolved(url, film())});
        draftFor(url, filmDraft());
        until([&] { return inspector->compare()->isPossible(); });
        return url;
    }

    std::shared_ptr<StagedPlans> plans = std::make_shared<StagedPlans>();
    std::unique_ptr<InspectorModel> inspector;
};

}  // namespace marlet::test
