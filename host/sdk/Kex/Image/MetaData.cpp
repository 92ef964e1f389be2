#include "Kex/Image/MetaData.h"

#include <fmt/format.h>

namespace Kex::Image::MetaData {

std::string Property::text() const {
    return std::visit([](const auto& held) { return fmt::format("{}", held); }, value);
}

const Property* Bundle::getData(const std::string& key) const {
    const auto found = properties.find(key);
    return found != properties.end() ? &found->second : nullptr;
}

void Bundle::setData(const std::string& key, Property property) {
    properties.insert_or_assign(key, std::move(property));
}

}  // namespace Kex::Image::MetaData
