#include "worker/dialog/SettingsWindow.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <chrono>

#include "desktop/Mnemonics.h"

namespace Morvane::Worker {

namespace {

using namespace std::chrono_literals;
using Desktop::Mnemonics;

constexpr auto endingLook = 100ms;
constexpr const char* groupTitles[] = {"Codec", "Quality and rate", "Colour", "Advanced"};
/// Letters of the buttons, and of the codec list above the groups.
constexpr const char* buttonLetters = "ocrdc";

QLabel* hintLabel(const std::string& text, QWidget* parent) {
    auto* label = new QLabel(QString::fromStdString(text), parent);
    label->setEnabled(false);
    return label;
}

QString sizeText(double bytes) {
    const char* units[] = {"kB", "MB", "GB", "TB"};
    double value = bytes / 1000;
    int unit = 0;
    for (; value >= 1000 && unit < 3; ++unit)
        value /= 1000;
    return QString("%1 %2").arg(value, 0, 'g', 2).arg(units[unit]);
}

}  // namespace

/// The four groups while they are filled.
struct SettingsWindow::Groups {
    std::array<QGroupBox*, 4> boxes{};
    std::array<QGridLayout*, 4> grids{};

    /// Label, field and hint below the others of the group.
    void addRow(DialogControl::Group group, const QString& label, QWidget* field, const std::string& hint) {
        const auto place = static_cast<std::size_t>(group);
        QGridLayout* grid = grids[place];
        auto* name = new QLabel(label, boxes[place]);
        name->setBuddy(field);
        const int row = grid->rowCount();
        grid->addWidget(name, row, 0);
        grid->addWidget(field, row, 1);
        grid->addWidget(hintLabel(hint, boxes[place]), row, 2);
    }
};

SettingsWindow::SettingsWindow(const DialogState& state, const DialogModel& dialogModel)
    : model(dialogModel),
      first(state),
      current(state),
      measurer(model, [this](const DialogState& measured, std::optional<double> bytes) {
          // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks): the library keeps the call and frees it.
          QMetaObject::invokeMethod(
              this, [this, measured, bytes] { showSize(measured, bytes); }, Qt::QueuedConnection);
      }) {
    new QVBoxLayout(this);
    makeCodecList();
    area = new QScrollArea(this);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    layout()->addWidget(area);
    makeAnswer();
    makeButtons();
    showCodec();
    auto* look = new QTimer(this);
    connect(look, &QTimer::timeout, this, [this] {
        if (model.isEnding())
            reject();
    });
    look->start(endingLook);
}

SettingsWindow::~SettingsWindow() = default;

void SettingsWindow::makeCodecList() {
    codecList = new QComboBox(this);
    for (const std::string& name : model.codecs())
        codecList->addItem(QString::fromStdString(name));
    codecList->setCurrentIndex(current.codec);
    codecList->setAccessibleName("Codec");
    codecList->setMaxVisibleItems(24);
    auto* label = new QLabel("&Codec", this);
    label->setBuddy(codecList);
    facts = new QLabel(this);
    facts->setEnabled(false);
    facts->setWordWrap(true);
    facts->setMinimumWidth(20 * fontMetrics().averageCharWidth());
    auto* row = new QHBoxLayout;
    row->addWidget(label);
    row->addWidget(codecList);
    row->addWidget(facts, 1);
    static_cast<QVBoxLayout*>(layout())->addLayout(row);
    connect(codecList, &QComboBox::currentIndexChanged, this, [this](int index) { chooseCodec(index); });
}

void SettingsWindow::makeAnswer() {
    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    layout()->addWidget(line);
    summary = new QLabel(this);
    summary->setWordWrap(true);
    summary->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // As high as three lines, so that the fields do not jump when a sentence takes the summary's place.
    summary->setMinimumHeight(3 * fontMetrics().lineSpacing());
    summary->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    size = new QLabel(this);
    layout()->addWidget(summary);
    layout()->addWidget(size);
}

void SettingsWindow::makeButtons() {
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel |
                                             QDialogButtonBox::Reset | QDialogButtonBox::RestoreDefaults,
                                         this);
    acceptButton = buttons->button(QDialogButtonBox::Ok);
    acceptButton->setText("&OK");
    buttons->button(QDialogButtonBox::Cancel)->setText("Cancel");
    QPushButton* reset = buttons->button(QDialogButtonBox::Reset);
    reset->setText("&Reset");
    reset->setToolTip("Everything as it was when this window opened");
    QPushButton* defaults = buttons->button(QDialogButtonBox::RestoreDefaults);
    defaults->setText("&Defaults");
    defaults->setToolTip("The codec's settings as it has them by itself");
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(reset, &QPushButton::clicked, this, [this] { startAgain(first); });
    connect(defaults, &QPushButton::clicked, this, [this] {
        DialogState state = current;
        state.settings.clear();
        startAgain(state);
    });
    for (QAbstractButton* button : buttons->buttons())
        button->setIcon(QIcon());
    layout()->addWidget(buttons);
}

