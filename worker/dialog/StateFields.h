#pragma once

#include <QComboBox>
#include <QDoubleSpinBox>
#include <QSpinBox>
#include <functional>

#include "worker/dialog/DialogInterface.h"

namespace Morvane::Worker {

/// The fields of what is no settings key but a value of its own: quality, frame rate, key frames.
class StateFields {
public:
    /// Changes `state`, which outlives the fields, and tells `changed`.
    StateFields(DialogState& state, QWidget* parent, const std::function<void()>& changed);

    /// Takes the state and what the codec makes of the qualities.
    void show(const DialogCodec& codec);

    QComboBox* const quality;
    QDoubleSpinBox* const rate;
    QSpinBox* const keyFrames;

private:
    DialogState& state;
};

}  // namespace Morvane::Worker
