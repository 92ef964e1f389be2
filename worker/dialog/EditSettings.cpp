#include <QApplication>
#include <clocale>
#include <cstdlib>
#include <string>

#include "desktop/Appearance.h"
#include "desktop/DisplayServer.h"
#include "worker/dialog/DialogInterface.h"
#include "worker/dialog/SettingsWindow.h"

namespace Morvane::Worker {

namespace {

/// The windows' library reads the person's language and sets the whole process to it. Numbers in requests and
/// answers have a point everywhere.
class KeptLocale {
public:
    KeptLocale() : name(std::setlocale(LC_ALL, nullptr)) {}
    ~KeptLocale() { std::setlocale(LC_ALL, name.c_str()); }
    KeptLocale(const KeptLocale&) = delete;
    KeptLocale& operator=(const KeptLocale&) = delete;

private:
    const std::string name;
};

DialogOutcome runDialog(DialogState& state, const DialogModel& model) {
    const KeptLocale kept;
    int count = 1;
    char name[] = "corvel";
    char* arguments[] = {name, nullptr};
    setenv("QT_QPA_PLATFORM", "xcb", 0);
    QApplication application(count, arguments);
    std::setlocale(LC_NUMERIC, "C");
    Desktop::apply(Desktop::chosenAppearance());
    SettingsWindow window(state, model);
    if (model.isEnding() || window.exec() != QDialog::Accepted)
        return DialogOutcome::Cancelled;
    state = window.state();
    return DialogOutcome::Accepted;
}

}  // namespace

}  // namespace Morvane::Worker

extern "C" __attribute__((visibility("default"))) Morvane::Worker::DialogOutcome corvelEditSettings(
    Morvane::Worker::DialogState& state, const Morvane::Worker::DialogModel& model) {
    using namespace Morvane::Worker;
    return Morvane::Desktop::displayAnswers() ? runDialog(state, model) : DialogOutcome::NoDisplay;
}
