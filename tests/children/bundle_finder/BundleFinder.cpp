// Usage: bundle_finder [PLUG-IN…]: loads the plug-ins, then prints the host bundle's content folder.

#include <dlfcn.h>

#include <iostream>

#include "processbridge/HostBundle.h"

int main(int argumentCount, char** arguments) {
    for (int index = 1; index < argumentCount; ++index) {
        if (dlopen(arguments[index], RTLD_NOW) == nullptr) {
            std::cerr << dlerror() << std::endl;
            return 2;
        }
    }
    std::cout << Morvane::ProcessBridge::hostBundleContentsPath() << std::endl;
}
