#include "worker/dialog/ControlField.h"

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QLocale>
#include <QSignalBlocker>
#include <QSpinBox>
#include <utility>

namespace Morvane::Worker {

namespace {

constexpr const char* automaticWord = "auto";
constexpr double numberStep = 0.5;

QString text(const std::string& utf8) {
    return QString::fromStdString(utf8);
}

/// The number in the fewest digits, with a point in any country.
std::string numberText(double value) {
    return QString::number(value, 'g', 6).toStdString();
}

}  // namespace

ControlField::ControlField(const DialogControl& control, QWidget* parent, Changed told)
    : changed(std::move(told)) {
    switch (control.kind) {
        case DialogControl::Kind::Choice:
            makeList(control, parent);
            break;
        case DialogControl::Kind::Integer:
            makeWholeNumber(control, parent);
            break;
        case DialogControl::Kind::Number:
            makeNumber(control, parent);
            break;
        case DialogControl::Kind::Text:
            makeText(control, parent);
            break;
    }
    field->setToolTip(text(control.help));
    field->setObjectName(text(control.key));
    field->setAccessibleName(text(control.label));
}

std::string ControlField::hint(const DialogControl& control) {
    const bool number =
        control.kind == DialogControl::Kind::Integer || control.kind == DialogControl::Kind::Number;
    std::string hint = control.unit;
    if (number)
        hint = numberText(control.lowest) + " to " + numberText(control.highest);
    if (!control.defaultValue.empty())
        hint += (hint.empty() ? "default " : ", default ") + control.defaultValue;
    return hint;
}

void ControlField::makeList(const DialogControl& control, QWidget* parent) {
    auto* list = new QComboBox(parent);
    for (const std::string& choice : control.choices)
        list->addItem(text(choice));
    list->setMaxVisibleItems(20);
    QObject::connect(list, &QComboBox::currentTextChanged, list,
                     [this](const QString& chosen) { changed(chosen.toStdString()); });
    showValue = [list](const std::string& value) {
        const QSignalBlocker quiet(list);
        // Some values have several names, and the text has one of its own for them.
        if (list->findText(text(value)) < 0)
            list->addItem(text(value));
        list->setCurrentText(text(value));
    };
    field = list;
}

void ControlField::makeWholeNumber(const DialogControl& control, QWidget* parent) {
    auto* box = new QSpinBox(parent);
    const int lowest = static_cast<int>(control.lowest);
    const int below = control.automatic ? lowest - 1 : lowest;
    box->setRange(below, static_cast<int>(control.highest));
    if (control.automatic)
        box->setSpecialValueText(automaticWord);
    QObject::connect(box, &QSpinBox::valueChanged, box, [this, lowest](int value) {
        changed(value < lowest ? automaticWord : std::to_string(value));
    });
    showValue = [box, below](const std::string& value) {
        const QSignalBlocker quiet(box);
        box->setValue(value == automaticWord ? below : QString::fromStdString(value).toInt());
    };
    field = box;
}

void ControlField::makeNumber(const DialogControl& control, QWidget* parent) {
    auto* box = new QDoubleSpinBox(parent);
    const double lowest = control.lowest;
    const double below = control.automatic ? lowest - numberStep : lowest;
    box->setLocale(QLocale::c());
    box->setDecimals(2);
    box->setSingleStep(numberStep);
    box->setRange(below, control.highest);
    if (control.automatic)
        box->setSpecialValueText(automaticWord);
    QObject::connect(box, &QDoubleSpinBox::valueChanged, box, [this, lowest](double value) {
        changed(value < lowest ? automaticWord : numberText(value));
    });
    showValue = [box, below](const std::string& value) {
        const QSignalBlocker quiet(box);
        box->setValue(value == automaticWord ? below : QString::fromStdString(value).toDouble());
    };
    field = box;
}

void ControlField::makeText(const DialogControl& control, QWidget* parent) {
    auto* line = new QLineEdit(parent);
    line->setPlaceholderText(control.defaultValue.empty() ? "the codec's own" : text(control.defaultValue));
    QObject::connect(line, &QLineEdit::textEdited, line,
                     [this](const QString& written) { changed(written.toStdString()); });
    showValue = [line](const std::string& value) {
        // Not while somebody writes there: what is half written would be taken away.
        if (!line->hasFocus())
            line->setText(text(value));
    };
    field = line;
}

}  // namespace Morvane::Worker
