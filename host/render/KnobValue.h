#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace Kex::Image {
class Knob;
class Write;
}  // namespace Kex::Image

namespace Corvel {

/// A value that a knob can't take, or a knob that isn't there. `what()` is a sentence that says what would
/// do.
class BadKnobValue : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Gives the node's knob `name` the value that `text` means and tells the node of the change, as a panel
/// does:
/// - an enumeration takes the index of an entry, an entry, or as much of its beginning as no other entry has;
/// letter case
///   doesn't matter. Where an entry has the form "short TAB long", both stand for it;
/// - a checkbox takes on, off, yes, no, true, false, 1, 0;
/// - numbers take numbers, whatever a slider offers;
/// - texts and files take anything.
/// A button is pressed; `text` doesn't matter. Throws BadKnobValue and then has changed nothing.
void applyKnob(Kex::Image::Write& node, const std::string& name, const std::string& text);

/// The index of the entry that `text` means, as above. Throws BadKnobValue, which names the nearest entries.
int entryIndex(const std::vector<std::string>& entries, const std::string& name, const std::string& text);

}  // namespace Corvel
