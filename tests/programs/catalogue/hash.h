#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace marlet::catalogue {

/// FNV-1a, 64 bits: the same on every machine, unlike std::hash.
constexpr std::uint64_t hashOf(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
    return hash;
}

/// 24 hexadecimal digits, the look of the service's own identifiers.
inline std::string hexOf(std::uint64_t hash) {
    constexpr std::array digits = {'0', '1', '2', '3', '4', '5', '6', '7',
                                   '8', '9', 'a', 'b', 'c', 'd', 'e', 'f'};
    std::string out;
    for (int i = 0; i < 24; i++) {
        out += digits[hash & 15];
        hash = hash * 0x100000001b3 + 0x9e37;
        hash ^= hash >> 29;
    }
    return out;
}

/// A small sequence of numbers that follows from its seed alone (SplitMix64).
class Dice {
public:
    explicit Dice(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        std::uint64_t z = state_ += 0x9e3779b97f4a7c15;
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
        z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
        return z ^ (z >> 31);
    }
    /// From 0 up to, not including, 1.
    double unit() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
    double between(double low, double high) { return low + unit() * (high - low); }
    int below(int count) { return static_cast<int>(next() % static_cast<std::uint64_t>(count)); }

private:
    std::uint64_t state_;
};

}  // namespace marlet::catalogue
