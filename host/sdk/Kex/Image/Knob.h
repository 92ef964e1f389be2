#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Kex/Image/Export.h"

namespace Kex::Image {

/// What a knob looks like on a panel.
enum KnobKind : int {
    Knob_Text = 1,
    Knob_File = 2,
    Knob_Int = 3,
    Knob_Enumeration = 4,
    Knob_Checkbox = 6,
    Knob_Float = 8,
    Knob_Button = 32,
};

/// What the node's field behind a knob is.
enum KnobStorage : int {
    Store_Float = 1,    ///< float
    Store_CString = 2,  ///< const char*, pointing into the knob
    Store_Int = 3,      ///< std::int32_t; of an enumeration, the index of the entry
    Store_Bool = 5,     ///< bool
    Store_String = 16,  ///< std::string
    Store_None = 17,    ///< no field (a button)
};

/// Flags of a knob, added up.
enum KnobFlag : int {
    Flag_WholeNumberSlider = 4,  ///< the slider stops at whole numbers; any number can be typed
    Flag_SetByDialog =
        1024,  ///< a dialog of the node's may change the knob; the panel reads it again afterwards
};

/// One setting of a node, tied to a field of the node. Setting the knob stores into the field at once; the
/// field may also be written by the node itself, so that the field alone is the truth and the knob only reads
/// it.
///
/// Setting a knob never calls the node back: an application that changes a knob on a person's behalf says so
/// with Write::knobChanged, and what a node sets while it handles such a change stays quiet.
///
/// A knob belongs to its node's Op and must not outlive the object with the field. One thread at a time.
class KEX_IMAGE_API Knob {
public:
    /// What a node gives when it declares a knob. `field` is of the type that `storage` tells, null for
    /// Store_None.
    struct Declaration {
        KnobKind kind;
        KnobStorage storage;
        void* field;
        const char* name;   ///< the saved name; copied
        const char* label;  ///< what a panel shows; copied; null for the saved name
        const char* const*
            entries;  ///< null-terminated names of an enumeration; not copied; null when it is none
    };

    explicit Knob(const Declaration& declaration);
    Knob(const Knob&) = delete;
    Knob& operator=(const Knob&) = delete;

    const std::string& name() const { return name_; }
    const std::string& label() const { return label_; }
    KnobKind kind() const { return kind_; }
    KnobStorage storage() const { return storage_; }
    /// The entries of an enumeration in order, empty for any other knob.
    const std::vector<std::string>& entries() const { return entries_; }
    const std::string& tooltip() const { return tooltip_; }
    int flags() const { return flags_; }
    /// What a slider offers. It is no limit: any value can be set.
    const std::optional<std::pair<double, double>>& range() const { return range_; }

    /// Stores a number in the field. Whole numbers are cut towards zero and clamped to 32 bits, NaN counts as
    /// 0, a checkbox is on for anything but 0. `channel` is for knobs with several numbers; every knob here
    /// has one, which both 0 and -1 (all) mean. False, and nothing happens, for a knob that holds no number
    /// and for other channels.
    bool set_value(double value, int channel = -1);
    /// The field as a number; 0 for a knob that holds none.
    double get_value(int channel = 0) const;

    /// Stores a text in the field. False, and nothing happens, for a knob that holds no text. A C string in
    /// the field stays valid until the next set_text and never outlives the knob.
    bool set_text(const std::string& text);
    /// The field as text: the text itself, the entry's name of an enumeration (empty for an index that has
    /// none), the number of a number knob in its shortest form, "1" or "0" of a checkbox, and the empty text
    /// for a button.
    std::string get_text() const;

    void setTooltip(const char* text) { tooltip_ = text; }
    void setRange(double low, double high) { range_ = {low, high}; }
    void setFlags(int newFlags) { flags_ |= newFlags; }

private:
    KnobKind kind_;
    KnobStorage storage_;
    void* field;
    std::string name_;
    std::string label_;
    std::vector<std::string> entries_;
    std::string ownedText;  // what a Store_CString field points to
    std::string tooltip_;
    int flags_ = 0;
    std::optional<std::pair<double, double>> range_;
};

}  // namespace Kex::Image
