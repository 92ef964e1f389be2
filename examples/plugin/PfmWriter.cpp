// A plug-in that writes image sequences: one portable float map a frame, the plainest picture file that keeps
// linear light. It shows what every writer has to do; docs/writing-a-plugin.md walks through it.

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <new>
#include <vector>

#include "Kex/Image/Iop.h"
#include "Kex/Image/Version.h"
#include "Kex/Image/Write.h"
#include "Kex/Image/Writer.h"

namespace {

using namespace Kex::Image;

class PfmWriter : public Writer {
public:
    using Writer::Writer;

    void knobs(Knob_Closure& closure) override {
        closure(Knob_Float, Store_Float, &gain, "gain", "gain", nullptr);
        SetRange(closure, 0, 4);
        Tooltip(closure, "Every value is multiplied by this number.");
    }

    const char* help() override { return "Portable float map"; }

    // Linear light is stored as it is. (`defaultLUT` answers null here, as Writer's does.)

    void execute() override {
        const int width = write().format().width();
        const int height = write().format().height();
        std::ofstream file(createFileHash(), std::ios::binary);
        // A negative scale says that the floats are little-endian.
        file << "PF\n"
             << width << ' ' << height << '\n'
             << (std::endian::native == std::endian::little ? "-1.0\n" : "1.0\n");

        write().input(0)->request(0, 0, width, height, Mask_RGB, 1);
        Row row(0, width);
        std::vector<float> line(static_cast<std::size_t>(width) * 3);
        // The file begins with the lowest row, as the host counts them.
        for (int y = 0; y < height && !write().aborted(); ++y) {
            write().inputnget(0, y, 0, width, Mask_RGB, row);
            for (int z = 0; z < 3; ++z) {
                to_float(z, line.data() + z, row.samples(static_cast<Channel>(z + 1)), nullptr, width, 3);
            }
            std::for_each(line.begin(), line.end(), [this](float& value) { value *= gain; });
            file.write(reinterpret_cast<const char*>(line.data()),
                       static_cast<std::streamsize>(line.size() * sizeof(float)));
            write().progressFraction(static_cast<double>(y + 1) / height);
        }
        file.close();
        if (!file) {
            write().error("Couldn't write %s: %s", write().filename().c_str(), std::strerror(errno));
        }
    }

    // After each frame, since every frame is a file of its own here.
    void finish() override { renameFromHash(); }

private:
    float gain = 1;
};

class Registration {
public:
    Registration() {
        record.buildStamp = KEX_IMAGE_BUILD_STAMP;
        record.formats = "pfm";
        record.label = "pfm";
        record.constructor = [](Write* node) -> Writer* { return new (std::nothrow) PfmWriter(node); };
        record.ctor2(Writer::Description::add);
    }

private:
    Writer::Description record;
};

// Made while the plug-in is loaded, gone when it is unloaded.
const Registration registration;

}  // namespace
