#include "writer/movWriter.h"

#include <strings.h>

#include <new>

#include "Kex/Image/Write.h"
#include "writer/CreateController.h"
#include "writer/LiveWriterControllers.h"
#include "writer/WholeNumber.h"

namespace Morvane::Writer {

namespace {

/// What a new node writes where the worker offers it. Compared without regard to letter case.
constexpr const char* preferredCodec = "mjpa\tmotion jpeg a";

/// Index of the preferred codec in a null-terminated list, 0 when it is not in there.
std::int32_t defaultCodec(const char* const* entries) {
    for (std::int32_t index = 0; entries[index] != nullptr; ++index) {
        if (strcasecmp(entries[index], preferredCodec) == 0) {
            return index;
        }
    }
    return 0;
}

}  // namespace

movWriter::movWriter(Kex::Image::Write* node) : Writer(node), controller(createController()) {
    if (controller == nullptr) {
        return;
    }
    liveWriterControllers.insert(controller);
    controllerAvailable = true;
    codec = defaultCodec(controller->codecList());
}

movWriter::~movWriter() noexcept(false) {
    if (controller != nullptr) {
        liveWriterControllers.remove(controller);
        delete controller;
    }
}

Kex::Image::Writer* build(Kex::Image::Write* node) {
    return new (std::nothrow) movWriter(node);
}

const char* movWriter::help() {
    return "Apple QuickTime. ";
}

const Kex::Image::LUT* movWriter::defaultLUT() {
    constexpr int displayCurve = 6;
    return Kex::Image::LUT::getLut(displayCurve);
}

int movWriter::knob_changed(Kex::Image::Knob* changed) {
    if (!controllerAvailable) {
        return 0;
    }
    const std::string& name = changed->name();
    if (name == "advanced") {
        editCodecSettings();
        return 1;
    }
    if (name == "codec") {
        changeCodec(*changed);
        return 1;
    }
    if (name == "use_format_aspect") {
        controller->setUseFormatAspect(useFormatAspect);
        return 1;
    }
    if (name == "quality" || name == "keyframerate" || name == "fps") {
        configure();
        return 1;
    }
    // The others are read when the movie is finished.
    return 0;
}

void movWriter::editCodecSettings() {
    controller->setCodec(codec);
    configure();
    setKnobText("settings", controller->editSettings(settings));
    setKnobValue("keyframerate", controller->getKeyFrameRate());
    setKnobValue("fps", controller->getFrameRate());
    setKnobValue("quality", controller->getQuality());
    setKnobValue("codec", controller->getCodec());
}

void movWriter::changeCodec(const Kex::Image::Knob& changed) {
    // Settings made for one codec mean nothing to another.
    settings.clear();
    controller->setCodec(wholeNumber(changed.get_value()));
    setKnobText("settings", "");
    configure();
}

void movWriter::setKnobText(const char* name, const std::string& text) {
    if (Kex::Image::Knob* const knob = write().knob(name)) {
        knob->set_text(text);
    }
}

void movWriter::setKnobValue(const char* name, double value) {
    constexpr int allChannels = -1;
    if (Kex::Image::Knob* const knob = write().knob(name)) {
        knob->set_value(value, allChannels);
    }
}

void movWriter::configure() {
    const Kex::Image::Format& format = write().format();
    const bool hasAlpha = write().depth() >= 4;
    controller->configure(format.width(), format.height(), keyFrameRate, quality, hasAlpha, settings, fps);
}

}  // namespace Morvane::Writer
