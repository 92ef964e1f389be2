#include "property/Property.h"

namespace Morvane::Property {

namespace {

template <typename Values, TypeEnum E>
Values* asValues(Base* property, std::uint64_t expectedCount) {
    const bool matches = property->type == E && (expectedCount == 0 || property->size() == expectedCount);
    return matches ? static_cast<Values*>(property) : nullptr;
}

}  // namespace

IntValues* asInt(Base* property, std::uint64_t expectedCount) {
    return asValues<IntValues, TypeInt>(property, expectedCount);
}

DoubleValues* asDouble(Base* property, std::uint64_t expectedCount) {
    return asValues<DoubleValues, TypeDouble>(property, expectedCount);
}

StringValues* asString(Base* property, std::uint64_t expectedCount) {
    return asValues<StringValues, TypeString>(property, expectedCount);
}

}  // namespace Morvane::Property
