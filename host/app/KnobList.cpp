#include "host/app/KnobList.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace Corvel {
namespace {

using Json = nlohmann::ordered_json;
using Kex::Image::Knob;

// A float knob's number in the fewest digits, not those of its nearest double.
Json floatValue(const Knob& knob) {
    return Json::parse(fmt::format("{}", static_cast<float>(knob.get_value())), nullptr, false);
}

Json valueOf(const Knob& knob) {
    switch (knob.kind()) {
        case Kex::Image::Knob_Enumeration:
        case Kex::Image::Knob_Int:
            return static_cast<std::int64_t>(knob.get_value());
        case Kex::Image::Knob_Checkbox:
            return knob.get_value() != 0;
        case Kex::Image::Knob_Float:
            return floatValue(knob);
        case Kex::Image::Knob_Button:
            return nullptr;
        case Kex::Image::Knob_Text:
        case Kex::Image::Knob_File:
            break;
    }
    return knob.get_text();
}

std::string withBlank(std::string entry) {
    std::replace(entry.begin(), entry.end(), '\t', ' ');
    return entry;
}

std::string kindText(const Knob& knob) {
    switch (knob.kind()) {
        case Kex::Image::Knob_Text:
            return "text";
        case Kex::Image::Knob_File:
            return "file";
        case Kex::Image::Knob_Int:
            return "whole number";
        case Kex::Image::Knob_Enumeration:
            return "choice";
        case Kex::Image::Knob_Checkbox:
            return "on or off";
        case Kex::Image::Knob_Float:
            return "number";
        case Kex::Image::Knob_Button:
            return "button";
    }
    return "";
}

std::string shownValue(const Knob& knob) {
    if (knob.kind() == Kex::Image::Knob_Button) {
        return "";
    }
    if (knob.kind() == Kex::Image::Knob_Checkbox) {
        return knob.get_value() != 0 ? ", on" : ", off";
    }
    const std::string text = withBlank(knob.get_text());
    return ", " + (text.empty() ? "empty" : text);
}

std::string indented(const std::string& text) {
    std::string lines = "    ";
    for (const char character : text) {
        lines += character;
        lines += character == '\n' ? "    " : "";
    }
    return lines + '\n';
}

}  // namespace

Json knobJson(const Knob& knob) {
    const bool isChoice = knob.kind() == Kex::Image::Knob_Enumeration;
    return {{"name", knob.name()},
            {"label", knob.label()},
            {"kind", static_cast<int>(knob.kind())},
            {"storage", static_cast<int>(knob.storage())},
            {"entries", isChoice ? Json(knob.entries()) : Json()},
            {"min", knob.range() ? Json(knob.range()->first) : Json()},
            {"max", knob.range() ? Json(knob.range()->second) : Json()},
            {"flags", knob.flags()},
            {"tooltip", knob.tooltip().empty() ? Json() : Json(knob.tooltip())},
            {"value", valueOf(knob)}};
}

std::string knobText(const Knob& knob) {
    std::string text = knob.name();
    if (knob.label() != knob.name()) {
        text += fmt::format(" (\"{}\")", knob.label());
    }
    text += fmt::format(": {}{}\n", kindText(knob), shownValue(knob));
    std::string entries;
    for (const std::string& entry : knob.entries()) {
        entries += (entries.empty() ? "" : ", ") + withBlank(entry);
    }
    if (!entries.empty()) {
        text += indented(entries);
    }
    if (knob.range()) {
        text += indented(fmt::format("slider from {} to {}", knob.range()->first, knob.range()->second));
    }
    return knob.tooltip().empty() ? text : text + indented(knob.tooltip());
}

}  // namespace Corvel
