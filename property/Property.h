#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "property/FieldEncoding.h"
#include "property/NumberText.h"

namespace Morvane::Property {

enum TypeEnum : std::int32_t { TypeInt = 1, TypeDouble = 2, TypeString = 3 };

/// A named list of values of one type. Name, type and number of values are settled at construction; the
/// values are changed through the class that holds them (`asInt` and its like).
class Base {
public:
    virtual ~Base() = default;

    /// A new copy, owned by the caller.
    virtual std::unique_ptr<Base> clone() const = 0;
    /// How many values the property holds.
    virtual std::uint64_t size() const = 0;
    /// All values in order with "," between them, not escaped.
    virtual std::string toString() const = 0;
    /// One value as text. REQUIRES: index < size().
    virtual std::string valueToString(std::uint32_t index) const = 0;

    const std::string name;
    const TypeEnum type;

protected:
    Base(std::string name, TypeEnum type) : name(std::move(name)), type(type) {}
    Base(const Base&) = default;
    Base& operator=(const Base&) = delete;
};

/// What all value types have in common.
template <typename T, TypeEnum E>
class PropertyTemplate : public Base {
public:
    PropertyTemplate(std::string name, std::uint64_t count)
        : Base(std::move(name), E), values(count), count(count) {}

    /// The copy is a PropertyTemplate and deliberately not an Int, Double or String, which add nothing to it.
    std::unique_ptr<Base> clone() const override {
        auto copy = std::make_unique<PropertyTemplate>(name, count);
        std::copy_n(values.begin(), std::min(size(), copy->size()), copy->values.begin());
        return copy;
    }

    std::uint64_t size() const override { return values.size(); }

    std::string toString() const override {
        std::string text;
        for (std::uint32_t index = 0; index < values.size(); ++index) {
            text += (index == 0 ? "" : valueSeparatorString) + valueToString(index);
        }
        return text;
    }

    std::string valueToString(std::uint32_t index) const override {
        if constexpr (std::is_same_v<T, std::string>) {
            return values[index];
        } else {
            return numberText(values[index]);
        }
    }

    std::vector<T> values;
    const std::uint64_t count;  ///< the number of values it was created with
};

using IntValues = PropertyTemplate<std::int32_t, TypeInt>;
using DoubleValues = PropertyTemplate<double, TypeDouble>;
using StringValues = PropertyTemplate<std::string, TypeString>;

class Int : public IntValues {
public:
    using IntValues::IntValues;
    ~Int() override = default;
    Int(const Int&) = default;
};

class Double : public DoubleValues {
public:
    using DoubleValues::DoubleValues;
    ~Double() override = default;
    Double(const Double&) = default;
};

class String : public StringValues {
public:
    using StringValues::StringValues;
    ~String() override = default;
    String(const String&) = default;
};

/// The property as the class that holds its values, if its `type` says that it is one (the object's own class
/// is not asked) and it holds `expectedCount` values, 0 standing for any number; else null. The same object,
/// not a copy. Answers the template class, so that clones can be read too.
IntValues* asInt(Base* property, std::uint64_t expectedCount);
DoubleValues* asDouble(Base* property, std::uint64_t expectedCount);
StringValues* asString(Base* property, std::uint64_t expectedCount);

}  // namespace Morvane::Property
