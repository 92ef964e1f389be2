#include "host/images/SequencePattern.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <filesystem>

namespace Corvel {
namespace {

struct Mark {
    std::size_t position = 0;
    std::size_t length = 0;
    int padding = 1;
    bool printf = false;
};

// "%d", "%4d" or "%04d" at the given place.
std::optional<Mark> printfMark(const std::string& name, std::size_t position) {
    std::size_t end = position + 1;
    while (end < name.size() && name[end] >= '0' && name[end] <= '9') {
        ++end;
    }
    if (end >= name.size() || name[end] != 'd' || end - position > 4) {
        return std::nullopt;
    }
    int padding = 1;
    std::from_chars(name.data() + position + 1, name.data() + end, padding);
    return Mark{position, end + 1 - position, std::max(padding, 1), true};
}

std::optional<Mark> lastMark(const std::string& name) {
    std::optional<Mark> found;
    for (std::size_t i = 0; i < name.size();) {
        std::size_t next = i + 1;
        if (name[i] == '%') {
            if (next < name.size() && name[next] == '%') {
                i += 2;
                continue;
            }
            if (const auto mark = printfMark(name, i)) {
                found = mark;
                next = i + mark->length;
            }
        } else if (name[i] == '#' || name[i] == '@') {
            next = std::min(name.find_first_not_of(name[i], i), name.size());
            found = Mark{i, next - i, static_cast<int>(next - i), false};
        }
        i = next;
    }
    return found;
}

std::string withSinglePercents(std::string text) {
    for (std::size_t i = text.find("%%"); i != std::string::npos; i = text.find("%%", i + 1)) {
        text.erase(i, 1);
    }
    return text;
}

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

std::optional<SequencePattern> SequencePattern::parse(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
    const std::string name = path.substr(start);
    const std::optional<Mark> mark = lastMark(name);
    if (!mark) {
        return std::nullopt;
    }

    SequencePattern pattern;
    pattern.leading = path.substr(0, start);
    pattern.folder_ = start == 0 ? "." : start == 1 ? "/" : path.substr(0, start - 1);
    pattern.prefix = name.substr(0, mark->position);
    pattern.suffix = name.substr(mark->position + mark->length);
    if (mark->printf) {
        pattern.prefix = withSinglePercents(pattern.prefix);
        pattern.suffix = withSinglePercents(pattern.suffix);
    }
    pattern.padding = mark->padding;
    return pattern;
}

std::string SequencePattern::pathOf(int frame) const {
    return fmt::format("{}{}{:0{}}{}", leading, prefix, frame, padding, suffix);
}

std::optional<int> SequencePattern::frameOf(const std::string& fileName) const {
    if (fileName.size() <= prefix.size() + suffix.size() || !startsWith(fileName, prefix) ||
        !endsWith(fileName, suffix)) {
        return std::nullopt;
    }
    const char* begin = fileName.data() + prefix.size();
    const char* end = fileName.data() + fileName.size() - suffix.size();
    int frame = 0;
    const auto [stop, error] = std::from_chars(begin, end, frame);
    if (error != std::errc() || stop != end) {
        return std::nullopt;
    }

    const bool negative = *begin == '-';
    const auto digits = static_cast<int>(end - begin) - (negative ? 1 : 0);
    const bool padded = digits > 1 && begin[negative ? 1 : 0] == '0';
    // Some programs count the sign of a negative number as a digit and some do not.
    const bool widthFits = digits == padding || (negative && digits + 1 == padding);
    if (!widthFits && (padded || digits < padding)) {
        return std::nullopt;
    }
    return frame;
}

std::map<int, std::string> SequencePattern::findFiles() const {
    std::map<int, std::string> files;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder_, error);
    for (const std::filesystem::directory_iterator end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        const std::optional<int> frame = frameOf(name);
        if (!frame) {
            continue;
        }
        const std::string path = leading + name;
        if (path == pathOf(*frame)) {
            files[*frame] = path;
        } else {
            files.emplace(*frame, path);
        }
    }
    return files;
}

}  // namespace Corvel
