// Films of picture subtitles whose text is known, and how much of it was read.
//
//   ocr_film make FOLDER TEXTS COUNT   film.mkv, and the text of each picture in meant.txt
//   ocr_film pictures FOLDER           each picture of the film as a file of its own, 0.ppm ...
//   ocr_film score FOLDER...           what read.txt of each has wrong, as a table; the name of a
//   folder
//                                      is its language
//   ocr_film wrong FOLDER [peer]       hundredths of letters wrong in read.txt, or in 0.txt ...
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "convert/pgs_ocr.h"
#include "ocr_pictures.h"

namespace {

using namespace marlet;
namespace fs = std::filesystem;

/// Each picture stands a second, the next follows a second later.
constexpr std::int64_t every = 2000;
/// The last was never looked at while the reading was being made.
const std::vector<std::string> typefaces{"Liberation Sans", "DejaVu Sans", "Open Sans"};

struct Meant {
    std::string manner;
    std::string typeface;
    std::string height;  ///< of the screen
    std::string text;
};

void make(const fs::path& folder, const fs::path& texts, int count) {
    fs::create_directories(folder);
    std::ofstream meant(folder / "meant.txt");
    std::vector<test::pgs::Timed> sets;
    std::int64_t ms = 0;
    for (const bench::Subtitle& subtitle : bench::subtitles(texts, count, typefaces)) {
        sets.push_back({ms, test::pgs::displaySet({bench::draw(subtitle)}, subtitle.plane)});
        sets.push_back({ms + every / 2, test::pgs::displaySet({}, subtitle.plane)});
        meant << subtitle.manner << '\t' << subtitle.style.typeface << '\t' << subtitle.plane.height
              << '\t' << bench::oneLine(subtitle.text) << '\n';
        ms += every;
    }
    const Bytes film = test::pgs::film(sets);
    std::ofstream(folder / "film.mkv", std::ios::binary)
        .write(reinterpret_cast<const char*>(film.data()),
               static_cast<std::streamsize>(film.size()));
}

void pictures(const fs::path& folder) {
    const auto film = MKVFile::open(folder / "film.mkv");
    if (!film) throw std::runtime_error("no film");
    RunControl control;
    int number = 0;
    PGSParser::forEachEvent(*film, film->tracks().at(0), control, [&](PGSParser::Event event) {
        const auto image = PGSOCR::image(event).value();
        std::string pixels;
        for (std::size_t i = 0; i < image.rgba.size(); i++)
            if (i % 4 != 3) pixels += static_cast<char>(image.rgba[i]);
        std::ofstream(folder / (std::to_string(number++) + ".ppm"), std::ios::binary)
            << "P6\n"
            << image.width << ' ' << image.height << "\n255\n"
            << pixels;
    });
}

std::vector<Meant> meantOf(const fs::path& folder) {
    std::ifstream in(folder / "meant.txt");
    std::vector<Meant> all;
    Meant one;
    while (std::getline(in, one.manner, '\t') && std::getline(in, one.typeface, '\t') &&
           std::getline(in, one.height, '\t') && std::getline(in, one.text)) {
        one.text = bench::manyLines(one.text);
        all.push_back(one);
    }
    if (all.empty()) throw std::runtime_error("nothing meant in " + folder.string());
    return all;
}

/// By picture; those that were not read are empty.
std::vector<std::string> readOf(const fs::path& folder, std::size_t count) {
    std::vector<std::string> texts(count);
    std::ifstream in(folder / "read.txt");
    std::string ms;
    std::string text;
    while (std::getline(in, ms, '\t') && std::getline(in, text))
        texts.at(static_cast<std::size_t>(std::stoll(ms) / every)) = bench::manyLines(text);
    return texts;
}

/// What the tesseract program made of each picture, without its blank lines and the page's end.
std::vector<std::string> peersOf(const fs::path& folder, std::size_t count) {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < count; i++) {
        std::ifstream in(folder / (std::to_string(i) + ".txt"));
        std::string text;
        for (std::string line; std::getline(in, line);) {
            std::erase(line, '\f');
            if (line.empty()) continue;
            if (!text.empty()) text += '\n';
            text += line;
        }
        texts.push_back(std::move(text));
    }
    return texts;
}

struct Tally {
    int wrong = 0;
    int letters = 0;
    int pictures = 0;
    int faultless = 0;
    double hundredths() const { return letters == 0 ? 0 : 100.0 * wrong / letters; }
};

/// By column: "all", a manner, a typeface, a height.
std::map<std::string, Tally> tallies(const std::vector<Meant>& meant,
                                     const std::vector<std::string>& read) {
    std::map<std::string, Tally> all;
    for (std::size_t i = 0; i < meant.size(); i++) {
        const int wrong = bench::wrongLetters(read[i], meant[i].text);
        for (const std::string& column :
             {std::string("all"), meant[i].manner, meant[i].typeface, meant[i].height}) {
            Tally& tally = all[column];
            tally.wrong += wrong;
            tally.letters += bench::lettersOf(meant[i].text);
            tally.pictures++;
            tally.faultless += wrong == 0 ? 1 : 0;
        }
    }
    return all;
}

void score(const std::vector<fs::path>& folders) {
    const std::vector<std::string> columns{
        "all",      "1080",      "2160",   "Liberation Sans", "DejaVu Sans", "Open Sans",
        "one line", "two lines", "italic", "two speakers",    "music",       "yellow"};
    std::cout << "| language | pictures | faultless | characters |";
    for (const std::string& column : columns) std::cout << ' ' << column << " |";
    std::cout << "\n|---|---|---|---|";
    for (std::size_t i = 0; i < columns.size(); i++) std::cout << "---|";
    std::cout << '\n';
    for (const fs::path& folder : folders) {
        const std::vector<Meant> meant = meantOf(folder);
        auto tally = tallies(meant, readOf(folder, meant.size()));
        const Tally& all = tally["all"];
        std::cout << "| " << folder.filename().string() << " | " << all.pictures << " | "
                  << all.faultless << " | " << all.letters << " |";
        for (const std::string& column : columns) {
            char value[32];
            std::snprintf(value, sizeof value, " %.2f %% |", tally[column].hundredths());
            std::cout << value;
        }
        std::cout << '\n';
    }
}

}  // namespace

int main(int count, char** arguments) try {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    const std::string what = words.empty() ? "" : words[0];
    if (what == "make" && words.size() == 4) {
        make(words[1], words[2], std::stoi(words[3]));
    } else if (what == "pictures" && words.size() == 2) {
        pictures(words[1]);
    } else if (what == "score" && words.size() > 1) {
        score({words.begin() + 1, words.end()});
    } else if (what == "wrong" && words.size() >= 2) {
        const std::vector<Meant> meant = meantOf(words[1]);
        const auto read =
            words.size() == 3 ? peersOf(words[1], meant.size()) : readOf(words[1], meant.size());
        std::printf("%.3f\n", tallies(meant, read)["all"].hundredths());
    } else {
        std::cerr << "usage: ocr_film make|pictures|score|wrong ...\n";
        return 2;
    }
    return 0;
} catch (const std::exception& failure) {
    std::cerr << failure.what() << '\n';
    return 1;
}
