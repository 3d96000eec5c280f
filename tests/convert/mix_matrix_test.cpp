#include "convert/mix_matrix.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace marlet::test {
namespace {

using AudioConvert::Mix;
using AudioConvert::MixMatrix;
using testing::ElementsAre;
using testing::FloatEq;
using testing::IsEmpty;

constexpr float r = 0.7071F;

std::vector<float> mixed(int channels, const std::vector<float>& in, std::size_t row) {
    const Mix mix(channels);
    std::vector<float> out(in.size() / mix.inputs());
    mix.run(in, row, out);
    return out;
}

TEST(MixMatrix, HasTheWeightsOfEachLayout) {
    const auto matrix = AudioConvert::mixMatrix;
    EXPECT_EQ(matrix(1), (MixMatrix{{1}}));
    EXPECT_EQ(matrix(2), (MixMatrix{{1, 0}, {0, 1}}));
    EXPECT_EQ(matrix(3), (MixMatrix{{1, 0, r}, {0, 1, r}}));
    EXPECT_EQ(matrix(4), (MixMatrix{{1, 0, r, 0}, {0, 1, 0, r}}));
    EXPECT_EQ(matrix(5), (MixMatrix{{1, 0, r, r, 0}, {0, 1, r, 0, r}}));
    EXPECT_EQ(matrix(6), (MixMatrix{{1, 0, r, 0, r, 0}, {0, 1, r, 0, 0, r}}));
    EXPECT_EQ(matrix(7), (MixMatrix{{1, 0, r, 0, 0.5, r, 0}, {0, 1, r, 0, 0.5, 0, r}}));
    EXPECT_EQ(matrix(8), (MixMatrix{{1, 0, r, 0, 0.5, 0, 0.5, 0}, {0, 1, r, 0, 0, 0.5, 0, 0.5}}));
}

TEST(MixMatrix, OfMoreThanEightChannelsTakesTheFirstEight) {
    const MixMatrix matrix = AudioConvert::mixMatrix(12);
    ASSERT_EQ(matrix.size(), 2U);
    for (const auto& row : matrix) EXPECT_EQ(row.size(), 12U);
    EXPECT_EQ(matrix[1], (std::vector<float>{0, 1, r, 0, 0, 0.5, 0, 0.5, 0, 0, 0, 0}));
}

TEST(MixMatrix, OfNoChannelsHasNoRows) {
    EXPECT_THAT(AudioConvert::mixMatrix(0), IsEmpty());
    EXPECT_THAT(AudioConvert::mixMatrix(-3), IsEmpty());
}

TEST(Mix, LeavesMonoAndStereoAsTheyAre) {
    EXPECT_THAT(mixed(1, {0.1F, 0.2F}, 0), ElementsAre(0.1F, 0.2F));
    EXPECT_THAT(mixed(2, {0.1F, 0.2F, 0.3F, 0.4F}, 0), ElementsAre(0.1F, 0.3F));
    EXPECT_THAT(mixed(2, {0.1F, 0.2F, 0.3F, 0.4F}, 1), ElementsAre(0.2F, 0.4F));
    EXPECT_EQ(Mix(1).outputs(), 1U);
    EXPECT_EQ(Mix(8).outputs(), 2U);
}

/// The loop that skips zeros must do what the matrix says, for every count.
TEST(Mix, DoesWhatTheMatrixSays) {
    for (int channels = 1; channels <= 12; channels++) {
        const auto width = static_cast<std::size_t>(channels);
        std::vector<float> in(width * 5);
        for (std::size_t i = 0; i < in.size(); i++) in[i] = static_cast<float>(i % 11) / 11 - 0.4F;
        const MixMatrix matrix = AudioConvert::mixMatrix(channels);
        for (std::size_t row = 0; row < matrix.size(); row++) {
            const std::vector<float> out = mixed(channels, in, row);
            for (std::size_t frame = 0; frame < out.size(); frame++) {
                float sum = 0;
                for (std::size_t c = 0; c < width; c++)
                    sum += matrix[row][c] * in[frame * width + c];
                EXPECT_NEAR(out[frame], sum, 1e-6) << channels << " channels, row " << row;
            }
        }
    }
}

TEST(Mix, LeavesTheLowFrequencyChannelOut) {
    for (const int channels : {6, 7, 8}) {
        std::vector<float> in(static_cast<std::size_t>(channels));
        in[3] = 1;
        EXPECT_THAT(mixed(channels, in, 0), ElementsAre(0)) << channels;
        EXPECT_THAT(mixed(channels, in, 1), ElementsAre(0)) << channels;
    }
}

TEST(Mix, DoesAsManyWholeFramesAsFit) {
    const Mix mix(6);
    const std::vector<float> in(6 * 3 + 5, 1.0F);
    std::vector<float> out(5, 9.0F);
    mix.run(in, 0, out);
    EXPECT_THAT(out, ElementsAre(FloatEq(1 + 2 * r), FloatEq(1 + 2 * r), FloatEq(1 + 2 * r), 9, 9));
    mix.run({}, 0, out);
    EXPECT_EQ(out[4], 9);
}

TEST(Peak, IsTheHighestAbsoluteSample) {
    EXPECT_EQ(AudioConvert::peak(std::vector<float>{0.5F, -1.96F, 1.0F}), 1.96F);
    EXPECT_EQ(AudioConvert::peak({}), 0);
    EXPECT_EQ(
        AudioConvert::peak(std::vector<float>{std::numeric_limits<float>::quiet_NaN(), 0.25F}),
        0.25F);
}

TEST(Peak, IsFoundWhereverItStands) {
    for (std::size_t size = 1; size < 70; size++) {
        for (std::size_t at = 0; at < size; at++) {
            std::vector<float> samples(size, 0.125F);
            samples[at] = -0.75F;
            ASSERT_EQ(AudioConvert::peak(samples), 0.75F) << at << " of " << size;
        }
    }
}

}  // namespace
}  // namespace marlet::test
