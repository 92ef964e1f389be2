#pragma once

#include <algorithm>
#include <ctime>
#include <vector>

/// Seconds of processor time that `work` takes, so that other programs on the machine count less.
template <typename Work>
double processorSeconds(Work work) {
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

/// REQUIRES: not empty.
inline double medianOf(std::vector<double> times) {
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}
