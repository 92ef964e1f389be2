#include "desktop/Appearance.h"

#include <QPalette>
#include <QSettings>
#include <QStyle>

namespace Morvane::Desktop {

namespace {

constexpr const char* key = "appearance";

QSettings settings() {
    return {QSettings::IniFormat, QSettings::UserScope, "corvel", "windows"};
}

QPalette paletteOf(const QColor& window, const QColor& base, const QColor& button, const QColor& text) {
    const QColor accent(70, 130, 200);
    QPalette palette(button, window);
    for (const auto role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
        palette.setColor(role, text);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::PlaceholderText, QColor(128, 128, 128));
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, accent);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(128, 128, 128));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(128, 128, 128));
    return palette;
}

QPalette darkPalette() {
    return paletteOf(QColor(46, 46, 48), QColor(30, 30, 32), QColor(62, 62, 66), QColor(224, 224, 224));
}

QPalette lightPalette() {
    return paletteOf(QColor(242, 242, 242), Qt::white, QColor(236, 236, 236), QColor(24, 24, 24));
}

}  // namespace

Appearance chosenAppearance() {
    const QString word = settings().value(key).toString();
    return word == "dark" ? Appearance::Dark : word == "light" ? Appearance::Light : Appearance::System;
}

void chooseAppearance(Appearance appearance) {
    settings().setValue(key, appearance == Appearance::Dark    ? "dark"
                             : appearance == Appearance::Light ? "light"
                                                               : "system");
}

void apply(Appearance appearance) {
    // One style everywhere: the system's own may paint its own colours over a chosen palette.
    QApplication::setStyle("Fusion");
    QApplication::setPalette(appearance == Appearance::Dark    ? darkPalette()
                             : appearance == Appearance::Light ? lightPalette()
                                                               : QPalette());
}

}  // namespace Morvane::Desktop
