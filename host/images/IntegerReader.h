#pragma once

#include "host/images/IntegerFile.h"
#include "host/images/IntegerRows.h"

namespace Corvel {

/// Reads the pixels of files that store whole numbers in the usual ways (IntegerFile.h), and keeps memory and
/// tables between them. One thread at a time.
class IntegerReader {
public:
    /// `file` has its first picture upright; `pixels` says what is wanted of it, all but its form, and
    /// `curve` what its values mean. The picture gets the size of `display`. False where the image library
    /// must read it: the picture is arbitrary then.
    bool read(const IntegerFile& file, const IntegerPixels& pixels, const Kex::Image::LUT& curve,
              const Window& display, Picture& picture);

private:
    IntegerScratch scratch;
    IntegerRows rows;
};

}  // namespace Corvel
