#include "worker/read/MovieReader.h"

#include <algorithm>
#include <limits>
#include <thread>

#include "worker/Status.h"
#include "worker/read/MovieMetadata.h"
#include "worker/read/MovieProperties.h"

namespace Morvane::Worker {

MovieReader::MovieReader(const std::string& path, Access access)
    : source(std::make_shared<const SourceFile>(path)),
      input(source),
      index(FrameIndex::ofMovie(input)),
      pictures(MovieDescription::of(input, index)) {
    if (access == Access::DescriptionOnly || pictures.frames == 0)
        return;
    // Controllers count a frame's bytes in 32 signed bits.
    if (pictures.frameBytes() > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max()))
        throw StatusError(Status::NotSupportedByCodec,
                          "frames of " + path + " are too large to be handed over");
    store = std::make_unique<FrameStore>(input, index);
    converter =
        std::make_unique<FloatConverter>(static_cast<int>(std::max(1u, std::thread::hardware_concurrency())));
}

std::vector<std::pair<std::string, std::string>> MovieReader::metadata() const {
    return movieMetadata(input, pictures);
}

Property::PropertyList MovieReader::properties() const {
    return movieProperties(input, pictures);
}

void MovieReader::decode(std::int64_t number) {
    const std::string frame = "frame " + std::to_string(number) + " of " + source->path;
    if (number < 0 || number >= pictures.frames)
        throw StatusError(Status::BadArgument,
                          "there is no " + frame + ", which has " + std::to_string(pictures.frames));
    if (store == nullptr)
        throw StatusError(Status::BadArgument,
                          "cannot read " + frame + ": it is open for its description only");
    if (source->hasChanged())
        throw StatusError(Status::InputOutput, "cannot read " + frame + ": the file has been written into");
    current = store->frame(static_cast<std::size_t>(number));
    const Orientation& turn = pictures.orientation;
    const auto width = static_cast<std::size_t>(current->width),
               height = static_cast<std::size_t>(current->height);
    if (turn.shownWidth(width, height) != static_cast<std::size_t>(pictures.width) ||
        turn.shownHeight(width, height) != static_cast<std::size_t>(pictures.height))
        throw StatusError(Status::CodecFailed, frame + " has not the size of the movie");
}

void MovieReader::convert(std::span<float> rgba) {
    converter->convert(*current, pictures.orientation, rgba);
}

void MovieReader::interrupt() {
    if (store != nullptr)
        store->interrupt();
}

}  // namespace Morvane::Worker
