#include "host/images/IntegerStatement.h"

#include <array>
#include <filesystem>

#include "host/images/FileContents.h"
#include "host/images/ImageReader.h"
#include "host/images/IntegerHeader.h"
#include "host/images/NameMatch.h"

namespace Corvel {
namespace {

struct Kind {
    const char* ending;
    const char* format;
    std::optional<IntegerHeader> (*read)(const std::string& path);
};

constexpr std::array kinds{Kind{".dpx", "dpx", readDpxHeader}, Kind{".png", "png", readPngHeader},
                           Kind{".tif", "tiff", readTiffHeader}, Kind{".tiff", "tiff", readTiffHeader}};

// As the image library names them.
std::vector<std::string> channelNames(int channels) {
    return channels < 3 ? std::vector<std::string>{"Y", "A"} : std::vector<std::string>{"R", "G", "B", "A"};
}

FileContents contentsOf(const char* format, const IntegerHeader& header) {
    FilePart part;
    const std::vector<std::string> names = channelNames(header.channels);
    for (int channel = 0; channel < header.channels; ++channel) {
        part.channels.push_back({names[static_cast<std::size_t>(channel)], ""});
    }
    return {.format = format, .views = {}, .parts = {part}, .namesChannels = false};
}

IntegerStatement statementOf(const std::string& path, const char* format, const IntegerHeader& stored,
                             const PictureChoice& choice) {
    const FileContents contents = contentsOf(format, stored);
    const ChosenPicture chosen = chooseFrom(path, contents, choice);
    IntegerStatement statement;
    statement.file = {path, stored.width, stored.height, stored.channels, stored.bits > 8 ? 2U : 1U, format};
    statement.layout = chosen.layout;
    // Colours are not multiplied by a channel that was merely named as alpha.
    const bool hasAlpha = stored.channels % 2 == 0;
    statement.straightAlpha = stored.straightAlpha && hasAlpha && chosen.layout.alpha == stored.channels - 1;
    PictureHeader& header = statement.header;
    header.display = header.data = {0, 0, stored.width, stored.height};
    header.hasAlpha = chosen.layout.alpha >= 0;
    header.bits = stored.bits;
    header.curve = stored.curve;
    header.colourSpace = stored.colourSpace;
    header.picked = textOf(contents, chosen);
    header.metadata = stored.metadata;
    header.attributesIn = path;
    return statement;
}

}  // namespace

std::optional<IntegerStatement> stateOfIntegers(const std::string& path, const PictureChoice& choice) {
    const std::string ending = lowered(std::filesystem::path(path).extension().string());
    for (const Kind& kind : kinds) {
        if (ending == kind.ending) {
            const std::optional<IntegerHeader> header = kind.read(path);
            if (header && isPictureSize(header->width, header->height)) {
                return statementOf(path, kind.format, *header, choice);
            }
        }
    }
    return std::nullopt;
}

}  // namespace Corvel
