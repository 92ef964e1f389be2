#pragma once

#include <cstdint>
#include <string>

#include "timecode/FrameRate.h"

namespace Morvane::QuickTime {

/// A reader's or writer's request, decoded: what the worker makes of a request text. Plain data; only the
/// fields of the request's own opcode hold something, all others are 0, false or empty. An opcode that has no
/// arguments or is unknown fills nothing and is no error. A number that cannot be read is 0; one out of range
/// is clamped.
///
/// Constructors throw std::runtime_error: "Not a read task." or "Not a write task." for a text of another
/// kind, and a message that names opcode and argument for a text with fewer arguments than its opcode has;
/// boost::escaped_list_error for a malformed escape.
class QuickTimeCodecTask {
public:
    virtual ~QuickTimeCodecTask() = default;

    std::int32_t opcode = 0;
    std::string fileName;  ///< `openFile`: path

protected:
    QuickTimeCodecTask() = default;
};

class QuickTimeCodecReadTask : public QuickTimeCodecTask {
public:
    explicit QuickTimeCodecReadTask(const std::string& text);

    std::int32_t frame = 0;  ///< 0 `readFrame`
    std::int32_t mode = 0;   ///< 1 `openFile`
};

class QuickTimeCodecWriteTask : public QuickTimeCodecTask {
public:
    explicit QuickTimeCodecWriteTask(const std::string& text);

    std::int32_t frame = 0;               ///< 1 `addFrame`
    std::int32_t mode = 0;                ///< 0 `openFile`
    std::string audioFileName;            ///< 3 `addAudioFile`: path
    float audioOffset = 0;                ///< 3 `addAudioFile`: seconds
    float framesPerSecond = 0;            ///< 5 `configure`
    bool flatten = false;                 ///< 4 `closeFile`
    bool frameFlag = false;               ///< 1 `addFrame`
    bool hasAlpha = false;                ///< 5 `configure`
    std::int32_t codec = 0;               ///< 9 `setCodec`: index
    std::int32_t width = 0;               ///< 5 `configure`: pixels
    std::int32_t height = 0;              ///< 5 `configure`: pixels
    std::int32_t quality = 0;             ///< 5 `configure`
    std::int32_t keyFrameRate = 0;        ///< 5 `configure`: frames
    std::int32_t sampleFormatA = 0;       ///< 20 `setSampleFormat`: channels
    bool sampleFormatB = false;           ///< 20 `setSampleFormat`: floating point
    std::uint32_t sampleFormatC = 0;      ///< 20 `setSampleFormat`: hertz
    std::int64_t samplePosition = 0;      ///< 18 `addSamples`: sample frames
    std::int64_t sampleCount = 0;         ///< 18 `addSamples`: sample frames
    Timecode::FrameRate timecodeRate;     ///< 12 `addTimecodeTrack`
    std::int64_t timecodeStartFrame = 0;  ///< 12 `addTimecodeTrack`
    std::string reelName;                 ///< 12 `addTimecodeTrack`
};

}  // namespace Morvane::QuickTime
