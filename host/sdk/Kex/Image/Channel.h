#pragma once

namespace Kex::Image {

/// Number of a channel. `Chan_Black` is no channel: it reads as 0 everywhere.
enum Channel {
    Chan_Black = 0,
    Chan_Red = 1,
    Chan_Green = 2,
    Chan_Blue = 3,
    Chan_Alpha = 4,
};

/// How many channels a row can hold, `Chan_Black` not counted.
constexpr int channelCount = 4;

}  // namespace Kex::Image
