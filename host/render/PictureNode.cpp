#include "host/render/PictureNode.h"

#include <algorithm>
#include <cstddef>

namespace Corvel {

using Kex::Image::Channel;

void PictureNode::show(const Picture* newPicture) {
    picture = newPicture;
    if (picture != nullptr && !picture->hasAlpha()) {
        ones.resize(static_cast<std::size_t>(picture->width()), 1.0F);
    }
}

void PictureNode::get(int y, int x, int r, Kex::Image::ChannelSet channels, Kex::Image::Row& row) {
    for (int channel = Kex::Image::Chan_Red; channel <= Kex::Image::Chan_Alpha; ++channel) {
        if (channels.contains(static_cast<Channel>(channel))) {
            getChannel(y, x, r, static_cast<Channel>(channel), row);
        }
    }
}

void PictureNode::getChannel(int y, int x, int r, Channel channel, Kex::Image::Row& row) const {
    const bool inside = picture != nullptr && y >= 0 && y < picture->height();
    const int begin = inside ? std::clamp(0, x, r) : x;
    const int end = inside ? std::clamp(picture->width(), begin, r) : x;
    const bool opaque = inside && channel == Kex::Image::Chan_Alpha && !picture->hasAlpha();
    const int plane = channel - Kex::Image::Chan_Red;
    // The picture's rows count from the top, a node's from the bottom.
    const int line = inside ? picture->height() - 1 - y : 0;
    const Kex::Image::CodeTable* const table = inside ? picture->table() : nullptr;
    if (inside && begin == x && end == r) {
        if (opaque) {
            row.refer(channel, ones.data());
        } else if (table != nullptr) {
            row.refer(channel, picture->codeRow(plane, line) + x, *table);
        } else {
            row.refer(channel, picture->row(plane, line) + x);
        }
        return;
    }
    float* const own = row.writable(channel);
    std::fill(own, own + (begin - x), 0.0F);
    if (opaque) {
        std::fill(own + (begin - x), own + (end - x), 1.0F);
    } else if (table != nullptr) {
        Kex::Image::lookUp(own + (begin - x), picture->codeRow(plane, line) + begin, table->linear(),
                           static_cast<std::size_t>(end - begin), 1);
    } else if (inside) {
        std::copy_n(picture->row(plane, line) + begin, end - begin, own + (begin - x));
    }
    std::fill(own + (end - x), own + (r - x), 0.0F);
}

Kex::Image::MetaData::Bundle PictureNode::fetchMetaData(const char* key) const {
    if (key == nullptr || *key == '\0') {
        return metaData;
    }
    Kex::Image::MetaData::Bundle one;
    if (const Kex::Image::MetaData::Property* const property = metaData.getData(key)) {
        one.setData(key, *property);
    }
    return one;
}

}  // namespace Corvel
