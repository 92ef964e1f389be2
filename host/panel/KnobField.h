#pragma once

#include <QJsonObject>
#include <QString>
#include <QWidget>
#include <functional>

namespace Corvel::Panel {

/// The field of one knob, made from its declaration alone: as `corvel knobs --json` has it.
class KnobField : public QWidget {
public:
    /// What a person does with a knob.
    struct Listener {
        std::function<void(const QString& knob, const QString& value)> set;
        std::function<void(const QString& knob)> press;
    };

    KnobField(const QJsonObject& knob, Listener listener, QWidget* parent);

    /// Shows another state of the same knob; tells nobody.
    void show(const QJsonObject& knob);

    /// The knob's value as `corvel render --knob NAME=VALUE` takes it.
    static QString valueText(const QJsonObject& knob);
    /// Whether the knob has a value; a button has none.
    static bool hasValue(const QJsonObject& knob);
    /// Whether the field says itself what it is, so that it needs no label beside it.
    static bool labelsItself(const QJsonObject& knob);
    static QString labelOf(const QJsonObject& knob);

private:
    void makeList(const QJsonObject& knob);
    void makeCheckbox(const QJsonObject& knob);
    void makeNumber(const QJsonObject& knob);
    void makeLine(const QJsonObject& knob, bool isFile);
    void makeButton(const QJsonObject& knob);
    void set(const QString& value);

    const QString name;
    const Listener listener;
    std::function<void(const QJsonObject&)> showValue;
};

}  // namespace Corvel::Panel
