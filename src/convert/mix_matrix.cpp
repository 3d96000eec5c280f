#include "convert/mix_matrix.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace marlet::AudioConvert {

namespace {

constexpr float half = 0.5F;
constexpr float root = 0.7071F;  // 3 dB down

struct Weight {
    std::size_t channel;
    float weight;
};
using Weights = std::vector<Weight>;

struct Stereo {
    Weights left;
    Weights right;
};

constexpr int mostLaidOut = 8;

/// By channel count less one. Channel 2 is the centre from 3 to 8, but for 4 (quadraphonic).
const std::array<Stereo, mostLaidOut>& layouts() {
    static const std::array<Stereo, mostLaidOut> table{{
        {{{0, 1}}, {}},
        {{{0, 1}}, {{1, 1}}},
        {{{0, 1}, {2, root}}, {{1, 1}, {2, root}}},
        {{{0, 1}, {2, root}}, {{1, 1}, {3, root}}},
        {{{0, 1}, {2, root}, {3, root}}, {{1, 1}, {2, root}, {4, root}}},
        {{{0, 1}, {2, root}, {4, root}}, {{1, 1}, {2, root}, {5, root}}},
        {{{0, 1}, {2, root}, {5, root}, {4, half}}, {{1, 1}, {2, root}, {6, root}, {4, half}}},
        {{{0, 1}, {2, root}, {4, half}, {6, half}}, {{1, 1}, {2, root}, {5, half}, {7, half}}},
    }};
    return table;
}

/// With the number of terms known, the compiler keeps them all in registers.
template <std::size_t Terms, class Term>
void mixRow(const float* in, std::size_t stride, const Term* terms, std::span<float> out) {
    std::array<Term, Terms> row;
    std::copy_n(terms, Terms, row.begin());
    for (float& sample : out) {
        float sum = 0;
        for (const Term& term : row) sum += term.weight * in[term.channel];
        sample = sum;
        in += stride;
    }
}

}  // namespace

MixMatrix mixMatrix(int channels) {
    if (channels < 1) return {};
    const auto& [left, right] =
        layouts()[static_cast<std::size_t>(std::min(channels, mostLaidOut) - 1)];
    MixMatrix matrix;
    for (const Weights& weights : {left, right}) {
        if (weights.empty()) continue;
        matrix.emplace_back(static_cast<std::size_t>(channels), 0.0F);
        for (const auto& [channel, weight] : weights) matrix.back()[channel] = weight;
    }
    return matrix;
}

Mix::Mix(int channels) : inputs_(static_cast<std::size_t>(channels)) {
    for (const std::vector<float>& weights : mixMatrix(channels)) {
        Row& row = rows_.emplace_back();
        for (std::size_t channel = 0; channel < weights.size(); channel++)
            if (weights[channel] != 0) row.push_back({channel, weights[channel]});
    }
}

void Mix::run(std::span<const float> in, std::size_t row, std::span<float> out) const {
    const std::vector<Term>& terms = rows_[row];
    const std::span<float> frames = out.first(std::min(out.size(), in.size() / inputs_));
    switch (terms.size()) {
        case 1:
            return mixRow<1>(in.data(), inputs_, terms.data(), frames);
        case 2:
            return mixRow<2>(in.data(), inputs_, terms.data(), frames);
        case 3:
            return mixRow<3>(in.data(), inputs_, terms.data(), frames);
        default:
            return mixRow<4>(in.data(), inputs_, terms.data(), frames);
    }
}

float peak(std::span<const float> samples) {
    // Side by side: one highest sample after the other would wait for each comparison's end.
    std::array<float, 16> highest{};
    const auto raise = [&](std::size_t lane, float sample) {
        const float height = std::fabs(sample);
        highest[lane] = height > highest[lane] ? height : highest[lane];
    };
    std::size_t i = 0;
    for (; i + highest.size() <= samples.size(); i += highest.size())
        for (std::size_t lane = 0; lane < highest.size(); lane++) raise(lane, samples[i + lane]);
    for (; i < samples.size(); i++) raise(0, samples[i]);
    return std::ranges::max(highest);
}

}  // namespace marlet::AudioConvert
