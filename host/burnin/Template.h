#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/burnin/FieldText.h"
#include "host/burnin/Ink.h"

namespace Corvel {

/// A template that cannot be used. `what()` is a sentence that names it.
class BadTemplate : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The nine places of a picture, row by row.
enum class Place { TopLeft, TopCentre, TopRight, Left, Centre, Right, BottomLeft, BottomCentre, BottomRight };

/// How a label is written. Sizes are shares of the picture's height, or of 9/16 of its width where it is
/// narrower than that, so that a template looks alike at any size.
struct LabelStyle {
    std::string font = "Noto Sans,DejaVu Sans,sans-serif";
    bool bold = false;
    double size = 0.028;
    Ink letters{{1, 1, 1}, 0.95F};
    Ink box{{0, 0, 0}, 0.5F};
};

/// One line of text at one place.
struct Label {
    Place place = Place::BottomLeft;
    FieldText text;
    LabelStyle style;
};

/// What is written over every frame.
struct BurnInTemplate {
    double margin = 0.03;  ///< to the edges, as sizes are
    std::vector<Label> labels;
};

/// The frame before the first one.
struct SlateTemplate {
    struct Line {
        std::string label;
        FieldText text;
    };

    LabelStyle style;
    Ink background{{0.09F, 0.1F, 0.11F}, 1};
    Ink faint{{0.55F, 0.6F, 0.65F}, 1};  ///< of what stands before the values
    FieldText title;
    FieldText heading;
    std::vector<Line> lines;
    bool thumbnail = true;
    bool bars = true;  ///< colour bars and grey steps
    double margin = 0.06;
    std::vector<Label> labels;
};

/// A built-in template by its name, else the one in that JSON file. `known` are the fields that it may have.
/// Throws BadTemplate.
BurnInTemplate loadBurnIn(const std::string& nameOrFile, const std::vector<std::string>& known);
SlateTemplate loadSlate(const std::string& nameOrFile, const std::vector<std::string>& known);

/// A label from "bottom-left=TEXT", in the usual style. Throws BadTemplate.
Label labelFrom(const std::string& placeAndText, const std::vector<std::string>& known);

/// Names of the built-in ones, separated by ", ".
std::string burnInNames();
std::string slateNames();

}  // namespace Corvel
