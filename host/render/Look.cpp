#include "host/render/Look.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Kex/Image/ChannelSet.h"
#include "Kex/Image/LUT.h"
#include "Kex/Image/Row.h"
#include "filesystem/FileSystem.h"
#include "host/colour/DisplayTags.h"
#include "host/images/FrameRange.h"
#include "host/images/ImageWriter.h"
#include "host/images/NameMatch.h"
#include "host/images/SequencePattern.h"
#include "host/movies/MovieSource.h"
#include "host/render/Curves.h"
#include "host/render/OutputPath.h"
#include "host/render/ReadAhead.h"
#include "host/render/RenderSetup.h"
#include "host/render/SettingsText.h"

namespace Corvel {
namespace {

using Kex::Image::LUT;

// What is written to the file.
struct Still {
    Picture picture;
    PictureHeader header;
    ImageValues values = ImageValues::AsTheyAre;
};

// A movie that is gone with this object.
class PassingMovie {
public:
    explicit PassingMovie(const std::string& folder)
        : path(fmt::format("{}/look-{}.mov", folder, getpid())) {}
    ~PassingMovie() { Morvane::FileSystem::remove(path); }
    PassingMovie(const PassingMovie&) = delete;
    PassingMovie& operator=(const PassingMovie&) = delete;

