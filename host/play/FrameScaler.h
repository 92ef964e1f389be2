#pragma once

#include <vector>

#include "host/images/Picture.h"
#include "host/play/TentFilter.h"

namespace Corvel {

/// Scales pictures of one size to another one, row by row, in the time that playing leaves for it: the image
/// library takes a third of a second where this takes some milliseconds. One thread.
class FrameScaler {
public:
    FrameScaler(int fromWidth, int fromHeight, int toWidth, int toHeight);

    /// Writes row `y` of the scaled picture to `rgba`: toWidth x 4 floats. The picture's alpha is not looked
    /// at; what is written in its place is arbitrary.
    void scaleRow(const Picture& picture, int y, float* rgba);

    bool isFor(int fromWidth, int fromHeight, int toWidth, int toHeight) const;

private:
    void mixRows(const Picture& picture, int y);

    int fromWidth;
    int fromHeight;
    int toWidth;
    int toHeight;
    TentFilter across;
    TentFilter down;
    std::vector<float> channel;  ///< fromWidth
    std::vector<float> mixed;    ///< fromWidth x 4, interleaved
};

}  // namespace Corvel
