#include "host/burnin/Template.h"

#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include "host/burnin/BuiltIn.h"

namespace Corvel {
namespace {

using Json = nlohmann::json;
using Known = std::vector<std::string>;

const std::map<std::string, Place>& places() {
    static const std::map<std::string, Place> named{{"top-left", Place::TopLeft},
                                                    {"top-center", Place::TopCentre},
                                                    {"top-centre", Place::TopCentre},
                                                    {"top-right", Place::TopRight},
                                                    {"left", Place::Left},
                                                    {"center", Place::Centre},
                                                    {"centre", Place::Centre},
                                                    {"right", Place::Right},
                                                    {"bottom-left", Place::BottomLeft},
                                                    {"bottom-center", Place::BottomCentre},
                                                    {"bottom-centre", Place::BottomCentre},
                                                    {"bottom-right", Place::BottomRight}};
    return named;
}

Place placeNamed(const std::string& name) {
    const auto found = places().find(name);
    if (found == places().end()) {
        throw std::invalid_argument(fmt::format(
            "\"{}\" is no place; there are top-left, top-center, top-right, left, center, right, bottom-left, "
            "bottom-center and bottom-right",
            name));
    }
    return found->second;
}

std::array<float, 3> colourFrom(const std::string& text) {
    unsigned red = 0, green = 0, blue = 0;
    int end = 0;
    if (std::sscanf(text.c_str(), "#%2x%2x%2x%n", &red, &green, &blue, &end) != 3 || end != 7 ||
        text.size() != 7) {
        throw std::invalid_argument(fmt::format("\"{}\" is no colour; it reads #rrggbb", text));
    }
    return {static_cast<float>(red) / 255, static_cast<float>(green) / 255, static_cast<float>(blue) / 255};
}

// Takes values out of one object of a template, and knows which ones nobody took.
class Reader {
public:
    explicit Reader(const Json& what) : object(what) {
        if (!object.is_object()) {
            throw std::invalid_argument("it is not an object in braces");
        }
        for (const auto& [key, value] : object.items()) {
            left.push_back(key);
        }
    }

    template <typename T>
    void take(const char* key, T& value) {
        if (const Json* const found = find(key)) {
            value = found->get<T>();
        }
    }

    void takeShare(const char* key, double& value, double most) {
        take(key, value);
        if (!(value > 0 && value <= most)) {
            throw std::invalid_argument(fmt::format("\"{}\" is not between 0 and {}", key, most));
        }
    }

    void takeColour(const char* key, Ink& ink) {
        if (const Json* const found = find(key)) {
            ink.colour = colourFrom(found->get<std::string>());
        }
    }

    void takeOpacity(const char* key, Ink& ink) {
        take(key, ink.opacity);
        if (!(ink.opacity >= 0 && ink.opacity <= 1)) {
            throw std::invalid_argument(fmt::format("\"{}\" is not between 0 and 1", key));
        }
    }

    const Json* find(const char* key) {
        std::erase(left, key);
        const auto found = object.find(key);
        return found == object.end() ? nullptr : &*found;
    }

