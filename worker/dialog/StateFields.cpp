#include "worker/dialog/StateFields.h"

#include <QLocale>
#include <QSignalBlocker>

namespace Morvane::Worker {

namespace {

constexpr const char* qualityNames[] = {"Min", "Low", "Normal", "High", "Max", "Lossless"};
constexpr double highestRate = 1000;
constexpr int mostFrames = 100000;

}  // namespace

StateFields::StateFields(DialogState& dialogState, QWidget* parent, const std::function<void()>& changed)
    : quality(new QComboBox(parent)),
      rate(new QDoubleSpinBox(parent)),
      keyFrames(new QSpinBox(parent)),
      state(dialogState) {
    for (const char* name : qualityNames)
        quality->addItem(name);
    quality->setToolTip("How much may be lost for a smaller movie.");
    rate->setLocale(QLocale::c());
    rate->setDecimals(3);
    rate->setRange(0.001, highestRate);
    rate->setToolTip("Frames a second. 23.976, 29.97 and their like are taken as 24000/1001 and so on.");
    keyFrames->setRange(0, mostFrames);
    keyFrames->setSpecialValueText("auto");
    keyFrames->setToolTip("Most frames from one key frame to the next. 1: every frame is one.");
    QObject::connect(quality, &QComboBox::currentIndexChanged, quality, [this, changed](int index) {
        state.quality = index;
        changed();
    });
    QObject::connect(rate, &QDoubleSpinBox::valueChanged, rate, [this, changed](double value) {
        state.framesPerSecond = static_cast<float>(value);
        changed();
    });
    QObject::connect(keyFrames, &QSpinBox::valueChanged, keyFrames, [this, changed](int value) {
        state.keyFrameRate = value;
        changed();
    });
}

void StateFields::show(const DialogCodec& codec) {
    const QSignalBlocker quietQuality(quality);
    const QSignalBlocker quietRate(rate);
    const QSignalBlocker quietKeyFrames(keyFrames);
    quality->setCurrentIndex(state.quality);
    for (std::size_t i = 0; i < codec.qualities.size(); ++i)
        quality->setItemData(static_cast<int>(i), QString::fromStdString(codec.qualities[i]),
                             Qt::ToolTipRole);
    rate->setValue(state.framesPerSecond);
    keyFrames->setValue(state.keyFrameRate);
}

}  // namespace Morvane::Worker
