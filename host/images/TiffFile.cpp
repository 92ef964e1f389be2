#include "host/images/IntegerFile.h"
#include "host/images/LibraryOnDemand.h"

namespace Corvel {

bool readTiff(const IntegerFile& file, IntegerScratch& scratch, const IntegerSink& sink) {
    static const auto read =
        reinterpret_cast<TiffLibraryEntry>(entryOfLibrary(CORVEL_TIFF_LIBRARY, tiffLibraryEntryName, "TIFF"));
    return read(file, scratch, sink);
}

}  // namespace Corvel
