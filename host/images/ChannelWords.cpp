#include "host/images/ChannelWords.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "host/images/NameMatch.h"
#include "host/images/PictureChoice.h"

namespace Corvel {
namespace {

using Channels = std::array<std::string, 4>;

constexpr const char* planes = "rgba";
constexpr std::size_t colours = 3;

[[noreturn]] void refuse(const std::string& text, const std::string& reason) {
    throw BadPictureChoice(
        fmt::format("{}: {}; examples: rgba, R=beauty.red,A=matte.a, or Z for one channel as grey",
                    inQuotes(text), reason));
}

std::vector<std::string> wordsOf(const std::string& text) {
    std::vector<std::string> words;
    for (std::size_t begin = 0, end = 0; begin <= text.size(); begin = end + 1) {
        end = std::min(text.find(',', begin), text.size());
        words.push_back(text.substr(begin, end - begin));
    }
    return words;
}

Channels parseMap(const std::string& text, const std::vector<std::string>& words) {
    Channels channels;
    for (const std::string& word : words) {
        const std::size_t equals = word.find('=');
        const std::size_t plane = std::string(planes).find(lowered(word.substr(0, equals)));
        if (equals != 1 || plane == std::string::npos) {
            refuse(text, "each channel is R, G, B or A, an equals sign and a channel's name");
        }
        if (word.size() == 2) {
            refuse(text, fmt::format("{} names no channel", word));
        }
        if (!std::exchange(channels[plane], word.substr(2)).empty()) {
            refuse(text, fmt::format("{} stands twice", word.substr(0, 1)));
        }
    }
    return channels;
}

Channels parseList(const std::string& text, const std::vector<std::string>& words) {
    for (const std::string& word : words) {
        if (word.empty()) {
            refuse(text, "a channel's name is empty");
        }
        if (std::count(words.begin(), words.end(), word) > 1) {
            refuse(text, fmt::format("{0} stands twice; R={0},G={0},B={0} says so on purpose", word));
        }
    }
    if (words.size() == 1) {
        return {words[0], words[0], words[0], ""};
    }
    if (words.size() != colours && words.size() != colours + 1) {
        refuse(text, "a picture has one channel, three or four");
    }
    Channels channels;
    std::copy(words.begin(), words.end(), channels.begin());
    return channels;
}

}  // namespace

Channels parseChannels(const std::string& text) {
    const std::vector<std::string> words = wordsOf(text);
    return text.find('=') == std::string::npos ? parseList(text, words) : parseMap(text, words);
}

}  // namespace Corvel
