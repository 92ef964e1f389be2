#include "Kex/Image/Write.h"

#include <fmt/format.h>

#include <cmath>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "Kex/Image/Iop.h"
#include "Kex/Image/Writer.h"

namespace Kex::Image {

namespace {

/// Makes a Knob of every declaration.
class KnobMaker : public Knob_Closure {
public:
    void operator()(KnobKind kind, KnobStorage storage, void* field, const char* name, const char* label,
                    const char* const* entries) override {
        made.push_back(std::make_unique<Knob>(Knob::Declaration{kind, storage, field, name, label, entries}));
    }

    void tooltip(const char* text) override {
        if (!made.empty()) {
            made.back()->setTooltip(text);
        }
    }

    void setRange(double low, double high) override {
        if (!made.empty()) {
            made.back()->setRange(low, high);
        }
    }

    void setFlags(int flags) override {
        if (!made.empty()) {
            made.back()->setFlags(flags);
        }
    }

    std::vector<std::unique_ptr<Knob>> made;
};

std::string extensionOf(const std::string& path) {
    const std::string withDot = std::filesystem::path(path).extension().string();
    return withDot.empty() ? withDot : withDot.substr(1);
}

}  // namespace

Write::Write(Application& owner, std::string path) : Op(owner), filename_(std::move(path)) {}

Write::~Write() noexcept(false) {
    removeKnobs();
    delete writer_;
}

const LUT* Write::lut() const {
    if (chosenLut != nullptr || writer_ == nullptr) {
        return chosenLut;
    }
    return writer_->defaultLUT();
}

void Write::inputnget(int n, int y, int x, int r, ChannelSet channels, Row& row) const {
    if (Iop* const source = input(n)) {
        source->get(y, x, r, channels, row);
        return;
    }
    for (int z = Chan_Red; z <= Chan_Alpha; ++z) {
        if (channels.contains(static_cast<Channel>(z))) {
            row.fill(static_cast<Channel>(z), 0.0F);
        }
    }
}

void Write::createWriter() {
    const std::string extension = extensionOf(filename_);
    const Writer::Description* const record = Writer::Description::find(extension);
    if (record == nullptr) {
        throw std::runtime_error(fmt::format(
            "cannot write {}: no plug-in writes files with the extension \"{}\"", filename_, extension));
    }
    writer_ = record->constructor(this);
    if (writer_ == nullptr) {
        throw std::runtime_error(fmt::format("cannot write {}: no memory for the writer", filename_));
    }
    KnobMaker maker;
    writer_->knobs(maker);
    for (auto& made : maker.made) {
        addKnob(std::move(made));
    }
}

bool Write::knobChanged(Knob& changed) {
    return writer_ != nullptr && writer_->knob_changed(&changed) != 0;
}

void Write::execute(double newFrame) {
    frame_ = newFrame;
    const bool ownFile = writer_->writesFilePerFrame();
    if (ownFile && frameNames) {
        filename_ = frameNames(static_cast<int>(std::floor(newFrame)));
    }
    writer_->execute();
    if (ownFile && !failed()) {
        writer_->finish();
    }
}

void Write::finish() {
    if (!writer_->writesFilePerFrame()) {
        writer_->finish();
    }
}

}  // namespace Kex::Image
