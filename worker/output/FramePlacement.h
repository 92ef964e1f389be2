#pragma once

namespace Morvane::Worker {

/// Where on a screen a frame stands, in pixels from the top left corner. A plain value.
struct FramePlacement {
    int left;
    int top;
    int width;
    int height;

    /// The largest place with the aspect of a frame of `width` x `height` pixels inside `areaWidth` x
    /// `areaHeight`, centred. All four are at least 1.
    static FramePlacement inside(int width, int height, int areaWidth, int areaHeight);

    friend bool operator==(const FramePlacement&, const FramePlacement&) = default;
};

}  // namespace Morvane::Worker
