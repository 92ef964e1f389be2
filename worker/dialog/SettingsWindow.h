#pragma once

#include <QDialog>
#include <QLabel>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "worker/dialog/ControlField.h"
#include "worker/dialog/DialogInterface.h"
#include "worker/dialog/SizeMeasurer.h"
#include "worker/dialog/StateFields.h"

class QComboBox;
class QPushButton;
class QScrollArea;

namespace Morvane::Desktop {
class Mnemonics;
}

namespace Morvane::Worker {

/// The settings dialog: the codec, a field for each of its settings in four groups, what they come to in
/// plain words, and about how large a minute becomes.
class SettingsWindow : public QDialog {
public:
    SettingsWindow(const DialogState& state, const DialogModel& model);
    ~SettingsWindow() override;

    /// What the person has made of it.
    const DialogState& state() const { return current; }

private:
    struct Groups;

    void makeCodecList();
    void makeAnswer();
    void makeButtons();
    void chooseCodec(int index);
    void showCodec();
    QWidget* makeGroups();
    void addControls(Groups& groups, Desktop::Mnemonics& letters);
    void addStateFields(Groups& groups, Desktop::Mnemonics& letters);
    void change(const std::string& key, const std::string& value);
    void showAnswer();
    void showSize(const DialogState& measured, std::optional<double> bytes);
    void startAgain(const DialogState& state);

    const DialogModel& model;
    const DialogState first;
    DialogState current;
    DialogCodec codec;
    std::map<std::int32_t, std::string> settingsByCodec;  ///< what was made for each codec that was left
    std::vector<std::unique_ptr<ControlField>> fields;    ///< one a control of `codec`
    std::unique_ptr<StateFields> stateFields;
    QComboBox* codecList = nullptr;
    QLabel* facts = nullptr;
    QScrollArea* area = nullptr;
    QLabel* summary = nullptr;
    QLabel* size = nullptr;
    QPushButton* acceptButton = nullptr;
    SizeMeasurer measurer;  ///< last: it is gone before what it tells
};

}  // namespace Morvane::Worker