    const std::string path;
};

void checkStill(const std::string& path) {
    if (!isWritableImageName(path)) {
        throw Failure(Exit::Usage, fmt::format("cannot write {}: a still's name ends in one of {}", path,
                                               writableImageEndings()));
    }
    if (SequencePattern::parse(path)) {
        throw Failure(Exit::Usage, fmt::format("{} names many images; a still is one", path));
    }
}

std::size_t positionOf(const LookRequest& asked, const std::vector<PlannedFrame>& frames) {
    const auto isWanted = [&](const PlannedFrame& frame) {
        return !asked.frame || frame.number == *asked.frame;
    };
    const auto found = std::find_if(frames.begin(), frames.end(), isWanted);
    if (found == frames.end()) {
        std::vector<int> numbers;
        std::transform(frames.begin(), frames.end(), std::back_inserter(numbers),
                       [](const PlannedFrame& frame) { return frame.number; });
        std::sort(numbers.begin(), numbers.end());
        throw Failure(Exit::InputUnreadable, fmt::format("there is no frame {}; the render has {}",
                                                         *asked.frame, frameRangeText(numbers)));
    }
    if (asked.render.missing == Missing::Error && found->isFilled()) {
        throw Failure(Exit::InputUnreadable, fmt::format("frame {} is missing", found->number));
    }
    return static_cast<std::size_t>(found - frames.begin());
}

bool endsIn(const std::string& path, const std::vector<std::string>& endings) {
    const std::string ending = lowered(std::filesystem::path(path).extension().string());
    return std::find(endings.begin(), endings.end(), ending) != endings.end();
}

// Whether a file of that name can say what its alpha has to do with its colours.
bool keepsAlpha(const std::string& path, bool straight) {
    return straight ? endsIn(path, {".png", ".tif", ".tiff"}) : !endsIn(path, {".png"});
}

SettingsText settingsOf(const Kex::Image::Write& node) {
    const Kex::Image::Knob* const knob = node.knob("settings");
    return SettingsText(knob == nullptr ? "" : knob->get_text());
}

const LUT& curveOf(const Kex::Image::Write& node) {
    return node.lut() != nullptr ? *node.lut() : *LUT::getLut(0);
}

// As the settings say it, which have a display's tags; without colour management and a word of the person's,
// by the curve.
void addColours(const RenderPlan& plan, const Kex::Image::Write& node, PictureHeader& header) {
    const SettingsText settings = settingsOf(node);
    const bool byCurve = !plan.colour;
    const DisplayTags preset = tagsOf({settings.value("colour")});
    const auto chosen = [&](const char* key, const std::string& byPreset, const std::string& usual) {
        return settings.has(key) ? settings.value(key) : !byPreset.empty() ? byPreset : usual;
    };
    header.primaries = chosen("primaries", preset.primaries, byCurve ? "bt709" : "");
    header.transfer = chosen("transfer", preset.transfer, byCurve ? transferOf(curveOf(node)) : "");
}

// One frame as the Write node hands it over, as many of its channels as the picture has.
void takeRows(const Kex::Image::Write& node, Picture& picture) {
    Kex::Image::Row row(0, picture.width());
    for (int y = 0; y < picture.height(); ++y) {
        node.inputnget(0, picture.height() - 1 - y, 0, picture.width(), Kex::Image::Mask_RGBA, row);
        for (int channel = 0; channel < picture.channels(); ++channel) {
            const LUT& curve = channel < 3 ? curveOf(node) : *LUT::getLut(0);
            const auto z = static_cast<Kex::Image::Channel>(Kex::Image::Chan_Red + channel);
            curve.toStored(picture.row(channel, y), row[z], picture.rowStride(), 1);
        }
    }
}

// As the helper does it with alpha=straight: in the light of the curve, black where alpha is 0.
void divideAlphaOut(const LUT& curve, Picture& picture) {
    for (int y = 0; y < picture.height(); ++y) {
        const float* const alpha = picture.row(3, y);
        for (int channel = 0; channel < 3; ++channel) {
            float* const row = picture.row(channel, y);
            for (int x = 0; x < picture.width(); ++x) {
                const double a = alpha[x];
                if (a != 1) {
                    row[x] = static_cast<float>(curve.toStored(a > 0 ? curve.toLinear(row[x]) / a : 0.0));
                }
            }
        }
    }
}

Still handedOver(const LookRequest& asked, const RenderPlan& plan, const Kex::Image::Write& node) {
    const SettingsText settings = settingsOf(node);
    const bool hasAlpha = plan.depth == 4 && settings.value("alpha") != "none";
    const bool straight = hasAlpha && settings.value("alpha") == "straight";
    Still still;
    still.picture.reset(plan.format.width(), plan.format.height(), hasAlpha ? 4 : 3);
    takeRows(node, still.picture);
    if (straight) {
        const LUT* const named = LUT::find(settings.value("curve"));
        divideAlphaOut(named != nullptr ? *named : curveOf(node), still.picture);
        still.values = ImageValues::StraightAsTheyAre;
    }
    if (hasAlpha && !keepsAlpha(asked.render.output, straight)) {
        Picture opaque;
        opaque.reset(still.picture.width(), still.picture.height(), 3);
        std::copy_n(still.picture.row(0, 0), 3 * opaque.planeStride(), opaque.row(0, 0));
        still.picture = std::move(opaque);
        still.values = ImageValues::AsTheyAre;
    }
    return still;
}

// The movie of that one frame, read again. Where the still can say so its alpha is divided out, in the light
// of the curve, or as it was multiplied by the reader of a movie with straight alpha.
Still encoded(NodeHost& host, int frame, HelperSession& helpers, const std::string& movie,
              const std::string& output) {
    host.helper().setActivity(fmt::format("writing frame {}", frame));
    host.node().execute(frame);
    if (!host.node().failed()) {
        host.node().finish();
    }
    if (host.node().failed()) {
        throw Failure(Exit::NodeFailed, fmt::format("frame {} could not be encoded", frame));
    }
    const MovieSource source(movie, LUT::getLut(0), helpers);
    Still still;
    source.createReader()->read(1, still.picture);
    if (still.picture.hasAlpha() && keepsAlpha(output, true)) {
        const bool straight = settingsOf(host.node()).value("alpha") == "straight";
        divideAlphaOut(straight ? *LUT::getLut(0) : curveOf(host.node()), still.picture);
        still.values = ImageValues::StraightAsTheyAre;
    }
    return still;
}

// With an empty header where the frame is black and has no picture.
PictureHeader readFrame(const RenderPlan& plan, std::size_t position, Picture& picture) {
    const PlannedFrame& planned = plan.frames[position];
    const PictureSteps steps = plan.steps ? plan.steps() : PictureSteps{};
    const PictureHeader header = ReadAhead::readFrame(*plan.source->createReader(), steps, blankHeader(plan),
                                                      planned, position, picture);
    if (header.display.width != 0) {
        checkSize(plan, planned, header);
    }
    return header;
}

}  // namespace

Exit look(const LookRequest& asked, Reporter& reporter) {
    LookRequest wanted = asked;
    wanted.render.output = outputBehindLinks(asked.render.output);
    checkStill(wanted.render.output);
    RenderRequest request = wanted.render;
    if (request.missing == Missing::Error) {
        request.missing = Missing::Black;  // of the frames beside the one that is looked at
    }
    RenderSetup setup = setUpRender(request, reporter);
    const RenderPlan& plan = setup.plan;
    const std::size_t position = positionOf(wanted, plan.frames);
    const PlannedFrame& planned = plan.frames[position];
    const PassingMovie movie(setup.helpers->sharedFolder());
    const std::unique_ptr<NodeHost> host = setUpNode(request, movie.path, setup);

    host->helper().setActivity("reading a frame");
    Picture picture;
    PictureHeader header = readFrame(plan, position, picture);
    const bool isBlank = header.display.width == 0;
    host->picture().show(isBlank ? nullptr : &picture);
    Still still = wanted.encoded ? encoded(*host, planned.number, *setup.helpers, movie.path, request.output)
                                 : handedOver(wanted, plan, host->node());
    host->helper().setIdle("writing the still");
    header.pixelAspect = plan.format.pixelAspect();
    addColours(plan, host->node(), header);
    if (setup.helpers->interrupts().count() > 0) {
        return Exit::Interrupted;
    }
    writeImage(request.output, still.picture, header, still.values);
    spdlog::info("wrote {}: frame {}, {} x {} pixels", request.output, planned.number, still.picture.width(),
                 still.picture.height());
    return Exit::Done;
}

}  // namespace Corvel
