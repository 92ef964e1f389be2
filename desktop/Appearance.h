#pragma once

#include <QApplication>

namespace Morvane::Desktop {

/// What a person wants windows to look like.
enum class Appearance { System, Light, Dark };

/// The person's choice, which all windows share: "appearance" in corvel/windows.ini of the configuration
/// folder. System where nothing was chosen.
Appearance chosenAppearance();
void chooseAppearance(Appearance appearance);

/// Gives all windows of the application, also those that are open, that look. An application must be there.
void apply(Appearance appearance);

}  // namespace Morvane::Desktop
