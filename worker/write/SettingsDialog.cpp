#include "worker/write/SettingsDialog.h"

#include "worker/FailureReport.h"

namespace Morvane::Worker {

void editInDialog(DialogState&) {
    reportRemark("no display for the settings dialog: the settings stay as they are");
}

}  // namespace Morvane::Worker
