#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "host/images/FrameSource.h"

namespace Corvel {

/// Frames made up on the spot: one sample a channel, its value the frame's number.
class FakeSource : public FrameSource {
public:
    explicit FakeSource(std::vector<int> frames) : numbers(std::move(frames)) {}

    const std::vector<int>& frames() const override { return numbers; }
    bool has(int number) const override {
        return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
    }
    std::string nameOf(int number) const override { return "frame" + std::to_string(number); }
    PictureHeader header(int) const override { return {}; }
    std::unique_ptr<FrameReader> createReader() const override { return std::make_unique<Reader>(*this); }

    /// Called on the reading thread before a frame is made; may throw or wait.
    std::function<void(int)> onRead = [](int) {};

private:
    class Reader : public FrameReader {
    public:
        explicit Reader(const FakeSource& source) : source(source) {}

        PictureHeader read(int number, Picture& picture) override {
            source.onRead(number);
            picture.reset(1, 1, 3);
            std::fill_n(picture.row(0, 0), 3, static_cast<float>(number));
            return {};
        }

    private:
        const FakeSource& source;
    };

    std::vector<int> numbers;
};

}  // namespace Corvel
