#include "host/images/NameMatch.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>

namespace Corvel {
namespace {

constexpr std::size_t longestShown = 80;  // characters
constexpr std::size_t mostShown = 40;     // names

// Bytes of the UTF-8 character that begins there, 0 for what is none.
std::size_t bytesOfCharacter(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = byte(at);
    const std::size_t bytes = first < 0x80                    ? 1
                              : first >= 0xc2 && first < 0xe0 ? 2
                              : first >= 0xe0 && first < 0xf0 ? 3
                              : first >= 0xf0 && first < 0xf5 ? 4
                                                              : 0;
    for (std::size_t i = 1; i < bytes; ++i) {
        if (byte(at + i) >> 6 != 2) {
            return 0;
        }
    }
    return bytes;
}

}  // namespace

int editDistance(const std::string& one, const std::string& other) {
    std::vector<int> row(other.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (std::size_t i = 1; i <= one.size(); ++i) {
        int diagonal = std::exchange(row[0], static_cast<int>(i));
        for (std::size_t j = 1; j <= other.size(); ++j) {
            const int changed = diagonal + (one[i - 1] == other[j - 1] ? 0 : 1);
            diagonal = std::exchange(row[j], std::min({row[j] + 1, row[j - 1] + 1, changed}));
        }
    }
    return row.back();
}

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

int findName(const std::vector<std::string>& names, const std::string& wanted) {
    const auto exact = std::find(names.begin(), names.end(), wanted);
    if (exact != names.end()) {
        return static_cast<int>(exact - names.begin());
    }
    const auto same = [low = lowered(wanted)](const std::string& name) { return lowered(name) == low; };
    const auto first = std::find_if(names.begin(), names.end(), same);
    const bool only = first != names.end() && std::none_of(first + 1, names.end(), [&](const auto& name) {
                          return same(name) && name != *first;
                      });
    return only ? static_cast<int>(first - names.begin()) : -1;
}

std::string printable(const std::string& text, std::size_t longest) {
    std::string shown;
    for (std::size_t i = 0; i < text.size();) {
        if (shown.size() >= longest) {
            return shown + "…";
        }
        const std::size_t bytes = bytesOfCharacter(text, i);
        const bool control = bytes == 1 && std::iscntrl(static_cast<unsigned char>(text[i])) != 0;
        shown += bytes == 0 || control ? "?" : text.substr(i, bytes);
        i += std::max<std::size_t>(bytes, 1);
    }
    return shown;
}

std::string inQuotes(const std::string& name) {
    return fmt::format("\"{}\"", printable(name, longestShown));
}

std::string listed(const std::vector<std::string>& names) {
    std::vector<std::string> shown;
    std::size_t more = 0;
    for (const std::string& name : names) {
        const std::string text = name.empty() ? "\"\"" : printable(name, longestShown);
        if (std::find(shown.begin(), shown.end(), text) != shown.end()) {
            continue;
        }
        if (shown.size() < mostShown) {
            shown.push_back(text);
        } else {
            ++more;
        }
    }
    const std::string text = fmt::format("{}", fmt::join(shown, ", "));
    return shown.empty() ? "none" : more == 0 ? text : fmt::format("{} and {} more", text, more);
}

std::string guessFor(const std::vector<std::string>& names, const std::string& wanted) {
    const std::string low = lowered(wanted.substr(0, longestShown));
    int least = static_cast<int>((low.size() + 2) / 3) + 1;
    const std::string* guess = nullptr;
    for (const std::string& name : names) {
        const std::string other = lowered(name.substr(0, longestShown));
        // A person who writes less than the whole name still means it.
        const bool part = low.size() > 2 && other.find(low) != std::string::npos;
        if (const int far = part ? 1 : editDistance(low, other); far < least && !name.empty()) {
            least = far;
            guess = &name;
        }
    }
    return guess ? fmt::format("; did you mean {}?", inQuotes(*guess)) : "";
}

}  // namespace Corvel
