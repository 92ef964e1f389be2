#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>

#include "Kex/Image/Export.h"

namespace Kex::Image::MetaData {

/// One value of a picture's metadata. It can always be had as text.
class KEX_IMAGE_API Property {
public:
    Property(std::string text) : value(std::move(text)) {}
    Property(const char* text) : value(std::string(text)) {}
    Property(std::int64_t number) : value(number) {}
    Property(int number) : value(std::int64_t{number}) {}
    Property(double number) : value(number) {}

    /// A text as it is, a whole number in decimal digits, a double in the shortest form that reads back as
    /// the same.
    std::string text() const;

    bool operator==(const Property&) const = default;

private:
    std::variant<std::string, std::int64_t, double> value;
};

/// The metadata of a picture: properties by key, keys such as "input/timecode". A plain value.
class KEX_IMAGE_API Bundle {
public:
    /// The property of that key, owned by the bundle and valid until it is changed; null when there is none.
    const Property* getData(const std::string& key) const;
    /// Sets or replaces one property.
    void setData(const std::string& key, Property property);

    bool empty() const { return properties.empty(); }
    auto begin() const { return properties.begin(); }
    auto end() const { return properties.end(); }

private:
    std::map<std::string, Property> properties;
};

}  // namespace Kex::Image::MetaData
