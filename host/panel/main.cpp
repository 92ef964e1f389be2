#include <QApplication>
#include <cstdio>
#include <cstdlib>

#include "desktop/Appearance.h"
#include "desktop/DisplayServer.h"
#include "host/panel/PanelWindow.h"
#include "host/panel/QuitSignals.h"

int main(int argc, char** argv) {
    using namespace Morvane;
    // Who names a platform of the windows' library knows what they do.
    if (std::getenv("QT_QPA_PLATFORM") == nullptr) {
        if (!Desktop::displayAnswers()) {
            std::fputs("corvel: there is no display for the panel; `corvel render` needs none\n", stderr);
            return 2;
        }
        setenv("QT_QPA_PLATFORM", "xcb", 1);
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName("corvel");
    Desktop::apply(Desktop::chosenAppearance());
    QString input;
    QStringList pictureOptions;
    for (const QString& word : QApplication::arguments().mid(1)) {
        if (word.startsWith("--")) {
            pictureOptions << word;
        } else {
            input = word;
        }
    }
    Corvel::Panel::PanelWindow window(input, pictureOptions);
    window.show();
    const Corvel::Panel::QuitSignals quitSignals;
    return QApplication::exec();
}
