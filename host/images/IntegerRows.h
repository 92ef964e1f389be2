#pragma once

#include "Kex/Image/LUT.h"
#include "host/images/ChannelLayout.h"
#include "host/images/Picture.h"

namespace Corvel {

/// How a file stores whole numbers: bytes; 16-bit words in this machine's order of bytes or the other; or
/// three samples of 10 bits a pixel in the upper bits of a 32-bit word (SMPTE 268M, filled, method A), in
/// either order.
enum class SampleForm { Bytes, Words, SwappedWords, TenBits, SwappedTenBits };

/// The pixels of a file that stores whole numbers: rows of interleaved samples, and what they mean.
struct IntegerPixels {
    SampleForm form = SampleForm::Bytes;
    int channels = 0;      ///< interleaved; 3 with ten bits
    ChannelLayout layout;  ///< indices among `channels`
    bool straightAlpha = false;
    Window window;  ///< where they are in the file's coordinates
};

/// Makes pictures of rows of whole numbers: of their codes, split, where the picture may have codes and a
/// pixel is three of them; else of linear light, split and premultiplied, by one look-up a sample, since a
/// file has few values that a curve can take. One thread at a time.
class IntegerRows {
public:
    /// Begins a picture. `display` is what it shows and its size: black where the window does not reach; what
    /// of a row lies outside is left out.
    void begin(const IntegerPixels& stored, const Kex::Image::LUT& curve, const Window& display,
               Picture& picture);

    /// Places row `y` of the window, counted from its top. `samples` need no alignment.
    void place(int y, const void* samples);

private:
    template <class Samples>
    void placeAs(const Samples& samples, int y);
    void placeCodes(const unsigned char* samples, int y);
    bool hasThreeColours() const;

    IntegerPixels pixels;
    Window shown;      ///< of the file's coordinates
    Window displayed;  ///< likewise
    Picture* target = nullptr;
    const Kex::Image::CodeTable* table = nullptr;
};

}  // namespace Corvel
