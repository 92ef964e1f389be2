#pragma once

#include "Kex/Image/ChannelSet.h"
#include "Kex/Image/Export.h"
#include "Kex/Image/Op.h"
#include "Kex/Image/Row.h"

namespace Kex::Image {

/// A node with a picture that can be read row by row. An application derives its source of frames from it.
class KEX_IMAGE_API Iop : public Op {
public:
    using Op::Op;

    /// Announces that the area from column x to r and row y to t (r and t exclusive) of these channels will
    /// be read, each row up to `count` times, so that the node can get it ready. May block until it is.
    virtual void request(int x, int y, int r, int t, ChannelSet channels, int count) = 0;

    /// Fills `row` with row y (0 is the lowest) from column x to r, these channels; others keep what they
    /// have. Columns and rows outside of the picture are the node's to make up. May block; the samples are
    /// linear light, premultiplied, alpha 1 where the picture has none.
    virtual void get(int y, int x, int r, ChannelSet channels, Row& row) = 0;
};

}  // namespace Kex::Image
