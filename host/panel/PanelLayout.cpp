#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QSlider>
#include <QSpinBox>
#include <QSplitter>
#include <QVBoxLayout>

#include "desktop/Appearance.h"
#include "host/panel/PanelWindow.h"

namespace Corvel::Panel {

namespace {

using Morvane::Desktop::Appearance;

QComboBox* makeAppearanceList(QWidget* parent) {
    auto* list = new QComboBox(parent);
    list->addItems({"System", "Light", "Dark"});
    list->setCurrentIndex(static_cast<int>(Morvane::Desktop::chosenAppearance()));
    list->setToolTip("What windows look like, also the settings dialog");
    QObject::connect(list, &QComboBox::currentIndexChanged, list, [](int index) {
        Morvane::Desktop::chooseAppearance(static_cast<Appearance>(index));
        Morvane::Desktop::apply(static_cast<Appearance>(index));
    });
    return list;
}

}  // namespace

void PanelWindow::makeWindow() {
    splitter = new QSplitter(Qt::Horizontal, this);
    left = makeLeft();
    splitter->addWidget(left);
    splitter->addWidget(makeRight());
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setChildrenCollapsible(false);
    splitter->setHandleWidth(10);
    auto* column = new QVBoxLayout(this);
    column->addWidget(splitter, 1);
    makeRenderRow(*column);
    // In less room, lines that are broken would take the picture's.
    setMinimumHeight(27 * fontMetrics().height());
}

QWidget* PanelWindow::makeLeft() {
    auto* side = new QWidget(this);
    auto* column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    auto* rows = new QFormLayout;
    inputLine = new QLineEdit(side);
    inputLine->setPlaceholderText("shot.####.exr, a still or a movie");
    makeFileRow(*rows, "&Input", *inputLine, false);  // at once: Tab follows the order of making
    outputLine = new QLineEdit(side);
    outputLine->setPlaceholderText("shot.mov");
    makeFileRow(*rows, "&Output", *outputLine, true);
    framesLine = new QLineEdit(side);
    framesLine->setPlaceholderText("all");
    framesLine->setToolTip("1001-1100, 1-99x2, 1,5,10-20; empty: all");
    rows->addRow("Fra&mes", framesLine);
    makePresetRow(*rows);
    column->addLayout(rows);
    auto* area = new QScrollArea(side);
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    form = new KnobForm({.set =
                             [this](const QString& knob, const QString& value) {
                                 request({{"do", "set"}, {"knob", knob}, {"value", value}});
                             },
                         .press = [this](const QString& knob) { press(knob); }},
                        letters, area);
    area->setWidget(form);
    column->addWidget(area, 1);
    side->setMinimumWidth(44 * fontMetrics().averageCharWidth());
    return side;
}

void PanelWindow::makeFileRow(QFormLayout& rows, const QString& label, QLineEdit& line, bool isOutput) {
    auto* button = new QPushButton("…", line.parentWidget());
    button->setMaximumWidth(3 * button->fontMetrics().height());
    button->setAccessibleName(isOutput ? "Choose the output" : "Choose the input");
    connect(button, &QPushButton::clicked, this, [this, &line, isOutput] { chooseFile(line, isOutput); });
    auto* row = new QHBoxLayout;
    row->addWidget(&line, 1);
    row->addWidget(button);
    auto* name = new QLabel(label, this);
    name->setBuddy(&line);
    rows.addRow(name, row);
}

void PanelWindow::chooseFile(QLineEdit& line, bool isOutput) {
    const QString path = isOutput
                             ? QFileDialog::getSaveFileName(this, "Output", line.text(), "Movies (*.mov)")
                             : QFileDialog::getOpenFileName(this, "Input", line.text());
    if (path.isEmpty()) {
        return;
    }
    line.setText(path);
    if (!isOutput) {
        messages->clear();
        openInput();
    }
}

void PanelWindow::makePresetRow(QFormLayout& rows) {
    presetList = new QComboBox(this);
    presetList->setPlaceholderText("choose …");
    connect(presetList, &QComboBox::activated, this, [this] {
        request({{"do", "preset"}, {"name", presetList->currentText()}});
        deleteButton->setEnabled(presetList->currentData().toBool());
    });
    auto* saveButton = new QPushButton("Sa&ve …", this);
    saveButton->setToolTip("Keep all knobs under a name");
    connect(saveButton, &QPushButton::clicked, this, [this] { savePreset(); });
    deleteButton = new QPushButton("&Delete", this);
    deleteButton->setEnabled(false);
    connect(deleteButton, &QPushButton::clicked, this, [this] { deletePreset(); });
    auto* row = new QHBoxLayout;
    row->addWidget(presetList, 1);
    row->addWidget(saveButton);
    row->addWidget(deleteButton);
    auto* name = new QLabel("Pr&eset", this);
    name->setBuddy(presetList);
    rows.addRow(name, row);
}

QWidget* PanelWindow::makeRight() {
    auto* side = new QWidget(this);
    auto* column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    picture = new PictureView(side);
    picture->setAccessibleName("The frame as it will be encoded");
    column->addWidget(picture, 1);
    makeFrameRow(*column);
    facts = new QLabel(side);
    facts->setWordWrap(true);
    facts->setTextInteractionFlags(Qt::TextSelectableByMouse);
    column->addWidget(facts);
    messages = new QPlainTextEdit(side);
    messages->setReadOnly(true);
    messages->setTabChangesFocus(true);
    messages->setPlaceholderText("Messages of the node");
    messages->setAccessibleName("Messages of the node");
    messages->setMaximumBlockCount(500);
    messages->setFixedHeight(6 * fontMetrics().lineSpacing());
    column->addWidget(messages);
    return side;
}

void PanelWindow::makeFrameRow(QVBoxLayout& column) {
    frameSlider = new QSlider(Qt::Horizontal, this);
    frameSlider->setFocusPolicy(Qt::NoFocus);
    frameSlider->setTracking(false);
    frameBox = new QSpinBox(this);
    frameBox->setKeyboardTracking(false);
    frameBox->setRange(0, 0);
    connect(frameSlider, &QSlider::valueChanged, frameBox, &QSpinBox::setValue);
    connect(frameBox, &QSpinBox::valueChanged, this, [this](int frame) {
        frameSlider->setValue(frame);
        wantPreview();
    });
    auto* name = new QLabel("Frame &shown", this);
    name->setBuddy(frameBox);
    auto* row = new QHBoxLayout;
    row->addWidget(name);
    row->addWidget(frameSlider, 1);
    row->addWidget(frameBox);
    column.addLayout(row);
}

void PanelWindow::makeRenderRow(QVBoxLayout& column) {
    progress = new QProgressBar(this);
    progress->setRange(0, 1);
    progress->setValue(0);
    progress->setFormat("");
    progress->setAccessibleName("Progress");
    renderButton = new QPushButton("&Render", this);
    cancelButton = new QPushButton("Ca&ncel", this);
    cancelButton->setToolTip("Ends after the frame that is being written and keeps the movie so far");
    cancelButton->setEnabled(false);
    connect(renderButton, &QPushButton::clicked, this, [this] { render(); });
    connect(cancelButton, &QPushButton::clicked, this, [this] { rendering.cancel(); });
    auto* look = makeAppearanceList(this);
    auto* name = new QLabel("&Look", this);
    name->setBuddy(look);
    auto* row = new QHBoxLayout;
    row->addWidget(name);
    row->addWidget(look);
    row->addWidget(progress, 1);
    row->addWidget(renderButton);
    row->addWidget(cancelButton);
    column.addLayout(row);
}

}  // namespace Corvel::Panel
