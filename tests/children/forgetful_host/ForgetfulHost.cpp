// A host that never destroys its node: it loads the plug-in, makes a writer, unloads the plug-in and ends on
// the spot, so that only the unloading can have stopped the worker.
//
// Usage: forgetful_host PLUGIN OUTPUT. Ends with 0 when the plug-in was really unloaded.

#include <dlfcn.h>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include "Kex/Image/Write.h"

namespace {

class SilentApplication : public Kex::Image::Application {
public:
    void error(const Kex::Image::Op&, const std::string&) override {}
    void warning(const Kex::Image::Op&, const std::string&) override {}
    void progress(const Kex::Image::Op&, double) override {}
    bool aborted(const Kex::Image::Op&) override { return false; }
};

int loadMakeAndUnload(const char* plugin, const char* output) {
    void* const loaded = dlopen(plugin, RTLD_NOW | RTLD_LOCAL);
    if (loaded == nullptr) {
        std::cerr << dlerror() << std::endl;
        return 2;
    }
    SilentApplication application;
    auto* const forgotten = new Kex::Image::Write(application, output);
    forgotten->setFormat({2, 2});
    forgotten->createWriter();
    dlclose(loaded);
    return dlopen(plugin, RTLD_NOW | RTLD_NOLOAD) == nullptr ? 0 : 3;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 3) {
        std::cerr << "usage: forgetful_host PLUGIN OUTPUT" << std::endl;
        return 2;
    }
    try {
        std::_Exit(loadMakeAndUnload(arguments[1], arguments[2]));
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << std::endl;
        std::_Exit(4);
    }
}
