#pragma once

#include <QJsonObject>
#include <QWidget>

#include "desktop/Mnemonics.h"
#include "host/panel/KnobForm.h"
#include "host/panel/NodeProcess.h"
#include "host/panel/PictureView.h"
#include "host/panel/Preview.h"
#include "host/panel/RenderProcess.h"

class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;
class QSlider;
class QSpinBox;
class QSplitter;
class QVBoxLayout;

namespace Corvel::Panel {

/// The Write node's panel: what goes in and out, every knob, the frame as it will be encoded, the render and
/// what came of it. Everything that takes time happens in other processes.
class PanelWindow : public QWidget {
public:
    /// `input` may be empty: the one of last time then. `pictures` are options of `corvel render` for every
    /// frame that is shown or rendered, each with its value in one word.
    PanelWindow(const QString& input, QStringList pictures);
    ~PanelWindow() override;

private:
    // Making the window, in PanelLayout.cpp.
    void makeWindow();
    QWidget* makeLeft();
    QWidget* makeRight();
    void makeFileRow(QFormLayout& form, const QString& label, QLineEdit& line, bool isOutput);
    void makePresetRow(QFormLayout& form);
    void makeFrameRow(QVBoxLayout& column);
    void makeRenderRow(QVBoxLayout& column);
    void chooseFile(QLineEdit& line, bool isOutput);

    // What happens, in PanelWindow.cpp.
    void openInput();
    void request(const QJsonObject& request);
    void showState(const QJsonObject& state);
    void showInput(const QJsonObject& newInput);
    void showFrames();
    void deriveOutput();
    void showPresets(const QJsonArray& presets);
    void press(const QString& knob);
    void savePreset();
    void deletePreset();
    void wantPreview();
    void render();
    bool mayReplace(const QString& path);
    void showProgress(const QJsonObject& event);
    void finishRender(int exit, const QString& movie);
    void showMovie(const QString& movie);
    void tell(const Message& message);
    void showBusiness(const QString& what);
    void remember();

    const QStringList pictureOptions;
    Morvane::Desktop::Mnemonics letters;
    QLineEdit* inputLine = nullptr;
    QLineEdit* outputLine = nullptr;
    QLineEdit* framesLine = nullptr;
    QComboBox* presetList = nullptr;
    QPushButton* deleteButton = nullptr;
    QWidget* left = nullptr;
    QSplitter* splitter = nullptr;
    KnobForm* form = nullptr;
    PictureView* picture = nullptr;
    QSlider* frameSlider = nullptr;
    QSpinBox* frameBox = nullptr;
    QLabel* facts = nullptr;
    QPlainTextEdit* messages = nullptr;
    QProgressBar* progress = nullptr;
    QPushButton* renderButton = nullptr;
    QPushButton* cancelButton = nullptr;

    QJsonObject input;      ///< what the node says of it; empty where there is none
    QString derivedOutput;  ///< what the output became when an input was opened
    NodeProcess node;
    RenderProcess rendering;
    Preview preview;
};

}  // namespace Corvel::Panel
