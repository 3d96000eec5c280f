#include <gtest/gtest.h>

#include <QBuffer>
#include <QImage>
#include <memory>

#include "foundation/preferences.h"
#include "screens/pictures/art_address.h"
#include "screens/pictures/art_memory.h"
#include "screens/pictures/art_store.h"
#include "screens/pictures/picture_decoder.h"
#include "support/http_stub.h"
#include "support/media.h"
#include "support/qt_app.h"
#include "support/temp_folder.h"
#include "write/ilst_editor.h"

namespace marlet::test {
namespace {

using namespace std::chrono_literals;

Bytes picture(const char* format, QSize size = {60, 90}, QColor colour = Qt::darkCyan) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format));
    return Bytes(bytes.begin(), bytes.end());
}

/// As PNG (ISO/IEC 15948, annex D) reckons it.
std::uint32_t checksum(ByteView data) {
    std::uint32_t sum = 0xFFFFFFFF;
    for (const std::uint8_t byte : data) {
        sum ^= byte;
        for (int bit = 0; bit < 8; bit++) sum = (sum & 1) != 0 ? sum >> 1 ^ 0xEDB88320 : sum >> 1;
    }
    return ~sum;
}

void put32(Bytes& data, std::size_t at, std::uint32_t value) {
    for (int byte = 0; byte < 4; byte++)
        data[at + static_cast<std::size_t>(byte)] =
            static_cast<std::uint8_t>(value >> (24 - 8 * byte));
}

/// A small PNG that claims another size, with a checksum that fits.
Bytes claiming(std::uint32_t width, std::uint32_t height) {
    Bytes data = picture("PNG");
    put32(data, 16, width);
    put32(data, 20, height);
    put32(data, 29, checksum(ByteView(data).subspan(12, 17)));
    return data;
}

TEST(PictureDecoder, DecodesTheKindsThatCoversHave) {
    for (const char* format : {"JPEG", "PNG", "BMP", "WEBP"})
        EXPECT_EQ(PictureDecoder::decode(picture(format), {}).size(), QSize(60, 90)) << format;
}

TEST(PictureDecoder, ScalesToCoverTheWantedSizeAndNeverEnlarges) {
    const Bytes data = picture("JPEG", {600, 900});
    EXPECT_EQ(PictureDecoder::decode(data, {60, 0}).size(), QSize(60, 90));
    EXPECT_EQ(PictureDecoder::decode(data, {0, 45}).size(), QSize(30, 45));
    EXPECT_EQ(PictureDecoder::decode(data, {60, 60}).size(), QSize(60, 90));
    EXPECT_EQ(PictureDecoder::decode(data, {6000, 0}).size(), QSize(600, 900));
}

TEST(PictureDecoder, RefusesAPictureBomb) {
    EXPECT_FALSE(PictureDecoder::decode(claiming(300, 300), {}).isNull() &&
                 PictureDecoder::decode(claiming(60, 90), {}).isNull())
        << "the small claim shows that the checksum fits";
    EXPECT_TRUE(PictureDecoder::decode(claiming(60000, 60000), {36, 0}).isNull());
    EXPECT_TRUE(PictureDecoder::decode(claiming(20000, 10), {36, 0}).isNull());
    EXPECT_TRUE(PictureDecoder::decode(claiming(9000, 9000), {36, 0}).isNull());
    Bytes jpeg = picture("JPEG");
    for (std::size_t at = 2; at + 9 < jpeg.size(); at++)
        if (jpeg[at] == 0xFF && jpeg[at + 1] == 0xC0) {
            jpeg[at + 5] = jpeg[at + 6] = jpeg[at + 7] = jpeg[at + 8] = 0xFF;
            break;
        }
    EXPECT_TRUE(PictureDecoder::decode(jpeg, {36, 0}).isNull());
}

TEST(PictureDecoder, RefusesMoreBytesThanAPictureHas) {
    Bytes data = picture("JPEG");
    const Bytes tail = {0xFF, 0xD9};
    data.resize(PictureDecoder::mostBytes + 1);
    std::ranges::copy(tail, data.end() - 2);
    EXPECT_TRUE(PictureDecoder::decode(data, {}).isNull());
}

