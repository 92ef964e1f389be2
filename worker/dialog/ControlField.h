#pragma once

#include <QWidget>
#include <functional>
#include <string>

#include "worker/dialog/DialogInterface.h"

namespace Morvane::Worker {

/// The field of one settings key: a list, a number with its range and, where there is one, "auto" below it,
/// or a line of text.
class ControlField {
public:
    /// Told the value that a person has given; not told of `show`.
    using Changed = std::function<void(const std::string& value)>;

    /// The field belongs to `parent`.
    ControlField(const DialogControl& control, QWidget* parent, Changed changed);

    QWidget* widget() const { return field; }
    void show(const std::string& value) { showValue(value); }

    /// What the field takes and what it has by itself: "0 to 51, else auto".
    static std::string hint(const DialogControl& control);

private:
    void makeList(const DialogControl& control, QWidget* parent);
    void makeWholeNumber(const DialogControl& control, QWidget* parent);
    void makeNumber(const DialogControl& control, QWidget* parent);
    void makeText(const DialogControl& control, QWidget* parent);

    const Changed changed;
    QWidget* field = nullptr;
    std::function<void(const std::string&)> showValue;
};

}  // namespace Morvane::Worker
