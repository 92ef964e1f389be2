#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace Corvel {

/// A text that does not say which frames are meant. `what()` is a sentence for a person that quotes the text.
class BadFrameRange : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The frames that a text such as "1001-1100", "1-99x2", "1,5,10-20" or "-10--5" names.
///
/// The text is a list of parts separated by ",". A part is one frame or `first-last`, both inclusive, which
/// `xN` thins out to every Nth frame counted from `first`. Frame numbers may be negative. `last` may be below
/// `first`; the same frames are meant then, counted from `first` downwards.
///
/// A range is a set: the answer is in ascending order and has no frame twice, whatever the order in the text,
/// since a movie lays its frames end to end in the order of their numbers.
///
/// Throws BadFrameRange, also for more than ten million frames.
std::vector<int> parseFrameRange(const std::string& text);

/// The shortest text of that kind for frames in ascending order: "1-3,7". Used to name gaps.
std::string frameRangeText(const std::vector<int>& frames);

}  // namespace Corvel
