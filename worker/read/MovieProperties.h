#pragma once

#include "property/PropertyList.h"
#include "worker/read/MovieDescription.h"
#include "worker/read/MovieInput.h"

namespace Morvane::Worker {

/// What every track of a movie is: "tracks" and then, for track N from 1 in the file's order, "track/N/type"
/// and the like. Whole numbers are Ints; everything else is a String, since a property list reads anything
/// but one whole number back differently. What a track does not have is not listed. docs/protocol.md has all
/// the names.
Property::PropertyList movieProperties(const MovieInput& input, const MovieDescription& description);

}  // namespace Morvane::Worker