TEST(PictureDecoder, RefusesWhatIsCutShort) {
    for (const char* format : {"JPEG", "PNG"}) {
        const Bytes whole = picture(format, {300, 450});
        for (const std::size_t length :
             {std::size_t{0}, std::size_t{3}, std::size_t{20}, whole.size() / 2, whole.size() - 40})
            EXPECT_TRUE(PictureDecoder::decode(ByteView(whole).first(length), {36, 0}).isNull())
                << format << " of " << length;
    }
}

TEST(PictureDecoder, RefusesWhatIsNoPictureAndVectorDrawings) {
    for (const std::string_view text :
         {"", "<html>not found</html>",
          "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>", "GIF89a",
          "\xFF\xD8\xFF"})
        EXPECT_TRUE(PictureDecoder::decode(bytesOf(text), {}).isNull()) << text;
}

TEST(ArtAddress, LeadsBackToWhatItWasMadeOf) {
    const auto back = [](const QString& address) {
        return ArtAddress::parse(address.mid(QStringLiteral("image://art/").size()));
    };
    EXPECT_EQ(back(ArtAddress::remote(std::string("/p.jpg"), "w185")),
              (Art{Art::Kind::remote, "w185", "/p.jpg"}));
    const std::string far = "https://is1-ssl.mzstatic.com/image/a b/1600x2400.jpg?x=1#y";
    EXPECT_EQ(back(ArtAddress::remote(far, "w300")), (Art{Art::Kind::remote, "w300", far}));
    const std::string odd = "/films/\xFF ä%2F#?.mp4";
    EXPECT_EQ(back(ArtAddress::saved(odd)), (Art{Art::Kind::saved, "", odd}));
    EXPECT_EQ(back(ArtAddress::inFile(odd, "7")), (Art{Art::Kind::inFile, "7", odd}));
}

TEST(ArtAddress, NothingToShowHasNoAddress) {
    EXPECT_EQ(ArtAddress::remote(std::string(), "w185"), QString());
    EXPECT_EQ(ArtAddress::remote(std::optional<std::string>(), "w185"), QString());
    for (const char* odd : {"", "remote", "remote/w185", "other/w185/L3A", "remote/w185/!!",
                            "remote/w185/", "remote/w185/L3A/x"})
        EXPECT_FALSE(ArtAddress::parse(QString::fromLatin1(odd))) << odd;
}

