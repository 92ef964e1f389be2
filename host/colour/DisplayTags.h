#pragma once

#include <string>
#include <vector>

namespace Corvel {

/// What a movie's tags call the values of a display, in the words of the codec settings (the names of ITU-T
/// H.273's primaries, transfer characteristics and matrix). Each is empty where there is no such word.
struct DisplayTags {
    std::string primaries;
    std::string transfer;
    std::string matrix;

    bool operator==(const DisplayTags&) const = default;
};

/// The tags of a display or colour space by what it is called: the first of `names` that says something about
/// the primaries or the transfer settles those. Letter case, spaces and punctuation do not count, so that
/// "Rec.2100-PQ - Display" and "rec2100_pq_display" are the same.
DisplayTags tagsOf(const std::vector<std::string>& names);

}  // namespace Corvel
