#pragma once

#include <cstddef>
#include <random>
#include <vector>

/// `count` frame numbers of a movie of `frames`, the same in every program.
inline std::vector<int> randomFrames(int count, int frames) {
    std::mt19937 random(7);
    std::vector<int> numbers;
    for (int drawn = 0; drawn < count; ++drawn) {
        numbers.push_back(static_cast<int>(random() % static_cast<unsigned>(frames)));
    }
    return numbers;
}