    void refuseOthers() const {
        if (!left.empty()) {
            throw std::invalid_argument(fmt::format("\"{}\" means nothing here", left.front()));
        }
    }

private:
    const Json& object;
    std::vector<std::string> left;
};

void takeStyle(Reader& reader, LabelStyle& style) {
    reader.take("font", style.font);
    reader.take("bold", style.bold);
    reader.takeShare("size", style.size, 0.5);
    reader.takeColour("color", style.letters);
    reader.takeOpacity("opacity", style.letters);
    reader.takeColour("box", style.box);
    reader.takeOpacity("box_opacity", style.box);
}

void takeLabels(Reader& reader, const LabelStyle& usual, const Known& known, std::vector<Label>& labels) {
    const Json* const texts = reader.find("texts");
    for (const Json& text : texts ? *texts : Json::array()) {
        Reader one(text);
        std::string place = "bottom-left", words;
        one.take("at", place);
        one.take("text", words);
        Label label{placeNamed(place), FieldText(words, known), usual};
        takeStyle(one, label.style);
        one.refuseOthers();
        labels.push_back(std::move(label));
    }
}

FieldText takeText(Reader& reader, const char* key, const Known& known) {
    std::string text;
    reader.take(key, text);
    return {text, known};
}

BurnInTemplate burnInFrom(const Json& json, const Known& known) {
    Reader reader(json);
    BurnInTemplate made;
    LabelStyle style;
    takeStyle(reader, style);
    reader.takeShare("margin", made.margin, 0.4);
    takeLabels(reader, style, known, made.labels);
    reader.refuseOthers();
    return made;
}

SlateTemplate slateFrom(const Json& json, const Known& known) {
    Reader reader(json);
    LabelStyle style;
    style.size = 0.034;
    style.box.opacity = 0;
    takeStyle(reader, style);
    SlateTemplate made{.style = style,
                       .title = takeText(reader, "title", known),
                       .heading = takeText(reader, "heading", known),
                       .lines = {},
                       .labels = {}};
    reader.takeColour("background", made.background);
    reader.takeColour("label_color", made.faint);
    reader.take("thumbnail", made.thumbnail);
    reader.take("bars", made.bars);
    reader.takeShare("margin", made.margin, 0.4);
    const Json* const lines = reader.find("lines");
    for (const Json& line : lines ? *lines : Json::array()) {
        Reader one(line);
        std::string label;
        one.take("label", label);
        made.lines.push_back({label, takeText(one, "text", known)});
        one.refuseOthers();
    }
    takeLabels(reader, style, known, made.labels);
    reader.refuseOthers();
    return made;
}

std::string namesOf(const std::map<std::string, const char*>& templates) {
    std::string names;
    for (const auto& [name, text] : templates) {
        names += (names.empty() ? "" : ", ") + name;
    }
    return names;
}

std::string textOf(const std::string& nameOrFile, const std::map<std::string, const char*>& builtIn,
                   const char* kind) {
    if (const auto found = builtIn.find(nameOrFile); found != builtIn.end()) {
        return found->second;
    }
    std::error_code error;
    std::ifstream file(nameOrFile);
    if (!std::filesystem::is_regular_file(nameOrFile, error) || !file) {
        throw BadTemplate(fmt::format("there is no {} \"{}\", neither a file nor one of {}", kind, nameOrFile,
                                      namesOf(builtIn)));
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

template <typename Make>
auto load(const std::string& nameOrFile, const std::map<std::string, const char*>& builtIn, const char* kind,
          const Known& known, Make make) {
    const std::string text = textOf(nameOrFile, builtIn, kind);
    try {
        return make(Json::parse(text, nullptr, true, true), known);
    } catch (const std::invalid_argument& fault) {
        throw BadTemplate(fmt::format("the {} {}: {}", kind, nameOrFile, fault.what()));
    } catch (const Json::exception& fault) {
        throw BadTemplate(fmt::format("the {} {} cannot be read: {}", kind, nameOrFile, fault.what()));
    }
}

}  // namespace

BurnInTemplate loadBurnIn(const std::string& nameOrFile, const Known& known) {
    return load(nameOrFile, builtInBurnIns(), "burn-in", known, burnInFrom);
}

SlateTemplate loadSlate(const std::string& nameOrFile, const Known& known) {
    return load(nameOrFile, builtInSlates(), "slate", known, slateFrom);
}

Label labelFrom(const std::string& placeAndText, const Known& known) {
    const std::size_t equals = placeAndText.find('=');
    try {
        if (equals == std::string::npos) {
            throw std::invalid_argument("it is not of the form PLACE=TEXT");
        }
        return {placeNamed(placeAndText.substr(0, equals)),
                FieldText(placeAndText.substr(equals + 1), known),
                {}};
    } catch (const std::invalid_argument& fault) {
        throw BadTemplate(fmt::format("the text \"{}\": {}", placeAndText, fault.what()));
    }
}

std::string burnInNames() {
    return namesOf(builtInBurnIns());
}

std::string slateNames() {
    return namesOf(builtInSlates());
}

}  // namespace Corvel
