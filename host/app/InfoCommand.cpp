#include <fmt/format.h>

#include <filesystem>

#include "host/app/Command.h"
#include "host/app/InfoPrint.h"
#include "host/app/PictureInfo.h"
#include "host/app/StartUp.h"
#include "host/images/ReadContents.h"
#include "host/images/SequencePattern.h"
#include "host/images/StereoName.h"
#include "host/movies/MovieReader.h"
#include "host/movies/MovieSource.h"
#include "host/render/HelperSession.h"

namespace Corvel {
namespace {

constexpr const char* footer =
    "Examples:\n"
    "  corvel info shot.mov\n"
    "  corvel info shot.mov --json | jq -r .timecode\n"
    "  corvel info 'shot.####.exr'\n"
    "  corvel info shot.1001.exr --json | jq -r '.layers[]'";

InfoJson jsonOf(const MovieFacts& facts, const InfoRows& properties) {
    InfoJson listed = InfoJson::array();
    for (const auto& [name, value] : properties) {
        listed.push_back({{"name", name}, {"value", value}});
    }
    return {{"width", facts.width},
            {"height", facts.height},
            {"channels", facts.channels},
            {"bits", facts.bits},
            {"frames", facts.frames},
            {"rate", numberOrNull(facts.rate)},
            {"pixel_aspect", numberOrNull(facts.pixelAspect())},
            {"timecode", textOrNull(facts.text("input/timecode"))},
            {"reel", textOrNull(facts.text("quicktime/reel"))},
            {"codec", textOrNull(facts.text("quicktime/codec_name"))},
            {"metadata", facts.metadata},
            {"properties", listed}};
}

void printText(const std::string& path, const MovieFacts& facts, const InfoRows& properties) {
    fmt::print("{}\n", path);
    InfoRows rows{{"picture", fmt::format("{} x {}, {}, {} bits", facts.width, facts.height,
                                          facts.channels == 4 ? "RGB with alpha" : "RGB", facts.bits)}};
    if (facts.aspectNumerator != facts.aspectDenominator) {
        rows.emplace_back("pixel aspect",
                          fmt::format("{}:{}", facts.aspectNumerator, facts.aspectDenominator));
    }
    rows.emplace_back("frames", fmt::format("{}, {:.6g} a second", facts.frames, facts.rate));
    for (const auto& [name, key] : {std::pair{"codec", "quicktime/codec_name"},
                                    {"time code", "input/timecode"},
                                    {"reel", "quicktime/reel"}}) {
        if (const std::string text = facts.text(key); !text.empty()) {
            rows.emplace_back(name, text);
        }
    }
    printRows("", rows);
    printRows("Metadata", {facts.metadata.begin(), facts.metadata.end()});
    printRows("Tracks", properties);
}

// Files of the helper's are those that the image library does not know.
bool isPictures(const std::string& path) {
    std::error_code error;
    if (isMovieName(path)) {
        return false;
    }
    const bool there = std::filesystem::exists(path, error);
    return (!there && (SequencePattern::parse(path) || hasViewMark(path))) || isPictureName(path);
}

class InfoCommand : public Command {
public:
    std::string name() const override { return "info"; }
    std::string summary() const override { return "Say what is in a movie or in pictures"; }

    void declare(CLI::App& app) override {
        app.add_option(
               "FILE", path,
               "A movie, or any media file that the helper reads; an image file or an image sequence, whose "
               "parts, layers, views and channels are listed")
            ->required()
            ->type_name("");
        app.add_flag("--json", json, "Print one JSON document");
        app.footer(footer);
    }

    Exit run(Session& session) override {
        if (isPictures(path)) {
            printPictureInfo(path, json);
            return Exit::Done;
        }
        startUp();
        HelperSession helpers(0, *session.reporter);
        MovieReader movie(path, MovieReader::Purpose::Description, helpers);
        const InfoRows properties = movie.properties();
        if (json) {
            printJson(jsonOf(movie.facts(), properties));
        } else {
            printText(path, movie.facts(), properties);
        }
        return Exit::Done;
    }

private:
    std::string path;
    bool json = false;
};

}  // namespace

std::unique_ptr<Command> infoCommand() {
    return std::make_unique<InfoCommand>();
}

}  // namespace Corvel
