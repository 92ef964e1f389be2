#include "host/app/GeometryOptions.h"

#include <fmt/format.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace Corvel {
namespace {

constexpr const char* group = "Geometry";
constexpr int largestSide = 65536;

[[noreturn]] void refuse(const char* option, const std::string& text, const char* form) {
    throw CLI::ValidationError(option, fmt::format("\"{}\" is not of the form {}", text, form));
}

bool isSide(int pixels) {
    return pixels >= 1 && pixels <= largestSide;
}

// "1.0667" or "16/15", to the end of the text.
std::optional<double> aspectOf(const char* text) {
    double aspect = 0, divisor = 1;
    int end = 0;
    const bool good = (std::sscanf(text, "%lf%n", &aspect, &end) == 1 && text[end] == '\0') ||
                      (std::sscanf(text, "%lf/%lf%n", &aspect, &divisor, &end) == 2 && text[end] == '\0');
    aspect /= divisor;
    return good && aspect >= 0.01 && aspect <= 100 ? std::optional(aspect) : std::nullopt;
}

// "1920x1080" or "720x576:1.0667"; an aspect may be a fraction, "720x576:16/15".
FormatRequest parseFormat(const std::string& text) {
    FormatRequest format;
    int end = 0;
    bool good = std::sscanf(text.c_str(), "%dx%d%n", &format.width, &format.height, &end) == 2;
    const std::string rest = text.substr(static_cast<std::size_t>(end));
    if (good && !rest.empty()) {
        format.pixelAspect = rest[0] == ':' ? aspectOf(rest.c_str() + 1) : std::nullopt;
        good = format.pixelAspect.has_value();
    }
    if (!good || !isSide(format.width) || !isSide(format.height)) {
        refuse("--format", text, "WIDTHxHEIGHT or WIDTHxHEIGHT:PIXELASPECT");
    }
    return format;
}

// "1920x800", or "1920x800+0+140" with the upper left corner.
CropRequest parseCrop(const std::string& text) {
    CropRequest crop;
    CropRequest::Corner corner;
    int end = 0;
    const char* const chars = text.c_str();
    const auto all = [&] { return end == static_cast<int>(text.size()); };
    bool good = std::sscanf(chars, "%dx%d%n", &crop.width, &crop.height, &end) == 2 && all();
    if (!good &&
        std::sscanf(chars, "%dx%d+%d+%d%n", &crop.width, &crop.height, &corner.x, &corner.y, &end) == 4) {
        good = all() && corner.x >= 0 && corner.y >= 0;
        crop.corner = corner;
    }
    if (!good || !isSide(crop.width) || !isSide(crop.height)) {
        refuse("--crop", text, "WIDTHxHEIGHT or WIDTHxHEIGHT+LEFT+TOP");
    }
    return crop;
}

// "2.39", "16/9", or "2.39:0.5" with how much is taken.
MaskRequest parseMask(const std::string& text) {
    MaskRequest mask;
    const std::size_t colon = text.find(':');
    const std::optional<double> aspect = aspectOf(text.substr(0, colon).c_str());
    bool good = aspect.has_value();
    mask.aspect = aspect.value_or(1);
    if (good && colon != std::string::npos) {
        const char* const share = text.c_str() + colon + 1;
        int end = 0;
        good = std::sscanf(share, "%lf%n", &mask.opacity, &end) == 1 && share[end] == '\0' &&
               mask.opacity >= 0 && mask.opacity <= 1;
    }
    if (!good) {
        refuse("--mask", text, "ASPECT or ASPECT:OPACITY");
    }
    return mask;
}

// One of several words. The option keeps the word, which is what other programs are told.
template <typename Value, typename Place>
void declareChoice(CLI::App& app, const char* name, const std::map<std::string, Value>& choices, Place& place,
                   const char* help, const char* type) {
    std::vector<std::string> words;
    words.reserve(choices.size());
    for (const auto& [word, value] : choices) {
        words.push_back(word);
    }
    app.add_option_function<std::string>(
           name, [choices, &place](const std::string& word) { place = choices.at(word); }, help)
        ->transform(CLI::IsMember(words, CLI::ignore_case).description(""))
        ->type_name(type)
        ->group(group);
}

void declareScaling(CLI::App& app, GeometryRequest& geometry) {
    const std::map<std::string, Fit> fits{
        {"inside", Fit::Inside}, {"fill", Fit::Fill}, {"stretch", Fit::Stretch}, {"crop", Fit::Crop}};
    declareChoice(app, "--fit", fits, geometry.fit,
                  "How pictures come into the format: inside (scaled, with bars), fill (scaled, edges cut "
                  "off), stretch, or crop (not scaled, centred); default: not scaled, lower left",
                  "HOW");
    const std::map<std::string, Filter> filters{
        {"nearest", Filter::Nearest},        {"box", Filter::Box},
        {"triangle", Filter::Triangle},      {"mitchell", Filter::Mitchell},
        {"catmull-rom", Filter::CatmullRom}, {"lanczos", Filter::Lanczos}};
    declareChoice(app, "--filter", filters, geometry.filter,
                  "How pixels are mixed: nearest, box, triangle, mitchell, catmull-rom or lanczos (default: "
                  "lanczos)",
                  "NAME");
}

}  // namespace

void declareGeometryOptions(CLI::App& app, std::optional<FormatRequest>& format, GeometryRequest& geometry) {
    app.add_option_function<std::string>(
           "--format", [&format](const std::string& text) { format = parseFormat(text); },
           "Size and pixel aspect of the movie (default: the first frame's; square pixels where it is scaled)")
        ->type_name("WxH[:ASPECT]")
        ->group(group);
    declareScaling(app, geometry);
    app.add_option_function<std::string>(
           "--crop", [&geometry](const std::string& text) { geometry.crop = parseCrop(text); },
           "Only that part of the pictures, before they are fitted; without its corner, from the middle")
        ->type_name("WxH[+LEFT+TOP]")
        ->group(group);
    app.add_option_function<std::string>(
           "--mask", [&geometry](const std::string& text) { geometry.mask = parseMask(text); },
           "Black over what lies outside of that shape, such as 2.39 or 16/9, or so much of it")
        ->type_name("ASPECT[:OPACITY]")
        ->group(group);
}

}  // namespace Corvel
