#include "host/burnin/FieldText.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <stdexcept>

#include "host/burnin/FieldNames.h"

namespace Corvel {
namespace {

std::string dated(std::int64_t seconds, const std::string& format) {
    const std::time_t time = seconds;
    std::tm parts{};
    localtime_r(&time, &parts);
    std::array<char, 256> text{};
    return {text.data(), std::strftime(text.data(), text.size(), format.c_str(), &parts)};
}

std::string formatted(const FieldValue& value, const std::string& field, const std::string& format) {
    if (isTimeField(field)) {
        const char* const usual = field == "time" ? "%H:%M" : "%Y-%m-%d";
        return dated(std::get<std::int64_t>(value), format.empty() ? usual : format);
    }
    const std::string whole = "{:" + format + "}";
    return std::visit([&](const auto& plain) { return fmt::format(fmt::runtime(whole), plain); }, value);
}

bool isEmpty(const FieldValue& value) {
    const std::string* const text = std::get_if<std::string>(&value);
    return text && text->empty();
}

[[noreturn]] void refuse(const std::string& text, const std::string& reason) {
    throw std::invalid_argument(fmt::format("in \"{}\": {}", text, reason));
}

}  // namespace

FieldText::FieldText(const std::string& text, const std::vector<std::string>& known) {
    std::string literal;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        if (text[i] != '{' && text[i] != '}') {
            literal += text[i];
        } else if (next == text[i]) {
            literal += text[i++];
        } else if (text[i] == '}') {
            refuse(text, "a \"}\" without its \"{\"; a brace is written twice");
        } else {
            const std::size_t end = text.find('}', i);
            if (end == std::string::npos) {
                refuse(text, "a \"{\" without its \"}\"; a brace is written twice");
            }
            parts.push_back({literal, "", "", ""});
            literal.clear();
            addField(text.substr(i + 1, end - i - 1), text, known);
            i = end;
        }
    }
    parts.push_back({literal, "", "", ""});
}

void FieldText::addField(const std::string& inside, const std::string& text,
                         const std::vector<std::string>& known) {
    const std::size_t colon = inside.find(':');
    Part part{"", inside.substr(0, colon), "", colon == std::string::npos ? "" : inside.substr(colon + 1)};
    if (part.field == metadataField) {
        std::swap(part.argument, part.format);
        if (part.argument.empty()) {
            refuse(text, "{meta} wants the name of a piece of metadata: {meta:KEY}");
        }
    } else if (std::find(known.begin(), known.end(), part.field) == known.end()) {
        refuse(text, fmt::format("there is no field {{{}}}; there are {}, meta:KEY, and those of --field",
                                 part.field, fmt::join(known, ", ")));
    }
    try {
        const bool number = isNumberField(part.field) || isTimeField(part.field);
        formatted(number ? FieldValue(std::int64_t{0}) : FieldValue(std::string()), part.field, part.format);
    } catch (const fmt::format_error&) {
        refuse(text, fmt::format("the field {{{}}} takes no format \"{}\"", part.field, part.format));
    }
    parts.push_back(std::move(part));
}

std::string FieldText::textWith(const FieldLookup& lookup) const {
    std::string text;
    bool fields = false, said = false;
    for (const Part& part : parts) {
        text += part.literal;
        if (!part.field.empty()) {
            const FieldValue value = lookup(part.field, part.argument);
            fields = true;
            if (!isEmpty(value)) {
                said = true;
                text += formatted(value, part.field, part.format);
            }
        }
    }
    return fields && !said ? "" : text;
}

}  // namespace Corvel
