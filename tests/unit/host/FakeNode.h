#pragma once

#include <string>
#include <vector>

#include "Kex/Image/Application.h"
#include "Kex/Image/Write.h"
#include "Kex/Image/Writer.h"
#include "host/render/PictureNode.h"

namespace Corvel {

/// A writer for files ".fake" with one knob of each kind and those that the host knows the meaning of. Notes
/// which knobs it was told of, with their value at that moment.
class FakeWriter : public Kex::Image::Writer {
public:
    explicit FakeWriter(Kex::Image::Write* node) : Writer(node) {}

    void knobs(Kex::Image::Knob_Closure& closure) override {
        using namespace Kex::Image;
        static const char* const codecs[] = {"rle \tAnimation",  "mjpa\tMotion JPEG A", "apch\tProRes 422 HQ",
                                             "apcn\tProRes 422", "2vuy\t8-bit 4:2:2",   nullptr};
        static const char* const qualities[] = {"Min", "Low", "Normal", "High", "Max", "Lossless", nullptr};
        closure(Knob_Enumeration, Store_Int, &codec, "codec", nullptr, codecs);
        closure(Knob_Button, Store_None, nullptr, "advanced", nullptr, nullptr);
        closure(Knob_Float, Store_Float, &fps, "fps", "rate", nullptr);
        SetRange(closure, 0, 100);
        SetFlags(closure, 1028);
        closure(Knob_Checkbox, Store_Bool, &useFormatAspect, "use_format_aspect", nullptr, nullptr);
        Tooltip(closure, "two\nlines");
        closure(Knob_Enumeration, Store_Int, &quality, "quality", nullptr, qualities);
        closure(Knob_Int, Store_Int, &keyFrames, "keyframerate", nullptr, nullptr);
        closure(Knob_File, Store_CString, &audioFile, "audiofile", nullptr, nullptr);
        closure(Knob_Text, Store_String, &settings, "settings", nullptr, nullptr);
        closure(Knob_Checkbox, Store_Bool, &writeTimeCode, "writeTimeCode", nullptr, nullptr);
    }

    int knob_changed(Kex::Image::Knob* changed) override {
        told.push_back(changed->name() + "=" + changed->get_text());
        if (changed->name() == "codec") {
            settings.clear();
        }
        if (changed->name() == "advanced") {
            settings += settings.empty() ? "dialog=1" : ":dialog=1";
        }
        return 1;
    }

    void execute() override {}

    int codec = 1;
    float fps = 24;
    bool useFormatAspect = false;
    int quality = 4;
    int keyFrames = 1;
    const char* audioFile = nullptr;
    std::string settings;
    bool writeTimeCode = false;
    std::vector<std::string> told;
};

/// A Write node with a FakeWriter.
class FakeNode : public Kex::Image::Application {
public:
    ~FakeNode() noexcept override = default;
    FakeNode() {
        record.buildStamp = "today for tests";
        record.formats = "fake";
        record.label = "fake";
        record.constructor = [](Kex::Image::Write* node) -> Kex::Image::Writer* {
            return new FakeWriter(node);
        };
        record.ctor2(Kex::Image::Writer::Description::add);
        node.setFormat({64, 36, 1});
        node.createWriter();
    }

    void error(const Kex::Image::Op&, const std::string&) override {}
    void warning(const Kex::Image::Op&, const std::string&) override {}
    void progress(const Kex::Image::Op&, double) override {}
    bool aborted(const Kex::Image::Op&) override { return false; }

    FakeWriter& writer() { return static_cast<FakeWriter&>(*node.writer()); }

private:
    Kex::Image::Writer::Description record;

public:
    Kex::Image::Write node{*this, "a.fake"};
    PictureNode picture{*this};
};

}  // namespace Corvel
