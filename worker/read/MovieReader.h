#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "property/PropertyList.h"
#include "worker/read/FloatConverter.h"
#include "worker/read/FrameIndex.h"
#include "worker/read/FrameStore.h"
#include "worker/read/MovieDescription.h"
#include "worker/read/MovieInput.h"

namespace Morvane::Worker {

/// A movie that is open for reading. One thread at a time, but for `interrupt`.
class MovieReader {
public:
    enum class Access { DescriptionOnly, Frames };

    /// Opens the movie and lists its frames. Throws StatusError: NotFound, NoPermission; BadArgument for what
    /// is no regular file; CodecFailed for what libav cannot read or decode, or without pictures;
    /// NotSupportedByCodec, with `Frames`, for pictures that are too large for a host.
    MovieReader(const std::string& path, Access access);

    const MovieDescription& description() const { return pictures; }
    std::vector<std::pair<std::string, std::string>> metadata() const;
    Property::PropertyList properties() const;

    /// Decodes frame `number`, counted from 0, and holds it for `convert`. Throws StatusError: BadArgument
    /// where there is no such frame or the movie is open for its description only; CodecFailed for a damaged
    /// frame, naming it; InputOutput where the file has been written into.
    void decode(std::int64_t number);

    /// Puts the frame that was decoded last into `rgba`: width x height x 4 floats, top row first.
    void convert(std::span<float> rgba);

    /// Lets a running `decode` return early. Any thread.
    void interrupt();

private:
    const SharedSource source;
    MovieInput input;
    const FrameIndex index;
    const MovieDescription pictures;
    std::unique_ptr<FrameStore> store;  ///< null where frames cannot be read
    std::unique_ptr<FloatConverter> converter;
    std::shared_ptr<const AVFrame> current;
};

}  // namespace Morvane::Worker
