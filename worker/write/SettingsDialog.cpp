#include "worker/write/SettingsDialog.h"

#include <dlfcn.h>

#include <cstdlib>
#include <string>

#include "worker/FailureReport.h"

namespace Morvane::Worker {

namespace {

constexpr const char* unchanged = ": the settings stay as they are";

/// Beside the worker's program, which names its own folder as a place of libraries.
EditSettings loadDialog() {
    void* library = dlopen(dialogLibraryName, RTLD_NOW | RTLD_LOCAL);
    void* function = library ? dlsym(library, editSettingsSymbol) : nullptr;
    if (!function)
        reportRemark(std::string("cannot load the settings dialog: ") + dlerror() + unchanged);
    return reinterpret_cast<EditSettings>(function);
}

bool isDisplayNamed() {
    const char* display = std::getenv("DISPLAY");
    return display && *display;
}

void reportNoDisplay() {
    reportRemark(std::string("no display for the settings dialog") + unchanged);
}

}  // namespace

void editInDialog(DialogState& state, const DialogModel& model) {
    if (!isDisplayNamed())
        return reportNoDisplay();
    static const EditSettings edit = loadDialog();
    if (edit && edit(state, model) == DialogOutcome::NoDisplay)
        reportNoDisplay();
}

}  // namespace Morvane::Worker
