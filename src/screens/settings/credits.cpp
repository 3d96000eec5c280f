#include "screens/settings/credits.h"

#include <QCoreApplication>
#include <QStandardPaths>
#include <utility>

#include "foundation/run_control.h"
#include "foundation/text.h"
#include "foundation/tool_runner.h"
#include "identify/asking.h"
#include "screens/base/qt_text.h"

namespace marlet {

namespace {

#define WORDS(text) QT_TRANSLATE_NOOP("Credits", text)

struct Credit {
    const char* name;
    const char* version;  ///< known when Marlet was built; null for a program, which tells it
    const char* use;
    const char* license;
    const char* source;  ///< "%1" stands for the version, or for the commit
    /// The same for a commit, where another place has those.
    const char* commits = nullptr;
};

// The versions are what the build was made with; a program that Marlet runs is asked.
constexpr Credit credits[] = {
    {"GPAC (MP4Box and gpac)", nullptr, WORDS("Builds and reads MP4 files"), "LGPL-2.1-or-later",
     "https://github.com/gpac/gpac/tree/%1"},
    {"FFmpeg", nullptr, WORDS("Decodes and encodes sound"), "LGPL-2.1-or-later, GPL-2.0-or-later",
     "https://ffmpeg.org/releases/ffmpeg-%1.tar.xz", "https://github.com/FFmpeg/FFmpeg/tree/%1"},
    {"Qt", QT_VERSION_STR, WORDS("Windows, network and events"), "LGPL-3.0-only",
     "https://download.qt.io/archive/qt/6.4/%1/"},
    {"ICU", MARLET_ICU_VERSION, WORDS("Text of all languages"), "Unicode-DFS-2016",
     "https://github.com/unicode-org/icu/releases"},
    {"OpenSSL", MARLET_OPENSSL_VERSION, WORDS("Digests and secure connections"), "Apache-2.0",
     "https://github.com/openssl/openssl/tree/openssl-%1"},
    {"zlib", MARLET_ZLIB_VERSION, WORDS("Compressed tracks"), "Zlib",
     "https://github.com/madler/zlib/tree/v%1"},
    {"libplist", MARLET_PLIST_VERSION, WORDS("Reads property lists in tags"), "LGPL-2.1-or-later",
     "https://github.com/libimobiledevice/libplist/tree/%1"},
    {"FLAC", MARLET_FLAC_VERSION, WORDS("Checks lossless sound"), "BSD-3-Clause",
     "https://github.com/xiph/flac/tree/%1"},
    {"Tesseract", MARLET_TESSERACT_VERSION, WORDS("Reads subtitles that are pictures"),
     "Apache-2.0", "https://github.com/tesseract-ocr/tesseract/tree/%1"},
    {"Leptonica", MARLET_LEPTONICA_VERSION, WORDS("Pictures for Tesseract"), "BSD-2-Clause",
     "https://github.com/DanBloomberg/leptonica/tree/%1"},
    {"QCoro", MARLET_QCORO_VERSION, WORDS("Coroutines for Qt"), "MIT",
     "https://github.com/danvratil/qcoro/tree/v%1"},
    {"QtKeychain", MARLET_QTKEYCHAIN_VERSION, WORDS("Keeps the TMDB key in the keyring"),
     "BSD-2-Clause", "https://github.com/frankosterfeld/qtkeychain/tags"},
    {"JSON for Modern C++", MARLET_JSON_VERSION, WORDS("Reads and writes JSON"), "MIT",
     "https://github.com/nlohmann/json/tree/v%1"},
};

#undef WORDS

constexpr const char* gpac = credits[0].name;
constexpr const char* ffmpeg = credits[1].name;

bool isDigit(char letter) {
    return letter >= '0' && letter <= '9';
}

std::string said(const std::filesystem::path& tool, const std::string& option) {
    RunControl control;
    try {
        return ToolRunner::listing(tool, {option}, {}, control);
    } catch (const std::exception&) {
        return {};  // one that doesn't start has no version
    }
}

/// An address with the version or commit in its gap; without either the place of all of them.
QString filled(const char* address, const QString& version) {
    const QString source = QString::fromLatin1(address);
    const qsizetype gap = source.indexOf(QLatin1String("%1"));
    if (gap < 0) return source;
    return version.isEmpty() ? source.left(source.lastIndexOf(QLatin1Char('/'), gap) + 1)
                             : source.arg(version);
}

/// Where the source of exactly that is.
QString sourceOf(const Credit& credit, const std::string& version, const std::string& commit) {
    if (!commit.empty())
        return filled(credit.commits != nullptr ? credit.commits : credit.source, toQt(commit));
    // A build between two versions names the first by a letter.
    const bool isRelease = !version.empty() && isDigit(version.front());
    return filled(credit.source, isRelease ? toQt(version) : QString());
}

}  // namespace

Credits::Credits(QObject* parent) : QObject(parent) {
    show({});
}

Credits::~Credits() {
    life_.cancel();
}

QString Credits::notices() const {
    return QString::fromUtf8(thirdPartyNotices);
}

void Credits::show(const Versions& tools) {
    std::vector<CreditRow> rows;
    for (const Credit& credit : credits) {
        CreditRow row;
        row.key = QString::fromLatin1(credit.name);
        const auto told = tools.find(credit.name);
        if (credit.version != nullptr)
            row.version = QString::fromLatin1(credit.version);
        else if (told != tools.end())
            row.version =
                told->second.version.empty() ? tr("not installed") : toQt(told->second.version);
        row.use = tr(credit.use);
        row.license = QString::fromLatin1(credit.license);
        row.source = credit.version != nullptr ? sourceOf(credit, credit.version, {})
                     : told != tools.end()
                         ? sourceOf(credit, told->second.version, told->second.commit)
                         : sourceOf(credit, {}, {});
        row.spoken =
            QStringList{row.key, row.version, row.use, row.license}.join(QStringLiteral(", "));
        rows.push_back(row);
    }
    rows_.set(std::move(rows));
}

Credits::Told Credits::toldIn(const std::string& text, const std::string& before) {
    const std::size_t found = text.find(before);
    if (found == std::string::npos) return {};
    const std::size_t first = found + before.size();
    std::string word = text.substr(first, text.find_first_of(" \t\r\n", first) - first);
    // Some systems keep the letter of the tag: "n7.1".
    if (word.size() > 1 && word[0] == 'n' && isDigit(word[1])) word.erase(0, 1);
    // FFmpeg counts its changes since it began: "N-113007-g8d24a28d06-20231205".
    Told told{.version = word.substr(0, word.find('-', Text::startsWith(word, "N-") ? 2 : 0)),
              .commit = {}};
    const std::size_t commit = word.find("-g");
    if (commit == std::string::npos) return told;
    const std::string digits = word.substr(commit + 2, word.find('-', commit + 2) - commit - 2);
    const bool isCommit =
        digits.size() >= 7 && digits.find_first_not_of("0123456789abcdef") == std::string::npos;
    if (isCommit) told.commit = digits;
    return told;
}

Credits::Versions Credits::askTools() {
    Versions versions = {{gpac, {}}, {ffmpeg, {}}};
    if (const auto box = MP4BoxLocator::find())
        versions[gpac] = toldIn(said(*box, "-version"), "GPAC version ");
    const QString sound = QStandardPaths::findExecutable(QStringLiteral("ffmpeg"));
    if (!sound.isEmpty())
        versions[ffmpeg] = toldIn(said(fromQt(sound), "-version"), "ffmpeg version ");
    return versions;
}

void Credits::open() {
    if (!std::exchange(looked_, true)) look();
}

Task<> Credits::look() {
    std::function<Versions()> work = [] { return askTools(); };
    auto working = Asking::orCancelled(Async::onWorker(std::move(work)), life_);
    const Versions versions = co_await working;
    show(versions);
}

}  // namespace marlet
