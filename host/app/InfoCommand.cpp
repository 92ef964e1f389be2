#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "host/app/Command.h"
#include "host/app/StartUp.h"
#include "host/movies/MovieReader.h"
#include "host/render/HelperSession.h"

namespace Corvel {
namespace {

using Json = nlohmann::ordered_json;
using Properties = std::vector<std::pair<std::string, std::string>>;

constexpr const char* footer =
    "Examples:\n"
    "  corvel info shot.mov\n"
    "  corvel info shot.mov --json | jq -r .timecode";

// Null for what the movie doesn't say.
Json textOrNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

// The number in the fewest digits, not those of its nearest double; null for what is no number.
Json number(double value) {
    return std::isfinite(value) ? Json::parse(fmt::format("{}", static_cast<float>(value))) : Json(nullptr);
}

Json jsonOf(const MovieFacts& facts, const Properties& properties) {
    Json listed = Json::array();
    for (const auto& [name, value] : properties) {
        listed.push_back({{"name", name}, {"value", value}});
    }
    return {{"width", facts.width},
            {"height", facts.height},
            {"channels", facts.channels},
            {"bits", facts.bits},
            {"frames", facts.frames},
            {"rate", number(facts.rate)},
            {"pixel_aspect", number(facts.pixelAspect())},
            {"timecode", textOrNull(facts.text("input/timecode"))},
            {"reel", textOrNull(facts.text("quicktime/reel"))},
            {"codec", textOrNull(facts.text("quicktime/codec_name"))},
            {"metadata", facts.metadata},
            {"properties", listed}};
}

void printRow(const std::string& name, const std::string& value, std::size_t width) {
    fmt::print("  {:<{}}  {}\n", name, width, value);
}

template <typename Pairs>
void printPairs(const char* title, const Pairs& pairs) {
    std::size_t width = 0;
    for (const auto& [name, value] : pairs) {
        width = std::max(width, name.size());
    }
    fmt::print("\n{}\n", title);
    for (const auto& [name, value] : pairs) {
        printRow(name, value, width);
    }
}

void printText(const std::string& path, const MovieFacts& facts, const Properties& properties) {
    constexpr std::size_t width = 12;
    fmt::print("{}\n", path);
    printRow("picture",
             fmt::format("{} x {}, {}, {} bits", facts.width, facts.height,
                         facts.channels == 4 ? "RGB with alpha" : "RGB", facts.bits),
             width);
    if (facts.aspectNumerator != facts.aspectDenominator) {
        printRow("pixel aspect", fmt::format("{}:{}", facts.aspectNumerator, facts.aspectDenominator), width);
    }
    printRow("frames", fmt::format("{}, {:.6g} a second", facts.frames, facts.rate), width);
    for (const auto& [name, key] : {std::pair{"codec", "quicktime/codec_name"},
                                    {"time code", "input/timecode"},
                                    {"reel", "quicktime/reel"}}) {
        if (const std::string text = facts.text(key); !text.empty()) {
            printRow(name, text, width);
        }
    }
    printPairs("Metadata", facts.metadata);
    printPairs("Tracks", properties);
}

class InfoCommand : public Command {
public:
    std::string name() const override { return "info"; }
    std::string summary() const override { return "Say what is in a movie"; }

    void declare(CLI::App& app) override {
        app.add_option("MOVIE", path, "A movie, or any media file that the helper reads")
            ->required()
            ->type_name("");
        app.add_flag("--json", json, "Print one JSON document");
        app.footer(footer);
    }

    Exit run(Session& session) override {
        startUp();
        HelperSession helpers(0, *session.reporter);
        MovieReader movie(path, MovieReader::Purpose::Description, helpers);
        const Properties properties = movie.properties();
        if (json) {
            fmt::print("{}\n",
                       jsonOf(movie.facts(), properties).dump(2, ' ', false, Json::error_handler_t::replace));
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
