#include "host/burnin/TextLibrary.h"

#include "host/images/LibraryOnDemand.h"

namespace Corvel {

const TextLibrary& textLibrary() {
    static const TextLibrary& loaded = *reinterpret_cast<TextLibraryEntry>(
        entryOfLibrary(CORVEL_TEXT_LIBRARY, textLibraryEntryName, "text"))();
    return loaded;
}

}  // namespace Corvel
