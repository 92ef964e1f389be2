#pragma once

#include <string>

namespace Corvel {

/// Whether a DPX file has all the bytes that its header (SMPTE 268M) promises for its first picture. The
/// image library reads a DPX file that is cut short without a word and leaves the missing rows to chance.
/// True for files that are not DPX, are run-length encoded, or cannot be opened: those are told of by the
/// library itself.
bool dpxIsComplete(const std::string& path);

/// Whether a DPX file has the header for film and television, with time code and rate. Where it has not, the
/// image library takes the first pixels for one.
bool dpxHasIndustryPart(const std::string& path);

}  // namespace Corvel
