#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "foundation/bytes.h"

namespace marlet {

/// What a screen or a camera can show, as the Colour element tells it (RFC 9559, 5.1.4.1.28.40).
/// Chromaticities are those of CIE 1931, luminances are in cd/m².
struct MasteringDisplay {
    struct Point {
        double x = 0;
        double y = 0;
        bool operator==(const Point&) const = default;
    };
    std::array<std::optional<double>, 8> chromaticities;  ///< x and y of red, green, blue, white
    std::optional<double> highest;
    std::optional<double> lowest;

    /// Whether nothing is left to be guessed.
    bool isComplete() const;
    Point red() const { return point(0); }
    Point green() const { return point(1); }
    Point blue() const { return point(2); }
    Point white() const { return point(3); }
    bool operator==(const MasteringDisplay&) const = default;

private:
    Point point(std::size_t number) const {
        return {chromaticities[2 * number].value_or(0), chromaticities[2 * number + 1].value_or(0)};
    }
};

/// Numbers of ITU-T H.273, where 2 is "not told".
struct PictureColour {
    static constexpr int notTold = 2;
    int primaries = notTold;
    int transfer = notTold;
    int matrix = notTold;
    enum class Range { NotTold, Limited, Full, ByMatrix };
    Range range = Range::NotTold;
    std::optional<int> highestLight;      ///< of any pixel (MaxCLL), cd/m²
    std::optional<int> highestFrameMean;  ///< of any frame's mean (MaxFALL), cd/m²
    MasteringDisplay mastering;
    bool operator==(const PictureColour&) const = default;
};

/// How pictures are to be shown: what a track's Video element tells beyond their size in pixels
/// (RFC 9559, 5.1.4.1.28), and its Dolby Vision configuration.
struct MKVPicture {
    enum class Unit { Pixels, Centimetres, Inches, Ratio, Unknown };
    std::optional<int> displayWidth;
    std::optional<int> displayHeight;
    Unit displayUnit = Unit::Pixels;
    struct Crop {
        int left = 0, top = 0, right = 0, bottom = 0;
        bool operator==(const Crop&) const = default;
    };
    Crop crop;        ///< pixels that aren't shown, of each edge
    double roll = 0;  ///< degrees by which a flat picture is turned, against the clock
    PictureColour colour;
    struct DolbyVision {
        std::uint32_t type = 0;  ///< "dvcC" or "dvvC" as a big-endian number
        Bytes record;            ///< DOVIDecoderConfigurationRecord
        bool operator==(const DolbyVision&) const = default;
    };
    std::optional<DolbyVision> dolbyVision;
    bool operator==(const MKVPicture&) const = default;
};

}  // namespace marlet
