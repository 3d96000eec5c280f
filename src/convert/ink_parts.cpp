#include "convert/ink_parts.h"

#include <algorithm>
#include <numeric>

namespace marlet {

namespace {

constexpr std::uint8_t isInk = 128;
constexpr int speck = 8;

/// The parts of a picture, found row by row. Only those that reach the row above are open, so that
/// a screen full of noise takes no more memory than its rows are wide.
class PartFinder {
public:
    explicit PartFinder(const GrayPicture& ink) : ink_(ink) {}

    std::vector<InkPart> all() {
        for (int y = 0; y < ink_.height; y++) row(y);
        // A row of nothing closes the last ones.
        above_.clear();
        closeOthers();
        return std::move(closed_);
    }

private:
    /// Ink side by side in one row, the right edge exclusive.
    struct Run {
        int left = 0;
        int right = 0;
        std::size_t part = 0;  // of open_
    };

    void row(int y) {
        std::vector<Run> runs;
        std::size_t reached = 0;
        for (int x = 0; x < ink_.width; x++) {
            if (ink_.at(x, y) < isInk) continue;
            const int left = x;
            while (x < ink_.width && ink_.at(x, y) >= isInk) x++;
            runs.push_back({left, x, open_.size()});
            own_.push_back(own_.size());
            open_.push_back(
                {.left = left, .top = y, .right = x, .bottom = y + 1, .pixels = x - left});
            // Corners touch, too. The last run above may reach the next one here as well.
            while (reached < above_.size() && above_[reached].right < left) reached++;
            for (std::size_t i = reached; i < above_.size() && above_[i].left <= x; i++)
                join(above_[i].part, runs.back().part);
        }
        above_ = std::move(runs);
        closeOthers();
    }

    std::size_t rootOf(std::size_t part) {
        while (own_[part] != part) part = own_[part] = own_[own_[part]];
        return part;
    }

    void join(std::size_t a, std::size_t b) {
        a = rootOf(a);
        b = rootOf(b);
        if (a == b) return;
        own_[b] = a;
        InkPart& part = open_[a];
        const InkPart& other = open_[b];
        part.left = std::min(part.left, other.left);
        part.top = std::min(part.top, other.top);
        part.right = std::max(part.right, other.right);
        part.bottom = std::max(part.bottom, other.bottom);
        part.pixels += other.pixels;
    }

    /// Keeps what the last row reaches, under new numbers.
    void closeOthers() {
        constexpr auto none = static_cast<std::size_t>(-1);
        std::vector<InkPart> kept;
        std::vector<std::size_t> number(open_.size(), none);
        for (Run& run : above_) {
            const std::size_t root = rootOf(run.part);
            if (number[root] == none) {
                number[root] = kept.size();
                kept.push_back(open_[root]);
            }
            run.part = number[root];
        }
        for (std::size_t part = 0; part < open_.size(); part++)
            if (own_[part] == part && number[part] == none && open_[part].pixels > speck)
                closed_.push_back(open_[part]);
        open_ = std::move(kept);
        own_.resize(open_.size());
        std::iota(own_.begin(), own_.end(), std::size_t{0});
    }

    const GrayPicture& ink_;
    std::vector<Run> above_;        // the last row's
    std::vector<InkPart> open_;     // what may go on
    std::vector<std::size_t> own_;  // the part that each of these was joined to, or itself
    std::vector<InkPart> closed_;
};

}  // namespace

std::vector<InkPart> partsOf(const GrayPicture& ink) {
    return PartFinder(ink).all();
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
