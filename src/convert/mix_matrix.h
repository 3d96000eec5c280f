#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace marlet::AudioConvert {

/// One row for each output channel, one weight in it for each input channel, in WAV order.
using MixMatrix = std::vector<std::vector<float>>;

/// From so many channels to stereo; mono stays mono. The low-frequency channel is left out. No
/// channels give no rows.
MixMatrix mixMatrix(int channels);

/// Mixes whole pieces of sound by such a matrix.
class Mix {
public:
    /// Of at least one channel.
    explicit Mix(int channels);

    std::size_t inputs() const { return inputs_; }
    std::size_t outputs() const { return rows_.size(); }
    /// `in` holds frames of interleaved samples; `out` gets output channel `row` of each. Both are
    /// of so many whole frames as fit in the shorter one.
    void run(std::span<const float> in, std::size_t row, std::span<float> out) const;

private:
    struct Term {
        std::size_t channel = 0;
        float weight = 0;
    };
    using Row = std::vector<Term>;

    std::size_t inputs_;
    std::vector<Row> rows_;  ///< only the weights that aren't 0
};

/// The highest absolute sample; 0 for none. What is no number doesn't count.
float peak(std::span<const float> samples);

}  // namespace marlet::AudioConvert
