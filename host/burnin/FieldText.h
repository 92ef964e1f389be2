#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace Corvel {

/// What a field stands for.
using FieldValue = std::variant<std::int64_t, std::string>;

/// The value of a field; `argument` is what stands behind "meta:" and empty for other fields.
using FieldLookup = std::function<FieldValue(const std::string& field, const std::string& argument)>;

/// A text with fields, such as "frame {frame:04d} of {last}": "{name}" stands for a value, "{name:FORMAT}"
/// for one with a format as the C++ standard library's, "{meta:KEY}" for a piece of metadata,
/// "{date:%d.%m.%Y}" for a date as strftime writes it; "{{" and "}}" are braces. Immutable.
class FieldText {
public:
    /// Throws std::invalid_argument, with a sentence that quotes the text, for a field that is not among
    /// `known`, a brace without its other one and a format that its field does not take.
    FieldText(const std::string& text, const std::vector<std::string>& known);

    /// The text with its values. Empty where it has fields and none of them has a value, so that a label
    /// without anything to say is left out.
    std::string textWith(const FieldLookup& lookup) const;

private:
    struct Part {
        std::string literal;
        std::string field;  // empty for a literal
        std::string argument;
        std::string format;
    };

    void addField(const std::string& inside, const std::string& text, const std::vector<std::string>& known);

    std::vector<Part> parts;
};

}  // namespace Corvel
