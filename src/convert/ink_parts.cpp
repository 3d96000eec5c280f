#include "convert/ink_parts.h"

#include <algorithm>

namespace marlet {

namespace {

constexpr std::uint8_t isInk = 128;
constexpr int speck = 8;

}  // namespace

std::vector<InkPart> partsOf(const GrayPicture& ink) {
    std::vector<InkPart> parts;
    Bytes seen(ink.pixels.size());
    std::vector<std::pair<int, int>> open;
    const auto visit = [&](int x, int y) {
        if (x < 0 || y < 0 || x >= ink.width || y >= ink.height || ink.at(x, y) < isInk) return;
        std::uint8_t& mark =
            seen[static_cast<std::size_t>(y) * static_cast<std::size_t>(ink.width) +
                 static_cast<std::size_t>(x)];
        if (mark != 0) return;
        mark = 1;
        open.emplace_back(x, y);
    };
    for (int y = 0; y < ink.height; y++) {
        for (int x = 0; x < ink.width; x++) {
            visit(x, y);
            if (open.empty()) continue;
            InkPart part{.left = x, .top = y, .right = x, .bottom = y};
            while (!open.empty()) {
                const auto [atX, atY] = open.back();
                open.pop_back();
                part.left = std::min(part.left, atX);
                part.right = std::max(part.right, atX + 1);
                part.bottom = std::max(part.bottom, atY + 1);
                part.top = std::min(part.top, atY);
                part.pixels++;
                for (int dy = -1; dy <= 1; dy++)
                    for (int dx = -1; dx <= 1; dx++) visit(atX + dx, atY + dy);
            }
            if (part.pixels > speck) parts.push_back(part);
        }
    }
    return parts;
}

bool isNote(const GrayPicture& ink, const InkPart& part) {
    const int height = part.height();
    const int width = part.width();
    if (height < 12 || width * 10 < height * 3 || width * 10 > height * 9) return false;
    // The ink of a stretch of rows: how much, and its leftmost and rightmost column.
    struct Stretch {
        int pixels = 0;
        int left = 0;
        int right = 0;
    };
    const auto stretch = [&](int fromTenth, int toTenth) {
        Stretch all{.left = width, .right = 0};
        for (int y = part.top + height * fromTenth / 10; y < part.top + height * toTenth / 10;
             y++) {
            for (int x = part.left; x < part.right; x++) {
                if (ink.at(x, y) < isInk) continue;
                all.pixels++;
                all.left = std::min(all.left, x - part.left);
                all.right = std::max(all.right, x - part.left + 1);
            }
        }
        return all;
    };
    const Stretch top = stretch(0, 1);     // the stem alone, or with a flag
    const Stretch middle = stretch(3, 6);  // the stem and the end of the flag
    const Stretch head = stretch(8, 10);
    if (top.pixels == 0 || middle.pixels == 0 || head.pixels == 0) return false;
    // The head stands left of all else and ends near the stem; the stem's top is right of the
    // head's middle; the flag reaches beyond both.
    return head.left * 10 <= width && head.right * 10 <= width * 8 && top.left * 10 >= width * 3 &&
           middle.left * 10 >= width * 3 && middle.right * 10 >= width * 8;
}

}  // namespace marlet