TEST(ArtMemory, KeepsWhatWasUsedLastWithinItsRoom) {
    const QImage image(10, 10, QImage::Format_RGB32);  // 400 bytes
    ArtMemory memory(1000);
    const QString keys[] = {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")};
    memory.keep(keys[0], image);
    memory.keep(keys[1], image);
    EXPECT_FALSE(memory.find(keys[0]).isNull());
    memory.keep(keys[2], image);
    EXPECT_TRUE(memory.find(keys[1]).isNull()) << "used longest ago";
    EXPECT_FALSE(memory.find(keys[0]).isNull());
    EXPECT_EQ(memory.used(), 800);
    memory.keep(keys[0], QImage(100, 100, QImage::Format_RGB32));
    EXPECT_TRUE(memory.find(keys[0]).isNull()) << "larger than all the room";
    EXPECT_EQ(memory.used(), 400);
}

class ArtStoreTest : public testing::Test {
protected:
    ArtStoreTest() : images("MARLET_TMDB_IMAGES", web.root()), none("MARLET_TMDB_TOKEN", "") {
        qtApp();
        Preferences::install(std::make_unique<MemoryPreferences>());
        store = std::make_shared<ArtStore>();
    }
    ~ArtStoreTest() override {
        store->close();
        EXPECT_TRUE(Async::settle(20s));
    }

    static QString idOf(const QString& address) {
        return address.mid(QStringLiteral("image://art/").size());
    }
    static QString remote(const std::string& path) {
        return idOf(ArtAddress::remote(path, "w185"));
    }
    void serve(const std::string& path, const Bytes& bytes,
               HttpStub::Manner manner = HttpStub::Manner::Whole) {
        web.answer("/t/p/w185" + path, {{.body = std::string(bytes.begin(), bytes.end()),
                                         .type = "image/jpeg",
                                         .manner = manner}});
    }
    /// Its place in `answers` tells the order in which they came.
    void ask(std::uint64_t number, const QString& id, QSize wanted = {36, 0}) {
        store->ask(number, id, wanted,
                   [this, number](const QImage& image) { answers.emplace_back(number, image); });
    }
    static void pause() { Async::wait(Async::sleep(2ms)); }
    void untilAnswers(std::size_t count) {
        while (answers.size() < count) pause();
    }
    QImage get(const QString& id) {
        answers.clear();
        ask(99, id);
        untilAnswers(1);
        return answers[0].second;
    }

    OwnHome home;
    TempFolder folder;
    HttpStub web;
    ScopedEnv images;
    ScopedEnv none;
    std::shared_ptr<ArtStore> store;
    std::vector<std::pair<std::uint64_t, QImage>> answers;
};

TEST_F(ArtStoreTest, APictureNeedsNoKey) {
    serve("/p.jpg", picture("JPEG", {185, 278}));
    EXPECT_EQ(get(remote("/p.jpg")).width(), 36);
    ASSERT_EQ(web.count(), 1u);
    EXPECT_EQ(web.seen()[0].header("Authorization"), "");
}

TEST_F(ArtStoreTest, AFullAddressIsAskedAsItIs) {
    const Bytes bytes = picture("PNG");
    web.answer("/apple/600x900.jpg", std::string(bytes.begin(), bytes.end()));
    EXPECT_FALSE(get(idOf(ArtAddress::remote(web.root() + "/apple/600x900.jpg", "w300"))).isNull());
}

TEST_F(ArtStoreTest, WhatWasFetchedOnceIsAskedOfNoServiceAgain) {
    serve("/p.jpg", picture("JPEG"));
    EXPECT_FALSE(get(remote("/p.jpg")).isNull());
    EXPECT_FALSE(store->find(remote("/p.jpg"), {36, 0}).isNull());
    store = std::make_shared<ArtStore>();  // another run of the program
    EXPECT_TRUE(store->find(remote("/p.jpg"), {36, 0}).isNull());
    EXPECT_FALSE(get(remote("/p.jpg")).isNull());
    EXPECT_EQ(web.count(), 1u);
}

TEST_F(ArtStoreTest, ManyWhoWantOnePictureAreOneRequest) {
    serve("/p.jpg", picture("JPEG"), HttpStub::Manner::Held);
    for (std::uint64_t number = 1; number <= 5; number++) ask(number, remote("/p.jpg"));
    while (web.held() < 1) pause();
    web.release();
    untilAnswers(5);
    for (const auto& [number, image] : answers) EXPECT_FALSE(image.isNull());
    EXPECT_EQ(web.count(), 1u);
}

TEST_F(ArtStoreTest, AFewAtATimeAndThoseAskedForLastFirst) {
    // Three that stay leave one place to all others, which come one after the other then.
    const auto name = [](std::uint64_t film) { return "/" + std::to_string(film) + ".jpg"; };
    for (std::uint64_t film = 1; film <= 9; film++)
        serve(name(film), picture("JPEG"),
              film <= 3 ? HttpStub::Manner::Held : HttpStub::Manner::Whole);
    for (std::uint64_t film = 1; film <= 9; film++) ask(film, remote(name(film)));
    EXPECT_EQ(store->underWay(), 4);
    untilAnswers(6);
    EXPECT_EQ(store->underWay(), 3);
    while (web.held() < 3) pause();
    web.release();
    untilAnswers(9);
    EXPECT_LE(web.mostAtOnce(), 4);

    std::vector<std::string> inTurn;
    for (const std::string& target : web.targets())
        if (target > "/t/p/w185/3.jpg") inTurn.push_back(target.substr(10, 1));
    EXPECT_EQ(inTurn, (std::vector<std::string>{"4", "9", "8", "7", "6", "5"}))
        << "the first four had begun";
}

TEST_F(ArtStoreTest, WhatNobodyWantsAnyMoreEnds) {
    serve("/p.jpg", picture("JPEG"), HttpStub::Manner::Held);
    ask(1, remote("/p.jpg"));
    ask(2, remote("/p.jpg"));
    while (web.held() < 1) pause();
    store->drop(1);
    EXPECT_EQ(store->underWay(), 1) << "the other still waits";
    store->drop(2);
    while (store->underWay() > 0) pause();
    EXPECT_TRUE(answers.empty());
    web.release();
}

TEST_F(ArtStoreTest, AFailureIsNoPicture) {
    EXPECT_TRUE(get(remote("/missing.jpg")).isNull());
    serve("/text.jpg", bytesOf("<html>"));
    EXPECT_TRUE(get(remote("/text.jpg")).isNull());
    serve("/cut.jpg", picture("JPEG"), HttpStub::Manner::Cut);
    EXPECT_TRUE(get(remote("/cut.jpg")).isNull());
    EXPECT_TRUE(get(QStringLiteral("nonsense")).isNull());
    EXPECT_TRUE(get(idOf(ArtAddress::remote(std::string("ftp://x/p.jpg"), ""))).isNull());
    EXPECT_TRUE(get(idOf(ArtAddress::saved(folder / "none.jpg"))).isNull());
    EXPECT_TRUE(get(idOf(ArtAddress::saved(folder.path()))).isNull());
    EXPECT_TRUE(
        get(idOf(ArtAddress::inFile(folder.write("no.mp4", std::string_view("x"))))).isNull());
}

TEST_F(ArtStoreTest, AnAnswerThatIsNoPictureIsNotKept) {
    const Bytes good = picture("JPEG");
    web.answer("/t/p/w185/p.jpg",
               {{.body = "<html>"}, {.body = std::string(good.begin(), good.end())}});
    EXPECT_TRUE(get(remote("/p.jpg")).isNull());
    store = std::make_shared<ArtStore>();
    EXPECT_FALSE(get(remote("/p.jpg")).isNull());
}

TEST_F(ArtStoreTest, AFileOfOursIsReadAgainWhenItHasChanged) {
    const auto file = folder.write("p.jpg", picture("PNG", {60, 90}, Qt::red));
    const QString id = idOf(ArtAddress::saved(file));
    EXPECT_EQ(get(id).pixelColor(1, 1), QColor(Qt::red));
    folder.write("p.jpg", picture("PNG", {50, 90}, Qt::blue));
    EXPECT_EQ(get(id).pixelColor(1, 1), QColor(Qt::blue));
}

TEST_F(ArtStoreTest, TheCoverInAFilmIsShown) {
    const auto film = folder / "film.m4v";
    makeMovie(film);
    EXPECT_TRUE(get(idOf(ArtAddress::inFile(film))).isNull());
    const Atom cover = IlstEditor::covers({{picture("PNG", {60, 90}, Qt::green), true}});
    IlstEditor::apply(IlstEditor::plan(film, IlstEditor::ilstBox({cover})), film);
    const QImage shown = get(idOf(ArtAddress::inFile(film)));
    EXPECT_EQ(shown.size(), QSize(36, 54));
    EXPECT_EQ(shown.pixelColor(1, 1), QColor(Qt::green));
}

TEST_F(ArtStoreTest, TheMemoryIsBounded) {
    const Bytes bytes = picture("PNG", {2000, 2000});  // 16 MB of pixels
    for (int film = 1; film <= 5; film++) {
        serve("/" + std::to_string(film) + ".jpg", bytes);
        answers.clear();
        ask(1, remote("/" + std::to_string(film) + ".jpg"), {});
        untilAnswers(1);
        EXPECT_EQ(answers[0].second.width(), 2000);
    }
    EXPECT_LE(store->memoryUsed(), 48 * 1024 * 1024);
    EXPECT_GT(store->memoryUsed(), 16 * 1024 * 1024);
}

}  // namespace
}  // namespace marlet::test
