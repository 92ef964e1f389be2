#include "host/colour/ColourLibrary.h"

#include "host/images/LibraryOnDemand.h"

namespace Corvel {

const ColourLibrary& colourLibrary() {
    static const ColourLibrary& loaded = *reinterpret_cast<ColourLibraryEntry>(
        entryOfLibrary(CORVEL_COLOUR_LIBRARY, colourLibraryEntryName, "colour"))();
    return loaded;
}

}  // namespace Corvel
