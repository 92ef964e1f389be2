#pragma once

#include <vector>

#include "Kex/Image/Format.h"
#include "Kex/Image/Iop.h"
#include "host/images/Picture.h"

namespace Corvel {

/// The node that the Write node reads: shows the frame that is being rendered, and the metadata of the
/// render. The picture stands with its lower left corner in the origin; where it does not reach, there is
/// transparent black.
class PictureNode : public Kex::Image::Iop {
public:
    using Iop::Iop;
    ~PictureNode() noexcept override = default;

    /// Shows that picture, which must stay as it is until the next call; null for transparent black
    /// everywhere.
    void show(const Picture* newPicture);

    /// The metadata of every frame of the render.
    void setMetaData(Kex::Image::MetaData::Bundle bundle) { metaData = std::move(bundle); }

    /// Nothing to do: the picture is decoded already.
    void request(int, int, int, int, Kex::Image::ChannelSet, int) override {}
    /// Where the picture spans all columns asked for, rows refer to its samples, and to the node's own for
    /// the alpha of a picture without it.
    void get(int y, int x, int r, Kex::Image::ChannelSet channels, Kex::Image::Row& row) override;

    Kex::Image::MetaData::Bundle fetchMetaData(const char* key) const override;

private:
    void getChannel(int y, int x, int r, Kex::Image::Channel channel, Kex::Image::Row& row) const;

    const Picture* picture = nullptr;
    std::vector<float> ones;  ///< at least a row of the picture, where that has no alpha
    Kex::Image::MetaData::Bundle metaData;
};

}  // namespace Corvel
