#include "host/panel/PanelWindow.h"

#include <QComboBox>
#include <QFileInfo>
#include <QInputDialog>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSettings>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QSplitter>
#include <utility>

namespace Corvel::Panel {

namespace {

/// Of the labels and buttons that are always there.
constexpr const char* lettersInUse = "iomevdsrnl";
constexpr QSize firstSize(1080, 680);

QSettings settings() {
    return {QSettings::IniFormat, QSettings::UserScope, "corvel", "panel"};
}

// "shots/a.####.exr" becomes "shots/a.mov", and "shots/a.mov" becomes "shots/a-new.mov".
QString outputFor(const QString& input) {
    const QFileInfo file(input);
    const QString start = file.path() + "/" + file.fileName().section('.', 0, 0);
    const QString output = start + ".mov";
    return output == file.path() + "/" + file.fileName() ? start + "-new.mov" : output;
}

QString timeText(double seconds) {
    const int whole = static_cast<int>(seconds + 0.5);
    return QString("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QChar('0'));
}

QString sizeText(double bytes) {
    return QLocale::c().formattedDataSize(static_cast<qint64>(bytes), 1, QLocale::DataSizeSIFormat);
}

// What is null or empty is left out.
QString listed(const QJsonObject& object, const QStringList& keys) {
    QStringList parts;
    for (const QString& key : keys) {
        const QString text = object[key].toVariant().toString();
        if (!text.isEmpty()) {
            parts << key + " " + text;
        }
    }
    return parts.join(", ");
}

// Of an option that is given as one word, "--fit=inside".
QString valueOf(const QStringList& options, const QString& name) {
    const QStringList found = options.filter(QRegularExpression("^" + name + "="));
    return found.isEmpty() ? "" : found.last().section('=', 1);
}

// Of the frames that are shown: the format's own, "720x576:16/15"; square where pictures are scaled into one;
// else the input's.
double pixelAspect(const QStringList& options, double ofInput) {
    const QString format = valueOf(options, "--format");
    if (const QString given = format.section(':', 1); !given.isEmpty()) {
        const double divisor = given.contains('/') ? given.section('/', 1).toDouble() : 1;
        return given.section('/', 0, 0).toDouble() / divisor;
    }
    const bool scaled =
        QStringList{"inside", "fill", "stretch"}.contains(valueOf(options, "--fit").toLower());
    return !format.isEmpty() && scaled ? 1 : ofInput;
}

QString pictureText(const QJsonObject& object) {
    return QString("%1 × %2 pixels, %3 bits")
        .arg(object["width"].toInt())
        .arg(object["height"].toInt())
        .arg(object["bits"].toInt());
}

// Those of the options that say what to read of the input, which the node must know as well.
QStringList readOptions(const QStringList& options) {
    QStringList kept;
    for (const QString& option : options) {
        for (const char* name : {"--part=", "--layer=", "--stereo-view=", "--channels="}) {
            if (option.startsWith(name)) {
                kept << option;
            }
        }
    }
    return kept;
}

}  // namespace

PanelWindow::PanelWindow(const QString& wanted, QStringList pictures)
    : pictureOptions(std::move(pictures)),
      letters(lettersInUse),
      node({.state = [this](const QJsonObject& state) { showState(state); },
            .message = [this](const Message& message) { tell(message); },
            .died =
                [this] {
                    tell({"error", "the node has ended; a change starts a new one"});
                    left->setEnabled(true);
                    showBusiness("the node has ended");
                }},
           nullptr),
      rendering({.progress = [this](const QJsonObject& event) { showProgress(event); },
                 .message = [this](const Message& message) { tell(message); },
                 .end = [this](int exit, const QString& movie) { finishRender(exit, movie); }},
                nullptr),
      preview(
          [this](const QImage& image, const QString& failure) {
              picture->show(image, pixelAspect(pictureOptions, input.value("pixel_aspect").toDouble(1)));
              picture->say(failure);
          },
          nullptr) {
    makeWindow();
    resize(firstSize);
    const QSettings remembered = settings();
    restoreGeometry(remembered.value("geometry").toByteArray());
    splitter->restoreState(remembered.value("splitter").toByteArray());
    outputLine->setText(wanted.isEmpty() ? remembered.value("output").toString() : "");
    inputLine->setText(wanted.isEmpty() ? remembered.value("input").toString() : wanted);
    connect(inputLine, &QLineEdit::editingFinished, this, [this] {
        if (inputLine->isModified()) {
            inputLine->setModified(false);
            messages->clear();
            openInput();
        }
    });
    openInput();
}

PanelWindow::~PanelWindow() {
    endRuns(this);
    QSettings remembered = settings();
    remembered.setValue("geometry", saveGeometry());
    remembered.setValue("splitter", splitter->saveState());
    remember();
}

void PanelWindow::openInput() {
    QJsonObject knobs = form->values();
    if (knobs.isEmpty()) {
        knobs = QJsonDocument::fromJson(settings().value("knobs").toByteArray()).object();
    }
    showBusiness("opening");
    showInput({});
    picture->say(inputLine->text().isEmpty() ? "" : "…");
    node.start(inputLine->text(), readOptions(pictureOptions), knobs);
}

// A node that has died is replaced by one with the same knobs when a person wants something of it.
void PanelWindow::request(const QJsonObject& request) {
    if (!node.isThere()) {
        openInput();
    }
    node.request(request);
}

void PanelWindow::showState(const QJsonObject& state) {
    if (const QString error = state["error"].toString(); !error.isEmpty()) {
        tell({"error", error});
    }
    left->setEnabled(true);
    form->show(state["knobs"].toArray());
    showPresets(state["presets"].toArray());
    showInput(state["input"].toObject());
    remember();
    wantPreview();
    if (!rendering.isRunning()) {
        showBusiness(input.isEmpty() ? "no input" : QFileInfo(inputLine->text()).fileName());
    }
}

void PanelWindow::showInput(const QJsonObject& newInput) {
    const bool other = newInput["path"] != input.value("path");
    input = newInput;
    renderButton->setEnabled(!input.isEmpty() && !rendering.isRunning());
    if (!other) {
        return;
    }
    showFrames();
    facts->setText(input.isEmpty()
                       ? ""
                       : pictureText(input) + (input.value("alpha").toBool() ? " with alpha" : "") + "\n" +
                             listed(input, {"channels", "rate", "timecode", "reel"}) +
                             (pictureOptions.isEmpty() ? "" : "\n" + pictureOptions.join(" ")));
    picture->show({}, 1);
    if (!input.isEmpty()) {
        deriveOutput();
    }
}

void PanelWindow::showFrames() {
    const QSignalBlocker quietBox(frameBox);
    const QSignalBlocker quietSlider(frameSlider);
    const int first = input.value("first").toInt();
    const int last = input.value("last").toInt();
    frameBox->setRange(first, last);
    frameBox->setValue(first);
    frameSlider->setRange(first, last);
    frameSlider->setValue(first);
    frameBox->setEnabled(!input.isEmpty());
    frameSlider->setEnabled(!input.isEmpty());
    framesLine->setPlaceholderText(input.isEmpty() ? "all" : "all: " + input.value("frames").toString());
}

// What a person has written there stays.
void PanelWindow::deriveOutput() {
    if (outputLine->text().isEmpty() || outputLine->text() == derivedOutput) {
        derivedOutput = outputFor(inputLine->text());
        outputLine->setText(derivedOutput);
    }
}

void PanelWindow::showPresets(const QJsonArray& presets) {
    const QString current = presetList->currentText();
    const QSignalBlocker quiet(presetList);
    presetList->clear();
    for (const QJsonValue preset : presets) {
        presetList->addItem(preset["name"].toString(), !preset["shipped"].toBool());
        presetList->setItemData(presetList->count() - 1, preset["description"].toString(), Qt::ToolTipRole);
    }
    presetList->setCurrentIndex(presetList->findText(current));
    deleteButton->setEnabled(presetList->currentData().toBool());
}

void PanelWindow::press(const QString& knob) {
    request({{"do", "press"}, {"knob", knob}});
    left->setEnabled(false);
    showBusiness("settings dialog");
}

void PanelWindow::savePreset() {
    const QString name = QInputDialog::getText(this, "Save preset", "Name:");
    if (!name.isEmpty()) {
        request({{"do", "save"}, {"name", name}});
    }
}

void PanelWindow::deletePreset() {
    const QString name = presetList->currentText();
    if (QMessageBox::question(this, "Delete preset", QString("Delete the preset “%1”?").arg(name)) ==
        QMessageBox::Yes) {
        presetList->setCurrentIndex(-1);
        request({{"do", "delete"}, {"name", name}});
    }
}

void PanelWindow::wantPreview() {
    if (!input.isEmpty() && !rendering.isRunning()) {
        const QStringList frame{"--frame", QString::number(frameBox->value())};
        preview.encode(QStringList{input.value("path").toString()} + frame + form->renderOptions() +
                       pictureOptions);
    }
}

bool PanelWindow::mayReplace(const QString& path) {
    return QMessageBox::question(this, "Replace movie",
                                 QString("%1 exists already. Replace it?").arg(path)) == QMessageBox::Yes;
}

void PanelWindow::render() {
    const QString output = outputLine->text();
    QStringList arguments{input.value("path").toString(), "-o", output};
    if (QFileInfo::exists(output)) {
        if (!mayReplace(output)) {
            return;
        }
        arguments << "-y";
    }
    if (!framesLine->text().isEmpty()) {
        arguments << "--frames" << framesLine->text();
    }
    messages->clear();
    progress->setRange(0, 0);
    renderButton->setEnabled(false);
    cancelButton->setEnabled(true);
    showBusiness("rendering");
    rendering.start(arguments + form->renderOptions() + pictureOptions);
}

void PanelWindow::showProgress(const QJsonObject& event) {
    const int done = event["done"].toInt();
    const int total = event["total"].toInt();
    progress->setRange(0, total);
    progress->setValue(done);
    QString text = QString("%1 of %2").arg(done).arg(total);
    if (event["fps"].isDouble()) {
        text += QString(", %1 frames/s").arg(event["fps"].toDouble(), 0, 'f', 1);
    }
    if (event["seconds_left"].isDouble()) {
        text += ", " + timeText(event["seconds_left"].toDouble()) + " left";
    }
    progress->setFormat(text + ", " + sizeText(event["bytes"].toDouble()));
    showBusiness(QString("rendering %1 %").arg(total > 0 ? 100 * done / total : 0));
}

void PanelWindow::finishRender(int exit, const QString& movie) {
    constexpr int interrupted = 130;
    progress->setRange(0, 1);
    progress->setValue(exit == 0 ? 1 : 0);
    progress->setFormat(exit == 0 ? "done" : exit == interrupted ? "interrupted" : "failed");
    renderButton->setEnabled(!input.isEmpty());
    cancelButton->setEnabled(false);
    showBusiness(exit == 0             ? "wrote " + QFileInfo(movie).fileName()
                 : exit == interrupted ? "interrupted"
                                       : "the render failed");
    if (!movie.isEmpty()) {
        showMovie(movie);
    }
}

void PanelWindow::showMovie(const QString& movie) {
    preview.open(movie);
    runCorvel(this, {"info", movie, "--json"},
              [this, movie](bool done, const QByteArray& output, const QString&) {
                  const QJsonObject info = QJsonDocument::fromJson(output).object();
                  if (done) {
                      facts->setText(QFileInfo(movie).fileName() + ": " + info["codec"].toString() + ", " +
                                     pictureText(info) + ", " + sizeText(QFileInfo(movie).size()) + "\n" +
                                     listed(info, {"frames", "rate", "timecode", "reel"}));
                  }
              });
}

void PanelWindow::tell(const Message& message) {
    messages->appendPlainText((message.level == "warning" ? "Warning: " : "") + message.text);
    if (input.isEmpty() && message.level == "error") {
        picture->say(message.text);  // in place of the picture that could not be had
    }
}

void PanelWindow::showBusiness(const QString& what) {
    setWindowTitle("Corvel: " + what);
}

void PanelWindow::remember() {
    QSettings remembered = settings();
    remembered.setValue("input", inputLine->text());
    remembered.setValue("output", outputLine->text());
    if (const QJsonObject values = form->values(); !values.isEmpty()) {
        remembered.setValue("knobs", QJsonDocument(values).toJson(QJsonDocument::Compact));
    }
}

}  // namespace Corvel::Panel
