#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "Kex/Image/Application.h"
#include "Kex/Image/Iop.h"
#include "Kex/Image/Write.h"

namespace Kex::Image::Testing {

/// An application that remembers what its nodes said.
class TestApplication : public Application {
public:
    void error(const Op&, const std::string& text) override { errors.push_back(text); }
    void warning(const Op&, const std::string& text) override { warnings.push_back(text); }
    void progress(const Op&, double fraction) override { fractions.push_back(fraction); }
    bool aborted(const Op&) override { return questions++ >= questionsBeforeAbort; }

    std::vector<std::string> errors;
    std::vector<std::string> warnings;
    std::vector<double> fractions;
    std::size_t questions = 0;
    std::size_t questionsBeforeAbort = std::numeric_limits<std::size_t>::max();
};

/// A picture whose sample at (x, y) in channel z is what a function says. It remembers what it was asked for.
class TestPicture : public Iop {
public:
    using Sample = std::function<float(int x, int y, Channel z)>;

    TestPicture(Application& owner, Sample function) : Iop(owner), sample(std::move(function)) {}

    void request(int x, int y, int r, int t, ChannelSet channels, int count) override {
        requests.push_back({x, y, r, t, static_cast<int>(channels.mask()), count});
    }

    void get(int y, int x, int r, ChannelSet channels, Row& row) override {
        rows.push_back(y);
        for (const Channel z : {Chan_Red, Chan_Green, Chan_Blue, Chan_Alpha}) {
            if (!channels.contains(z)) {
                continue;
            }
            float* const to = row.writable(z);
            for (int column = x; column < r; ++column) {
                to[column - x] = sample(column, y, z);
            }
        }
    }

    MetaData::Bundle fetchMetaData(const char*) const override { return metadata; }

    MetaData::Bundle metadata;
    std::vector<std::vector<int>> requests;
    std::vector<int> rows;

private:
    Sample sample;
};

}  // namespace Kex::Image::Testing
