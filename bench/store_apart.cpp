// Lays a film out as badly as can be, one track behind the other, for timings of its cure.
//
//   store_apart FILE OUTPUT
#include <exception>
#include <iostream>

#include "helpers/relayout.h"

int main(int count, char** arguments) {
    if (count != 3) {
        std::cerr << "usage: store_apart FILE OUTPUT\n";
        return 2;
    }
    constexpr std::uint32_t aDay = 24 * 60 * 60 * 1000;
    try {
        marlet::Relayout::run(
            {.input = arguments[1], .output = arguments[2], .sliceMilliseconds = aDay});
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "store_apart: " << failure.what() << '\n';
        return 1;
    }
}
