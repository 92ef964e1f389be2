#pragma once

#include "Kex/Image/Channel.h"

namespace Kex::Image {

/// Channels as a bit mask: red 1, green 2, blue 4, alpha 8.
enum ChannelMask : unsigned {
    Mask_None = 0,
    Mask_Red = 1,
    Mask_Green = 2,
    Mask_Blue = 4,
    Mask_Alpha = 8,
    Mask_RGB = 7,
    Mask_RGBA = 15,
};

/// A set of channels, a plain value.
class ChannelSet {
public:
    constexpr ChannelSet() = default;
    constexpr ChannelSet(ChannelMask mask) : bits(mask) {}
    explicit constexpr ChannelSet(unsigned mask) : bits(mask & Mask_RGBA) {}

    /// Whether channel `z` is in the set; `Chan_Black` never is.
    constexpr bool contains(Channel z) const { return z != Chan_Black && ((bits >> (z - 1)) & 1u) != 0; }
    constexpr bool empty() const { return bits == 0; }
    constexpr unsigned mask() const { return bits; }

    constexpr bool operator==(const ChannelSet&) const = default;

private:
    unsigned bits = Mask_None;
};

}  // namespace Kex::Image
