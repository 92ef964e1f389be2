#include "host/colour/DisplayTags.h"

#include <cctype>
#include <span>

namespace Corvel {
namespace {

// A word of a name and what it means. Of several words in one name the first row here counts.
struct Word {
    const char* word;
    const char* meaning;
};

constexpr Word transfers[] = {
    {"linear", "linear"},     {"lin", "linear"},
    {"acescg", "linear"},     {"aces20651", "linear"},
    {"2084", "smpte2084"},    {"2100pq", "smpte2084"},
    {"pq", "smpte2084"},      {"hlg", "arib-std-b67"},
    {"srgb", "iec61966-2-1"}, {"displayp3", "iec61966-2-1"},
    {"1886", "bt709"},        {"gamma24", "bt709"},
    {"g24", "bt709"},         {"gamma22", "gamma22"},
    {"g22", "gamma22"},       {"gamma26", "smpte428"},
    {"g26", "smpte428"},      {"dcdm", "smpte428"},
    {"rec709", "bt709"},      {"bt709", "bt709"},
    {"rec2020", "bt2020-10"}, {"bt2020", "bt2020-10"},
    {"p3d65", "smpte428"},    {"p3dci", "smpte428"},
    {"p3", "smpte428"},
};

constexpr Word primaries[] = {
    {"p3dci", "smpte431"}, {"dcip3", "smpte431"}, {"p3", "smpte432"}, {"2020", "bt2020"},
    {"2100", "bt2020"},    {"2084", "bt2020"},    {"hlg", "bt2020"},  {"pq", "bt2020"},
    {"709", "bt709"},      {"srgb", "bt709"},     {"1886", "bt709"},
};

// Letters and digits alone, in lower case.
std::string plainText(const std::string& name) {
    std::string plain;
    for (const char c : name) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
            plain += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return plain;
}

std::string meaningOf(std::span<const Word> words, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        const std::string plain = plainText(name);
        // A logarithm has no number there, whatever else its name says.
        if (plain.find("log") != std::string::npos || plain.find("acescc") != std::string::npos) {
            return "";
        }
        for (const Word& word : words) {
            if (plain.find(word.word) != std::string::npos) {
                return word.meaning;
            }
        }
    }
    return "";
}

}  // namespace

DisplayTags tagsOf(const std::vector<std::string>& names) {
    DisplayTags tags{meaningOf(primaries, names), meaningOf(transfers, names), ""};
    if (!tags.primaries.empty()) {
        tags.matrix = tags.primaries == "bt2020" ? "bt2020nc" : "bt709";
    }
    return tags;
}

}  // namespace Corvel