void SettingsWindow::startAgain(const DialogState& state) {
    current = state;
    const QSignalBlocker quiet(codecList);
    codecList->setCurrentIndex(current.codec);
    showCodec();
}

void SettingsWindow::chooseCodec(int index) {
    settingsByCodec[current.codec] = current.settings;
    current.codec = index;
    // Settings made for one codec mean nothing to another; who comes back finds theirs again.
    current.settings = settingsByCodec[index];
    showCodec();
}

void SettingsWindow::showCodec() {
    codec = model.codec(current.codec);
    facts->setText(QString::fromStdString(codec.facts));
    fields.clear();
    stateFields.reset();
    QWidget* groups = makeGroups();
    area->setWidget(groups);
    const QSize wanted = groups->sizeHint();
    area->setMinimumWidth(wanted.width() + area->verticalScrollBar()->sizeHint().width());
    // All of it where the screen has room, else what is left of it.
    area->setMinimumHeight(std::min(wanted.height(), screen()->availableSize().height() / 2));
    stateFields->show(codec);
    showAnswer();
    setTabOrder(codecList, groups->findChild<QWidget*>());
}

QWidget* SettingsWindow::makeGroups() {
    auto* content = new QWidget(area);
    auto* columns = new QHBoxLayout(content);
    columns->setContentsMargins(0, 0, 0, 0);
    Groups groups;
    QVBoxLayout* sides[] = {new QVBoxLayout, new QVBoxLayout};
    for (std::size_t i = 0; i < groups.boxes.size(); ++i) {
        groups.boxes[i] = new QGroupBox(groupTitles[i], content);
        groups.grids[i] = new QGridLayout(groups.boxes[i]);
        groups.grids[i]->setColumnStretch(1, 1);
        sides[i / 2]->addWidget(groups.boxes[i]);
    }
    for (QVBoxLayout* side : sides) {
        side->addStretch();
        columns->addLayout(side, 1);
    }
    Mnemonics letters(buttonLetters);
    addStateFields(groups, letters);
    addControls(groups, letters);
    for (std::size_t i = 0; i < groups.boxes.size(); ++i)
        groups.boxes[i]->setVisible(!groups.grids[i]->isEmpty());
    return content;
}

void SettingsWindow::addStateFields(Groups& groups, Mnemonics& letters) {
    constexpr auto group = DialogControl::Group::Quality;
    stateFields = std::make_unique<StateFields>(current, groups.boxes[static_cast<std::size_t>(group)],
                                                [this] { showAnswer(); });
    const auto add = [&](bool wanted, const char* label, QWidget* field, const char* hint) {
        field->setVisible(wanted);
        field->setAccessibleName(label);
        if (wanted)
            groups.addRow(group, letters.mark(label), field, hint);
    };
    add(!codec.qualities.empty(), "Quality", stateFields->quality, "default Max");
    add(true, "Frame rate", stateFields->rate, "frames a second");
    add(codec.keyFrames, "Key frame every", stateFields->keyFrames, "frames, 1: all");
}

void SettingsWindow::addControls(Groups& groups, Mnemonics& letters) {
    for (const DialogControl& control : codec.controls) {
        QGroupBox* box = groups.boxes[static_cast<std::size_t>(control.group)];
        const std::string key = control.key;
        fields.push_back(std::make_unique<ControlField>(
            control, box, [this, key](const std::string& value) { change(key, value); }));
        groups.addRow(control.group, letters.mark(QString::fromStdString(control.label)),
                      fields.back()->widget(), ControlField::hint(control));
    }
}

void SettingsWindow::change(const std::string& key, const std::string& value) {
    current.settings = model.withValue(current, key, value);
    showAnswer();
}

void SettingsWindow::showAnswer() {
    const DialogAnswer answer = model.check(current);
    setWindowTitle("QuickTime settings: " + codecList->currentText() + "[*]");
    setWindowModified(!(current == first));
    acceptButton->setEnabled(answer.problem.empty());
    if (!answer.problem.empty()) {
        summary->setText(QString("<b>This does not work:</b> %1")
                             .arg(QString::fromStdString(answer.problem).toHtmlEscaped()));
        size->setText(" ");
        return;
    }
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const auto value = answer.values.find(codec.controls[i].key);
        fields[i]->show(value == answer.values.end() ? "" : value->second);
    }
    summary->setText(QString::fromStdString(answer.summary));
    size->setText("About … a minute");
    measurer.measure(current);
}

void SettingsWindow::showSize(const DialogState& measured, std::optional<double> bytes) {
    if (!(measured == current))
        return;  // changed since
    size->setText(bytes ? "About " + sizeText(*bytes) + " a minute, without sound"
                        : QString("The size can't be told"));
}

}  // namespace Morvane::Worker
