#include "host/images/FrameRange.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace Corvel {
namespace {

constexpr std::int64_t mostFrames = 10'000'000;

// Takes numbers and marks off the front of one part of a range.
class Scanner {
public:
    explicit Scanner(std::string_view text) : rest(text) {}

    bool number(int& value) {
        const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
        if (error != std::errc()) {
            return false;
        }
        rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
        return true;
    }

    bool mark(char wanted) {
        if (rest.empty() || rest.front() != wanted) {
            return false;
        }
        rest.remove_prefix(1);
        return true;
    }

    bool atEnd() const { return rest.empty(); }

private:
    std::string_view rest;
};

struct Part {
    int first = 0;
    int last = 0;
    int step = 1;
};

bool readPart(std::string_view text, Part& part) {
    Scanner scanner(text);
    if (!scanner.number(part.first)) {
        return false;
    }
    part.last = part.first;
    if (scanner.mark('-')) {
        if (!scanner.number(part.last)) {
            return false;
        }
        if (scanner.mark('x') && (!scanner.number(part.step) || part.step < 1)) {
            return false;
        }
    }
    return scanner.atEnd();
}

void append(std::vector<int>& frames, const Part& part, const std::string& text) {
    const std::int64_t distance = std::int64_t{part.last} - part.first;
    const std::int64_t count = std::abs(distance) / part.step + 1;
    if (static_cast<std::int64_t>(frames.size()) + count > mostFrames) {
        throw BadFrameRange(fmt::format("the frame range \"{}\" has more than {} frames", text, mostFrames));
    }
    const std::int64_t step = distance < 0 ? -part.step : part.step;
    for (std::int64_t i = 0; i < count; ++i) {
        frames.push_back(static_cast<int>(part.first + i * step));
    }
}

std::string withoutBlanks(const std::string& text) {
    std::string kept;
    std::copy_if(text.begin(), text.end(), std::back_inserter(kept),
                 [](char c) { return c != ' ' && c != '\t'; });
    return kept;
}

}  // namespace

std::vector<int> parseFrameRange(const std::string& text) {
    const std::string compact = withoutBlanks(text);
    std::vector<int> frames;
    std::string_view rest = compact;
    for (bool more = true; more;) {
        const std::size_t comma = rest.find(',');
        more = comma != std::string_view::npos;
        Part part;
        if (!readPart(rest.substr(0, comma), part)) {
            throw BadFrameRange(fmt::format(
                "\"{}\" is not a frame range; examples: 1001-1100, 1-99x2, 1,5,10-20, -10--5", text));
        }
        append(frames, part, text);
        if (more) {
            rest.remove_prefix(comma + 1);
        }
    }
    std::sort(frames.begin(), frames.end());
    frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
    return frames;
}

std::string frameRangeText(const std::vector<int>& frames) {
    std::string text;
    for (std::size_t begin = 0, end; begin < frames.size(); begin = end) {
        end = begin + 1;
        while (end < frames.size() && std::int64_t{frames[end]} == std::int64_t{frames[end - 1]} + 1) {
            ++end;
        }
        text += fmt::format("{}{}", text.empty() ? "" : ",", frames[begin]);
        if (end - begin > 1) {
            text += fmt::format("-{}", frames[end - 1]);
        }
    }
    return text;
}

}  // namespace Corvel
