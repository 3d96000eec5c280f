#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "foundation/records.h"
#include "sources/async.h"
#include "sources/source.h"
#include "sources/tmdb_client.h"

namespace marlet {

/// From files to judged rows: probes, reads guesses, asks the sources in the person's order.
/// Built per scan or re-match. A doubtful file is never dropped and never silently accepted.
/// Never throws, but for CancelError when its token is cancelled: every wait then ends before
/// cancel() returns. Its operations are coroutines of the object, which must outlive them.
class Matcher {
public:
    struct VirtualFile {
        std::filesystem::path fakeURL;
        std::filesystem::path realURL;
    };

    std::shared_ptr<TMDBClient> tmdb;  ///< absent without a key
    bool useAI = true;
    /// Pins the order; the active order of the settings when absent.
    std::optional<std::vector<SourceID>> order;
    /// In place of the built-in sources.
    std::map<SourceID, ExternalSource*> externals;
    std::function<void(int done, int total, const std::string& text)> progress;
    bool ignoreTags = false;
    CancelToken cancel;

    Task<std::vector<LibraryItem>> run(std::vector<std::filesystem::path> roots,
                                       std::set<std::filesystem::path> exclude);
    /// The files of run, judged but not grouped.
    Task<std::vector<ResolvedFile>> resolve(std::vector<std::filesystem::path> roots,
                                            std::set<std::filesystem::path> exclude);
    Task<std::vector<ResolvedFile>> run(std::vector<VirtualFile> files);
    Task<std::vector<ResolvedFile>> process(std::vector<ScannedFile> files);
    /// At most 6 at a time; results in the order of the files.
    Task<std::vector<ScannedFile>> probeAll(std::vector<std::filesystem::path> files);
    /// One result per file, in that order.
    Task<std::vector<ResolvedFile>> resolveSeason(std::vector<ScannedFile> files,
                                                  std::vector<Guess> guesses);
    Task<ResolvedFile> resolveMovie(ScannedFile file, Guess guess);

    static std::vector<LibraryItem> group(const std::vector<ResolvedFile>& resolved);
    /// "Extended cut", "Director's cut", ... from a file's name.
    static std::optional<std::string> cutHint(const std::string& name);
    /// A picture address that carries its size, in a small form.
    static std::string thumbnail(const std::string& url);

private:
    struct Work;

    Task<> probeOne(std::filesystem::path file, std::shared_ptr<std::vector<ScannedFile>> into,
                    std::size_t index);
    Task<> sortByKind(std::vector<ScannedFile> files, std::shared_ptr<Work> work);
    Task<> resolveSeasons(std::shared_ptr<Work> work);
    Task<> resolveFilm(std::shared_ptr<Work> work, std::size_t index);
    Task<> retryAsFilms(std::shared_ptr<Work> work);
    void emptyTags(std::vector<ScannedFile>& files) const;
    void report(int done, int total, const std::string& text) const;
    std::vector<SourceID> sources() const;
    /// Nothing when there is none of that name.
    ExternalSource* external(SourceID id) const;
};

}  // namespace marlet
