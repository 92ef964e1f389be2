#pragma once

#include <QJsonArray>
#include <QMap>
#include <QWidget>

#include "host/panel/KnobField.h"

class QFormLayout;

namespace Morvane::Desktop {
class Mnemonics;
}

namespace Corvel::Panel {

/// A field for every knob of a node, in the order of their declaration.
class KnobForm : public QWidget {
public:
    /// `letters` are those that the window has left.
    KnobForm(KnobField::Listener listener, Morvane::Desktop::Mnemonics& letters, QWidget* parent);

    /// Shows these knobs; fields are made when they are other ones than before.
    void show(const QJsonArray& knobs);

    /// The values that there are, by name.
    QJsonObject values() const;
    /// The same as options of `corvel render`.
    QStringList renderOptions() const;

private:
    void makeFields();
    void orderFields();

    const KnobField::Listener listener;
    Morvane::Desktop::Mnemonics& letters;
    QFormLayout* form;
    QJsonArray knobs;
    QMap<QString, KnobField*> fields;
};

}  // namespace Corvel::Panel
