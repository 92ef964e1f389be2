#include "Kex/Image/Description.h"

#include <cstdio>

namespace Kex::Image {

void Description::ctor2(AddCallback add) {
    if (buildStamp == nullptr) {
        std::fputs("Kex::Image: a plug-in without a build stamp is not registered\n", stderr);
        return;
    }
    add(this);
}

}  // namespace Kex::Image
