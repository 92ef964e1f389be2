#include "host/render/ProgressText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace Corvel {
namespace {

std::string bar(double fraction, int width) {
    const int filled = static_cast<int>(std::clamp(fraction, 0.0, 1.0) * width);
    std::string text(static_cast<std::size_t>(filled), '=');
    if (filled < width) {
        text += '>';
    }
    text.resize(static_cast<std::size_t>(width), ' ');
    return '[' + text + ']';
}

std::vector<std::string> figures(const FrameProgress& progress) {
    std::vector<std::string> texts{fmt::format("{}/{}", progress.done, progress.total)};
    if (progress.fps) {
        texts.push_back(fmt::format("{:.1f} fps", *progress.fps));
    }
    if (progress.secondsLeft) {
        texts.push_back(durationText(*progress.secondsLeft) + " left");
    }
    texts.push_back(sizeText(progress.bytes));
    return texts;
}

}  // namespace

std::string barText(const FrameProgress& progress, int columns) {
    constexpr int leastBar = 10;
    constexpr int widestBar = 50;
    const std::string front = fmt::format("frame {}", progress.frame);
    std::string back;
    for (const std::string& figure : figures(progress)) {
        if (static_cast<int>(front.size() + back.size() + 2 + figure.size()) > columns) {
            break;
        }
        back += "  " + figure;
    }
    const int room = columns - static_cast<int>(front.size() + back.size()) - 3;
    if (room < leastBar) {
        return (front + back).substr(0, static_cast<std::size_t>(std::max(columns, 0)));
    }
    const double fraction = progress.total > 0 ? (progress.done + progress.fraction) / progress.total : 0;
    return front + ' ' + bar(fraction, std::min(room, widestBar)) + back;
}

std::string plainText(const FrameProgress& progress) {
    std::string text = fmt::format("frame {} ({} of {})", progress.frame, progress.done, progress.total);
    if (progress.fps) {
        text += fmt::format(", {:.1f} frames/s", *progress.fps);
    }
    if (progress.secondsLeft) {
        text += fmt::format(", {} left", durationText(*progress.secondsLeft));
    }
    return text + ", " + sizeText(progress.bytes);
}

std::string durationText(double seconds) {
    const auto whole = static_cast<std::int64_t>(std::ceil(std::clamp(seconds, 0.0, 1e9)));
    if (whole >= 3600) {
        return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
    }
    return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

std::string sizeText(std::uint64_t bytes) {
    if (bytes < 1000) {
        return fmt::format("{} bytes", bytes);
    }
    double size = static_cast<double>(bytes);
    const char* const units[] = {"kB", "MB", "GB", "TB"};
    std::size_t unit = 0;
    for (size /= 1000; size >= 999.95 && unit + 1 < std::size(units); ++unit) {
        size /= 1000;
    }
    return fmt::format("{:.1f} {}", size, units[unit]);
}

}  // namespace Corvel
