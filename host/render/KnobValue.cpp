#include "host/render/KnobValue.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

#include "Kex/Image/Knob.h"
#include "Kex/Image/Write.h"
#include "host/images/NameMatch.h"

namespace Corvel {
namespace {

using Kex::Image::Knob;

std::string withoutBlanksAtEnd(const std::string& text) {
    const std::size_t end = text.find_last_not_of(' ');
    return end == std::string::npos ? "" : text.substr(0, end + 1);
}

template <typename Number>
std::optional<Number> number(const std::string& text) {
    Number value{};
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

// The names that stand for an entry, in lower case.
std::vector<std::string> namesOf(const std::string& entry) {
    const std::size_t tab = entry.find('\t');
    if (tab == std::string::npos) {
        return {lowered(entry)};
    }
    return {lowered(withoutBlanksAtEnd(entry.substr(0, tab))), lowered(entry.substr(tab + 1))};
}

std::string shownEntry(const std::string& entry) {
    const std::size_t tab = entry.find('\t');
    if (tab == std::string::npos) {
        return fmt::format("\"{}\"", entry);
    }
    return fmt::format("{} (\"{}\")", withoutBlanksAtEnd(entry.substr(0, tab)), entry.substr(tab + 1));
}

std::string shownEntries(const std::vector<std::string>& entries, const std::vector<int>& indices) {
    std::string text;
    for (const int index : indices) {
        text += (text.empty() ? "" : ", ") + shownEntry(entries[static_cast<std::size_t>(index)]);
    }
    return text;
}

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

template <typename Matches>
std::vector<int> indicesWhere(const std::vector<std::string>& entries, Matches matches) {
    std::vector<int> found;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const std::vector<std::string> names = namesOf(entries[i]);
        if (std::any_of(names.begin(), names.end(), matches)) {
            found.push_back(static_cast<int>(i));
        }
    }
    return found;
}

int distanceToEntry(const std::string& entry, const std::string& wanted) {
    int nearest = std::numeric_limits<int>::max();
    for (const std::string& name : namesOf(entry)) {
        // A person who writes less than the whole name still means it.
        const bool part = wanted.size() > 2 && name.find(wanted) != std::string::npos;
        const int cut = editDistance(name.substr(0, wanted.size()), wanted) + 1;
        nearest = std::min({nearest, editDistance(name, wanted), cut, part ? 0 : nearest});
    }
    return nearest;
}

std::vector<int> nearestEntries(const std::vector<std::string>& entries, const std::string& wanted) {
    std::vector<int> indices(entries.size());
    std::iota(indices.begin(), indices.end(), 0);
    std::stable_sort(indices.begin(), indices.end(), [&](int one, int other) {
        return distanceToEntry(entries[static_cast<std::size_t>(one)], wanted) <
               distanceToEntry(entries[static_cast<std::size_t>(other)], wanted);
    });
    indices.resize(std::min<std::size_t>(indices.size(), 3));
    return indices;
}

double switchValue(const std::string& name, const std::string& text) {
    const std::string word = lowered(text);
    for (const char* on : {"1", "on", "yes", "true"}) {
        if (word == on) {
            return 1;
        }
    }
    for (const char* off : {"0", "off", "no", "false"}) {
        if (word == off) {
            return 0;
        }
    }
    throw BadKnobValue(fmt::format("{} is either on or off, not \"{}\"", name, text));
}

double wholeNumber(const std::string& name, const std::string& text) {
    if (const auto value = number<std::int32_t>(text)) {
        return *value;
    }
    throw BadKnobValue(fmt::format("{} takes a whole number, not \"{}\"", name, text));
}

double realNumber(const std::string& name, const std::string& text) {
    const auto value = number<double>(text);
    if (value && std::isfinite(*value)) {
        return *value;
    }
    throw BadKnobValue(fmt::format("{} takes a number, not \"{}\"", name, text));
}

void setKnob(Knob& knob, const std::string& text) {
    switch (knob.kind()) {
        case Kex::Image::Knob_Enumeration:
            knob.set_value(entryIndex(knob.entries(), knob.name(), text));
            return;
        case Kex::Image::Knob_Checkbox:
            knob.set_value(switchValue(knob.name(), text));
            return;
        case Kex::Image::Knob_Int:
            knob.set_value(wholeNumber(knob.name(), text));
            return;
        case Kex::Image::Knob_Float:
            knob.set_value(realNumber(knob.name(), text));
            return;
        case Kex::Image::Knob_Text:
        case Kex::Image::Knob_File:
            knob.set_text(text);
            return;
        case Kex::Image::Knob_Button:
            return;
    }
}

}  // namespace

int entryIndex(const std::vector<std::string>& entries, const std::string& name, const std::string& text) {
    const std::string wanted = lowered(withoutBlanksAtEnd(text));
    std::vector<int> found = indicesWhere(entries, [&](const std::string& entry) { return entry == wanted; });
    if (found.size() == 1) {
        return found.front();
    }
    if (const auto index = number<int>(wanted);
        index && *index >= 0 && *index < static_cast<int>(entries.size())) {
        return *index;
    }
    if (found.empty() && !wanted.empty()) {
        found = indicesWhere(entries, [&](const std::string& entry) { return startsWith(entry, wanted); });
    }
    if (found.size() == 1) {
        return found.front();
    }
    if (!found.empty()) {
        throw BadKnobValue(
            fmt::format("{} \"{}\" could be any of {}", name, text, shownEntries(entries, found)));
    }
    throw BadKnobValue(fmt::format("there is no {} \"{}\"; the nearest are {}", name, text,
                                   shownEntries(entries, nearestEntries(entries, wanted))));
}

void applyKnob(Kex::Image::Write& node, const std::string& name, const std::string& text) {
    Knob* const knob = node.knob(name.c_str());
    if (knob == nullptr) {
        throw BadKnobValue(fmt::format("the Write node has no knob \"{}\"", name));
    }
    setKnob(*knob, text);
    node.knobChanged(*knob);
}

}  // namespace Corvel
