#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "property/PropertyList.h"
#include "timecode/FrameRate.h"

namespace Morvane::QuickTime {

/// Writes one QuickTime movie after the other. Order of calls: `setCodec`, `configure`, `openFile`, frames
/// and samples, `finishVideo`, `finishSamples`, `addAudioFile` and `addTimecodeTrack`, `closeFile`. The
/// worker judges the order; an int32 answer is a status, 0 for success. Every operation that asks the worker
/// blocks until it has answered. One thread at a time.
///
/// The operations' order is part of the binary interface.
class QuickTimeCodecWriterInterface {
public:
    /// May throw: stopping a worker that is gone already is an error.
    virtual ~QuickTimeCodecWriterInterface() noexcept(false) = default;

    virtual void initialise() = 0;
    /// Mode 1 replaces an existing file, 0 refuses it.
    virtual std::int32_t openFile(const std::string& path, std::int32_t mode) = 0;
    virtual void finishVideo() = 0;
    virtual void finishSamples() = 0;
    /// `flatten` puts the index before the media data.
    virtual std::int32_t closeFile(bool flatten) = 0;
    /// Pixels: width x height x 4 floats, RGBA, top row first, width and height as last configured. The
    /// pointer that `acquireBuffer` answered is used in place; any other is copied from. The worker gives
    /// `flag` no meaning.
    virtual std::int32_t addFrame(std::int32_t frame, const char* pixels, bool flag) = 0;
    /// Position and count in sample frames from the movie's start; 4 bytes a sample frame.
    virtual std::int32_t addSamples(std::int64_t position, std::int64_t count, const char* data) = 0;
    /// Channels, floating point, sample rate in hertz, layout name. Before it `addSamples` copies nothing.
    virtual void setSampleFormat(std::int32_t channels, bool floatingPoint, std::uint32_t sampleRate,
                                 const std::string& layout) = 0;
    /// Metadata of the movie. Always 0.
    virtual std::int32_t setProperties(const Property::PropertyList& properties) = 0;
    /// Always 0.
    virtual std::int32_t addTimecodeTrack(Timecode::FrameRate rate, std::int64_t startFrame,
                                          const std::string& reel) = 0;
    /// Offset in seconds, positive for sound that starts later. Answers the status that the operation before
    /// it left, deliberately: this one has none of its own.
    virtual std::int32_t addAudioFile(const char* path, float offset) = 0;
    /// Width and height in pixels; key frames at most `keyFrameRate` frames apart; quality 0 (least) to 5
    /// (lossless); `settings` is the codec's own text.
    virtual void configure(std::int32_t width, std::int32_t height, std::int32_t keyFrameRate,
                           std::int32_t quality, bool hasAlpha, const std::string& settings,
                           float framesPerSecond) = 0;
    /// Settings text in, a summary for people out.
    virtual std::string textOperation6(const std::string& text) = 0;
    /// The codec's own dialog, seeded with `settings`; answers the settings text that it was left with.
    virtual std::string editSettings(const std::string& settings) = 0;
    /// Any text in, the codec's default settings out.
    virtual std::string textOperation7(const std::string& text) = 0;
    /// Settings text in, the list of all options out, as a property list's text.
    virtual std::string textOperation21(const std::string& text) = 0;
    /// Such a list in, settings text out.
    virtual std::string textOperation22(const std::string& text) = 0;
    /// One "type TAB name" text for each codec, then null. Valid until the process ends.
    virtual const char* const* codecList() = 0;
    /// Index into `codecList`.
    virtual std::int32_t getCodec() = 0;
    virtual void setCodec(std::int32_t index) = 0;
    virtual void setUseFormatAspect(bool on) = 0;
    virtual std::int32_t getQuality() = 0;
    virtual float getFrameRate() = 0;
    virtual std::int32_t getKeyFrameRate() = 0;
    /// Shared memory for `count` values of 4 bytes, the caller's until `releaseBuffer` or the next operation
    /// that asks the worker; null when the memory cannot be had.
    virtual char* acquireBuffer(std::size_t count) = 0;
    virtual void releaseBuffer(char* buffer) = 0;
};

}  // namespace Morvane::QuickTime
