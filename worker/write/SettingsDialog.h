#pragma once

#include "worker/dialog/DialogInterface.h"

namespace Morvane::Worker {

/// Lets a person change `state` and answers when they have closed the dialog; a person who cancels changes
/// nothing. Without a display it answers at once, `state` unchanged, with a line on standard error.
///
/// The dialog's library, and with it the windows' library, is loaded here, so that a worker whose settings
/// nobody opens needs neither. It is not unloaded again.
void editInDialog(DialogState& state, const DialogModel& model);

}  // namespace Morvane::Worker
