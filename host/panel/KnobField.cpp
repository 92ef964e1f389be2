#include "host/panel/KnobField.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QJsonArray>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <cmath>
#include <utility>

#include "Kex/Image/Knob.h"

namespace Corvel::Panel {

namespace {

constexpr int decimals = 3;
constexpr double wholeRange = 1e9;  // of a number whose slider is no limit
constexpr int sliderSteps = 1000;

int kindOf(const QJsonObject& knob) {
    return knob["kind"].toInt();
}

// "ap4h TAB ProRes 4444" is a name with a code before it.
QString entryText(const QString& entry) {
    const qsizetype tab = entry.indexOf('\t');
    return tab < 0 ? entry : entry.mid(tab + 1);
}

QString numberText(double value) {
    return QString::number(value, 'g', 9);
}

// Without the zeros that nobody asked for.
class NumberBox : public QDoubleSpinBox {
public:
    using QDoubleSpinBox::QDoubleSpinBox;
    QString textFromValue(double value) const override { return numberText(value); }
};

}  // namespace

KnobField::KnobField(const QJsonObject& knob, Listener told, QWidget* parent)
    : QWidget(parent), name(knob["name"].toString()), listener(std::move(told)) {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    switch (kindOf(knob)) {
        case Kex::Image::Knob_Enumeration:
            makeList(knob);
            break;
        case Kex::Image::Knob_Checkbox:
            makeCheckbox(knob);
            break;
        case Kex::Image::Knob_Int:
        case Kex::Image::Knob_Float:
            makeNumber(knob);
            break;
        case Kex::Image::Knob_Button:
            makeButton(knob);
            break;
        default:
            makeLine(knob, kindOf(knob) == Kex::Image::Knob_File);
    }
    const QString tip = knob["tooltip"].toString();
    const bool byDialog = (knob["flags"].toInt() & Kex::Image::Flag_SetByDialog) != 0;
    setToolTip(tip + (byDialog ? QString(tip.isEmpty() ? "" : "\n") + "A dialog of the node's sets it, too."
                               : QString()));
    setFocusProxy(layout()->itemAt(0)->widget());
    setFocusPolicy(focusProxy()->focusPolicy());  // or it could not be put into the order of Tab
    focusProxy()->setAccessibleName(labelOf(knob));
    show(knob);
}

void KnobField::show(const QJsonObject& knob) {
    if (showValue) {
        showValue(knob);
    }
}

void KnobField::set(const QString& value) {
    listener.set(name, value);
}

QString KnobField::valueText(const QJsonObject& knob) {
    const QJsonValue value = knob["value"];
    if (value.isBool()) {
        return value.toBool() ? "on" : "off";
    }
    return value.isDouble() ? numberText(value.toDouble()) : value.toString();
}

bool KnobField::hasValue(const QJsonObject& knob) {
    return kindOf(knob) != Kex::Image::Knob_Button;
}

bool KnobField::labelsItself(const QJsonObject& knob) {
    return kindOf(knob) == Kex::Image::Knob_Button || kindOf(knob) == Kex::Image::Knob_Checkbox;
}

QString KnobField::labelOf(const QJsonObject& knob) {
    const QString label = knob["label"].toString();
    return label.isEmpty() ? knob["name"].toString() : label.left(1).toUpper() + label.mid(1);
}

void KnobField::makeList(const QJsonObject& knob) {
    auto* list = new QComboBox(this);
    for (const QJsonValue entry : knob["entries"].toArray()) {
        list->addItem(entryText(entry.toString()));
    }
    list->setMaxVisibleItems(24);
    layout()->addWidget(list);
    static_cast<QHBoxLayout*>(layout())->addStretch();
    connect(list, &QComboBox::currentIndexChanged, this, [this](int index) { set(QString::number(index)); });
    showValue = [list](const QJsonObject& shown) {
        const QSignalBlocker quiet(list);
        list->setCurrentIndex(shown["value"].toInt());
    };
}

void KnobField::makeCheckbox(const QJsonObject& knob) {
    auto* box = new QCheckBox(knob["marked_label"].toString(labelOf(knob)), this);
    layout()->addWidget(box);
    connect(box, &QCheckBox::toggled, this, [this](bool on) { set(on ? "on" : "off"); });
    showValue = [box](const QJsonObject& shown) {
        const QSignalBlocker quiet(box);
        box->setChecked(shown["value"].toBool());
    };
}

void KnobField::makeNumber(const QJsonObject& knob) {
    const bool whole = kindOf(knob) == Kex::Image::Knob_Int;
    const bool wholeSlider = whole || (knob["flags"].toInt() & Kex::Image::Flag_WholeNumberSlider) != 0;
    const bool hasSlider = knob["min"].isDouble() && knob["max"].isDouble();
    const double low = knob["min"].toDouble();
    const double high = knob["max"].toDouble();
    const double step = wholeSlider ? 1 : (high - low) / sliderSteps;
    auto* box = new NumberBox(this);
    box->setLocale(QLocale::c());
    box->setDecimals(whole ? 0 : decimals);
    box->setRange(-wholeRange, wholeRange);
    box->setSingleStep(wholeSlider || !hasSlider ? 1 : step);
    box->setKeyboardTracking(false);
    box->setMaximumWidth(14 * fontMetrics().averageCharWidth());
    layout()->addWidget(box);
    QSlider* slider = nullptr;
    if (hasSlider && high > low) {
        slider = new QSlider(Qt::Horizontal, this);
        slider->setRange(0, static_cast<int>(std::lround((high - low) / step)));
        slider->setFocusPolicy(Qt::NoFocus);  // the number beside it takes the keys
        layout()->addWidget(slider);
        connect(slider, &QSlider::valueChanged, box,
                [box, low, step](int position) { box->setValue(low + position * step); });
    } else {
        static_cast<QHBoxLayout*>(layout())->addStretch();
    }
    connect(box, &QDoubleSpinBox::valueChanged, this, [this](double value) { set(numberText(value)); });
    showValue = [box, slider, low, step](const QJsonObject& shown) {
        const double value = shown["value"].toDouble();
        const QSignalBlocker quiet(box);
        box->setValue(value);
        if (slider != nullptr) {
            const QSignalBlocker quietSlider(slider);
            slider->setValue(static_cast<int>(std::lround((value - low) / step)));
        }
    };
}

void KnobField::makeLine(const QJsonObject& knob, bool isFile) {
    auto* line = new QLineEdit(this);
    layout()->addWidget(line);
    connect(line, &QLineEdit::editingFinished, this, [this, line] {
        if (line->isModified()) {
            line->setModified(false);
            set(line->text());
        }
    });
    if (isFile) {
        auto* button = new QPushButton("…", this);
        button->setAccessibleName("Choose " + labelOf(knob));
        button->setMaximumWidth(3 * button->fontMetrics().height());
        layout()->addWidget(button);
        connect(button, &QPushButton::clicked, this, [this, line, title = labelOf(knob)] {
            const QString path = QFileDialog::getOpenFileName(this, title, line->text());
            if (!path.isEmpty()) {
                set(path);
            }
        });
    }
    showValue = [line](const QJsonObject& shown) {
        // Not while somebody writes there.
        if (!line->isModified() && line->text() != shown["value"].toString()) {
            line->setText(shown["value"].toString());
            line->setCursorPosition(0);
        }
    };
}

void KnobField::makeButton(const QJsonObject& knob) {
    auto* button = new QPushButton(knob["marked_label"].toString(labelOf(knob)), this);
    layout()->addWidget(button);
    static_cast<QHBoxLayout*>(layout())->addStretch();
    connect(button, &QPushButton::clicked, this, [this] { listener.press(name); });
}

}  // namespace Corvel::Panel
