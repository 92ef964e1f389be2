#include "host/render/SettingsText.h"

#include <utility>

namespace Corvel {
namespace {

// Reads a settings text one token at a time, escapes undone.
class Tokens {
public:
    explicit Tokens(const std::string& text) : text(text) {}

    bool atEnd() const { return place >= text.size(); }

    // Up to one of `ends`, which is passed over.
    std::string next(const char* ends) {
        const std::string stops(ends);
        std::string token;
        bool quoted = false;
        for (; place < text.size(); ++place) {
            const char character = text[place];
            if (quoted) {
                quoted = character != '\'';
                if (quoted) {
                    token += character;
                }
            } else if (character == '\'') {
                quoted = true;
            } else if (character == '\\' && place + 1 < text.size()) {
                token += text[++place];
            } else if (stops.find(character) != std::string::npos) {
                ++place;
                return token;
            } else {
                token += character;
            }
        }
        return token;
    }

private:
    const std::string& text;
    std::size_t place = 0;
};

std::string withoutBlanksAround(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(" \t\n\r");
    const std::size_t end = text.find_last_not_of(" \t\n\r");
    return begin == std::string::npos ? "" : text.substr(begin, end + 1 - begin);
}

std::string escaped(const std::string& text) {
    std::string safe;
    for (const char character : text) {
        // Blanks too: around a value they would be dropped.
        if (std::string(":=\\' \t\n\r").find(character) != std::string::npos) {
            safe += '\\';
        }
        safe += character;
    }
    return safe;
}

}  // namespace

SettingsText::SettingsText(std::string given) : text_(std::move(given)) {
    Tokens tokens(text_);
    while (!tokens.atEnd()) {
        const std::string key = withoutBlanksAround(tokens.next("="));
        values[key] = withoutBlanksAround(tokens.next(":"));
    }
}

bool SettingsText::has(const std::string& key) const {
    return values.count(key) != 0;
}

std::string SettingsText::value(const std::string& key) const {
    const auto entry = values.find(key);
    return entry == values.end() ? "" : entry->second;
}

void SettingsText::add(const std::string& key, const std::string& value) {
    if (has(key)) {
        return;
    }
    text_ += (text_.empty() ? "" : ":") + escaped(key) + '=' + escaped(value);
    values[key] = value;
}

}  // namespace Corvel
