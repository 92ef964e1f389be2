#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "worker/Status.h"
#include "worker/codec/EncodingPlan.h"
#include "worker/encode/VideoEncoder.h"
#include "worker/movie/MovieFile.h"

namespace Morvane::Worker {

/// A movie between `openFile` and `closeFile`: the encoder and the file it writes to. Used by one thread.
/// Every operation throws StatusError.
///
/// Every failure reaches the host once, by the next answer that it reads. Some operations have no such answer
/// ("kept" below): their failures are thrown and also kept, and `close` throws the first of them once the
/// movie is as whole as it can be. What `addFrame` or `addSamples` has thrown `close` does not repeat: it
/// makes a movie of what there is and tells how that went. Destroying it unclosed drops what is not encoded
/// yet and leaves the file readable.
class OpenMovie {
public:
    struct Options {
        EncodingPlan plan;
        std::string path;
        ExistingFile existing = ExistingFile::Replace;
        Metadata metadata;
        std::optional<TimecodeTrack> provisionalTimecode;
    };

    /// Opens the encoder, then the file: settings that the codec refuses leave an existing file alone.
    explicit OpenMovie(const Options& options);

    /// Takes one frame's pixels: `frameBytes` bytes, width x height x 4 floats. Throws the reason why these,
    /// or earlier ones, could not be encoded or written, once; BadArgument after that.
    void addFrame(const std::byte* pixels);
    std::uint64_t frameBytes() const;
    bool hasSize(std::int32_t width, std::int32_t height) const;

    /// Ends the pictures: no frames after it. Kept.
    void finishVideo();

    /// `position` and `count` in sample frames. Throws, too, why the format was refused.
    void addSamples(std::int64_t position, std::int64_t count, const std::byte* samples);
    /// A format that is refused is told by the next `addSamples`, or by `close` where none comes.
    void setSampleFormat(const SampleFormat& format);
    /// Kept.
    void finishSamples();
    /// Kept.
    void addAudioFile(const std::string& audioPath, double offsetSeconds);
    /// Kept.
    void setTimecode(const TimecodeTrack& timecode);
    /// Kept.
    void addMetadata(const Metadata& metadata);

    /// Finishes everything; `indexFirst` puts the index before the media data. Nothing may be called
    /// afterwards.
    void close(bool indexFirst);

private:
    void keepFailure(const std::function<void()>& operation);

    const EncodingPlan plan;
    const std::string path;
    std::optional<MovieFile> file;  // declared before the encoder: packets may come until the encoder is gone
    VideoEncoder encoder;
    bool videoFinished = false;
    bool hasTimecode = false;  ///< the host has named one
    bool sampleFormatRefused = false;
    std::optional<StatusError> sampleFormatRefusal;  ///< that nobody has been told yet
    std::optional<StatusError> firstFailure;
};

}  // namespace Morvane::Worker
