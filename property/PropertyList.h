#pragma once

#include <list>
#include <memory>
#include <string>

#include "property/Property.h"

namespace Morvane::Property {

/// Properties in the order in which they were added; the text form keeps the order.
using PropertyList = std::list<std::unique_ptr<Base>>;

/// The list as fields: tag ("I", "D"; "S" for every other type), name and values for each property, such as
/// "I:fps:25". An empty list gives the empty text.
std::string writePropertyList(const PropertyList& list);

/// Appends the properties that `text` holds to `list`; one or two fields left over at the end are dropped.
/// Throws boost::escaped_list_error, and then leaves the list as it was.
void readPropertyList(const std::string& text, PropertyList& list);

/// One property with one value. "I" reads an integer. "D" deliberately reads an integer too ("2.5"
/// gives 2.0): both sides of the bridge do. Any other tag makes a String of the whole text. An unreadable
/// number is 0.
std::unique_ptr<Base> makeProperty(const std::string& tag, const std::string& name,
                                   const std::string& valueText);

}  // namespace Morvane::Property
