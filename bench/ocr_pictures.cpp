#include "ocr_pictures.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <functional>
#include <numeric>
#include <random>
#include <stdexcept>

namespace marlet::bench {

namespace {

constexpr std::array names{"Keller", "Hill",   "Moreau", "O'Brien", "Lindqvist", "Ilsa",
                           "Bauer",  "García", "Will",   "Dupont",  "Ibarra",    "Fitzgerald"};
constexpr std::array manners{"one line", "two lines", "italic", "two speakers", "music", "yellow"};

using Random = std::mt19937;  // the same numbers everywhere, which distributions don't promise

std::string filled(std::string text, Random& random) {
    const auto fill = [&](const std::string& slot, const std::function<std::string()>& value) {
        for (std::size_t at = text.find(slot); at != std::string::npos; at = text.find(slot))
            text.replace(at, slot.size(), value());
    };
    const auto number = [&](unsigned from, unsigned to) {
        return std::to_string(from + random() % (to - from + 1));
    };
    fill("{name}", [&] { return std::string(names[random() % names.size()]); });
    fill("{n}", [&] { return number(2, random() % 3 == 0 ? 900 : 99); });
    fill("{h}", [&] { return number(1, 23); });
    fill("{m}", [&] { return number(10, 59); });
    fill("{y}", [&] { return number(1801, 2019); });
    return text;
}

std::vector<std::string> linesOfFile(const std::filesystem::path& file) {
    std::ifstream in(file);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) lines.push_back(line);
    if (lines.size() < 2) throw std::runtime_error("no sentences in " + file.string());
    return lines;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos;
         at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

std::u32string codePoints(const std::string& text) {
    std::u32string points;
    for (const char each : text) {
        const auto byte = static_cast<unsigned char>(each);
        if ((byte & 0xC0) == 0x80 && !points.empty()) {
            points.back() = (points.back() << 6) | (byte & 0x3F);
        } else if (byte < 0x80) {
            points.push_back(byte);
        } else {
            points.push_back(byte & (byte >= 0xF0 ? 0x07 : byte >= 0xE0 ? 0x0F : 0x1F));
        }
    }
    return points;
}

}  // namespace

std::vector<Subtitle> subtitles(const std::filesystem::path& texts, int count,
                                const std::vector<std::string>& typefaces) {
    const std::vector<std::string> sentences = linesOfFile(texts);
    Random random(5);
    std::vector<std::size_t> order(sentences.size());
    std::iota(order.begin(), order.end(), 0);
    std::size_t next = order.size();
    const auto sentence = [&] {
        if (next == order.size()) {
            for (std::size_t i = order.size(); i > 1; i--)
                std::swap(order[i - 1], order[random() % i]);
            next = 0;
        }
        return filled(sentences[order[next++]], random);
    };
    std::vector<Subtitle> all;
    for (int i = 0; i < count; i++) {
        Subtitle made;
        const auto number = static_cast<std::size_t>(i);
        made.style.typeface = typefaces[number % typefaces.size()];
        const std::size_t large = number / typefaces.size() % 2;
        made.plane = large == 0 ? test::pgs::Plane{1920, 1080} : test::pgs::Plane{3840, 2160};
        made.manner = manners[number / typefaces.size() / 2 % manners.size()];
        made.text = sentence();
        if (made.manner == "two lines") made.text += '\n' + sentence();
        if (made.manner == "italic") made.style.italic = true;
        if (made.manner == "two speakers") made.text = "- " + made.text + "\n- " + sentence();
        if (made.manner == "music") made.text = "♪ " + made.text + " ♪";
        if (made.manner == "yellow") {
            made.style.colour = 0xFFFF00;
            if (random() % 2 == 0) made.text += '\n' + sentence();
        }
        all.push_back(std::move(made));
    }
    return all;
}

test::pgs::Placed draw(const Subtitle& subtitle) {
    return test::renderLines(subtitle.text, subtitle.style, subtitle.plane.width,
                             subtitle.plane.height);
}

std::string oneLine(std::string text) {
    replaceAll(text, "\n", "\\n");
    return text;
}

std::string manyLines(std::string text) {
    replaceAll(text, "\\n", "\n");
    return text;
}

int wrongLetters(const std::string& read, const std::string& meant) {
    const std::u32string a = codePoints(read);
    const std::u32string b = codePoints(meant);
    std::vector<int> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (std::size_t i = 1; i <= a.size(); i++) {
        int diagonal = row[0];
        row[0] = static_cast<int>(i);
        for (std::size_t j = 1; j <= b.size(); j++) {
            const int changed = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({changed, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row[b.size()];
}

int lettersOf(const std::string& text) {
    return static_cast<int>(codePoints(text).size());
}

}  // namespace marlet::bench
