#include "worker/picture/ChromaReduction.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <tuple>

namespace Morvane::Worker {
namespace {

class ChromaReductions : public testing::TestWithParam<std::tuple<int, double>> {
protected:
    const double offset = std::get<1>(GetParam());
    const ChromaReduction sut = ChromaReduction::of(std::get<0>(GetParam()), offset);

    /// The sum over the values of a function of the place.
    template <class Function>
    double sumOf(const Function& valueAt) const {
        double sum = 0;
        for (int tap = 0; tap < sut.taps; ++tap)
            sum += static_cast<double>(sut.weights[static_cast<std::size_t>(tap)]) * valueAt(sut.first + tap);
        return sum;
    }
};

TEST_P(ChromaReductions, KeepAnEvenColour) {
    EXPECT_NEAR(sumOf([](int) { return 1.0; }), 1, 1e-6);
}

/// A filter that shifts the picture shows here.
TEST_P(ChromaReductions, TakeFromARampWhatItIsAtTheSamplesPlace) {
    EXPECT_NEAR(sumOf([](int place) { return static_cast<double>(place); }), offset, 1e-5);
}

TEST_P(ChromaReductions, LeaveOutWhatTheNewSamplesCannotShow) {
    if (sut.shift > 0) {
        EXPECT_NEAR(sumOf([](int place) { return place % 2 == 0 ? 1.0 : -1.0; }), 0, 1e-6);
    }
}

INSTANTIATE_TEST_SUITE_P(EveryPlace, ChromaReductions,
                         testing::Values(std::tuple(0, 0.0), std::tuple(1, 0.0), std::tuple(1, 0.5),
                                         std::tuple(1, 1.0), std::tuple(2, 0.0), std::tuple(2, 1.5)));

}  // namespace
}  // namespace Morvane::Worker
