#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "property/PropertyList.h"

namespace Morvane::QuickTime {

/// Reads one QuickTime movie. The worker judges the order of calls; an int32 answer of `openFile`,
/// `closeFile` and `readFrame` is a status, 0 for success. Every operation that asks the worker blocks until
/// it has answered. One thread at a time.
///
/// The operations' order is part of the binary interface.
class QuickTimeCodecReaderInterface {
public:
    /// May throw: stopping a worker that is gone already is an error.
    virtual ~QuickTimeCodecReaderInterface() noexcept(false) = default;

    /// Mode 1: frames can be read; 0: description only.
    virtual std::int32_t openFile(const std::string& path, std::int32_t mode) = 0;
    virtual std::int32_t closeFile() = 0;
    /// Appends the properties of all tracks. Always 0. Throws boost::escaped_list_error.
    virtual std::int32_t getProperties(Property::PropertyList& properties) = 0;
    /// Replaces the content of `metadata`.
    virtual void getMetadata(std::map<std::string, std::string>& metadata) = 0;
    virtual std::int32_t fixedEight() = 0;
    virtual std::int32_t fixedZero() = 0;
    virtual void ignore() = 0;
    virtual std::int32_t fixedZeroToo() = 0;
    virtual std::int32_t fixedOne() = 0;
    /// Frames count from 0. `destination` takes width x height x 4 floats, RGBA, top row first, and is left
    /// untouched on failure. REQUIRES: `getInfo` or `getFrameCount` was called since the movie was opened.
    virtual std::int32_t readFrame(std::int32_t frame, char* destination) = 0;
    virtual std::int32_t getFrameCount() = 0;
    /// Width and height in pixels, channels (3 or 4), frames a second, pixel aspect numerator and
    /// denominator, bits a channel. Answers the height.
    virtual std::int32_t getInfo(std::int32_t& width, std::int32_t& height, std::int32_t& channels,
                                 float& frameRate, std::int32_t& aspectNumerator,
                                 std::int32_t& aspectDenominator, std::int32_t& bits) = 0;
};

}  // namespace Morvane::QuickTime
