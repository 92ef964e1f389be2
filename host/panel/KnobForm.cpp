#include "host/panel/KnobForm.h"

#include <QFormLayout>
#include <QLabel>
#include <utility>

#include "desktop/Mnemonics.h"

namespace Corvel::Panel {

KnobForm::KnobForm(KnobField::Listener told, Morvane::Desktop::Mnemonics& free, QWidget* parent)
    : QWidget(parent), listener(std::move(told)), letters(free), form(new QFormLayout(this)) {
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
}

void KnobForm::show(const QJsonArray& newKnobs) {
    knobs = newKnobs;
    if (fields.size() != knobs.size()) {
        makeFields();
    }
    for (const QJsonValue knob : std::as_const(knobs)) {
        if (KnobField* field = fields.value(knob["name"].toString())) {
            field->show(knob.toObject());
        }
    }
}

void KnobForm::makeFields() {
    while (form->rowCount() > 0) {
        form->removeRow(0);
    }
    fields.clear();
    for (const QJsonValue one : std::as_const(knobs)) {
        QJsonObject knob = one.toObject();
        const QString label = letters.mark(KnobField::labelOf(knob));
        knob["marked_label"] = label;
        auto* field = new KnobField(knob, listener, this);
        fields[knob["name"].toString()] = field;
        auto* name = new QLabel(KnobField::labelsItself(knob) ? QString() : label, this);
        name->setBuddy(field->focusProxy());  // a field without a focus of its own gets no key
        name->setToolTip(field->toolTip());
        form->addRow(name, field);
    }
    orderFields();
}

/// Tab comes from what stands above the form, whenever the fields were made: new widgets come last by
/// themselves. What a field is made of moves with it.
void KnobForm::orderFields() {
    const auto takesTab = [](const QWidget& widget) { return (widget.focusPolicy() & Qt::TabFocus) != 0; };
    QWidget* last = previousInFocusChain();
    while (last != this && !takesTab(*last)) {
        last = last->previousInFocusChain();
    }
    for (const QJsonValue knob : std::as_const(knobs)) {
        KnobField* const field = fields.value(knob["name"].toString());
        if (field->focusProxy()) {
            setTabOrder(last, field);
            last = field;
        }
    }
}

QJsonObject KnobForm::values() const {
    QJsonObject values;
    for (const QJsonValue knob : knobs) {
        if (KnobField::hasValue(knob.toObject())) {
            values[knob["name"].toString()] = KnobField::valueText(knob.toObject());
        }
    }
    return values;
}

QStringList KnobForm::renderOptions() const {
    QStringList options;
    for (const QJsonValue knob : knobs) {
        if (KnobField::hasValue(knob.toObject())) {
            options << "--knob" << knob["name"].toString() + "=" + KnobField::valueText(knob.toObject());
        }
    }
    return options;
}

}  // namespace Corvel::Panel
