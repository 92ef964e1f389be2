#pragma once

#include <functional>
#include <string>
#include <utility>

#include "Kex/Image/ChannelSet.h"
#include "Kex/Image/Export.h"
#include "Kex/Image/Format.h"
#include "Kex/Image/LUT.h"
#include "Kex/Image/Op.h"
#include "Kex/Image/Row.h"

namespace Kex::Image {

class Writer;

/// The node that writes frames to a file. It owns the writer that the file's extension calls for and shows
/// the writer's knobs as its own.
///
/// An application makes one with its Application, connects input 0 to its own Iop (rows and metadata), sets
/// the format and depth, calls createWriter, sets knobs, and then calls execute for every frame and finish at
/// the end.
class KEX_IMAGE_API Write : public Op {
public:
    /// A node for that output file (a path whose extension chooses the writer).
    Write(Application& owner, std::string path);
    /// Destroys the knobs, then the writer; what its destructor throws comes out.
    ~Write() noexcept(false) override;

    // What a writer asks.

    /// Path of the file; where every frame is a file of its own, the current frame's.
    const std::string& filename() const { return filename_; }
    const Format& format() const { return format_; }
    /// Number of channels that the file should have: 3 without alpha, 4 with it.
    int depth() const { return depth_; }
    /// The current frame; need not be a whole number.
    double frame() const { return frame_; }
    /// The curve that Writer::to_float applies: the application's, else the writer's default. Null for none.
    const LUT* lut() const;
    /// Fills `row` with row y of input n, columns x to r, as Iop::get. An input that isn't connected reads as
    /// 0.
    void inputnget(int n, int y, int x, int r, ChannelSet channels, Row& row) const;

    // What an application does.

    void setFormat(const Format& newFormat) { format_ = newFormat; }
    void setDepth(int channels) { depth_ = channels; }
    /// Chooses the curve instead of the writer's default; null to take the default again.
    void setLut(const LUT* curve) { chosenLut = curve; }

    /// How the file of a frame is called, for writers that make a file of every frame
    /// (Writer::writesFilePerFrame). Without it all frames have the node's own name.
    void setFrameNames(std::function<std::string(int frame)> names) { frameNames = std::move(names); }

    /// Makes the writer and its knobs. Call it once, after setFormat and setDepth. Throws std::runtime_error
    /// when no writer is registered for the extension or there is no memory; passes on what the writer's
    /// constructor throws.
    void createWriter();
    /// The writer; null before createWriter.
    Writer* writer() const { return writer_; }

    /// Tells the writer that a person changed this knob, whose new value is set already. Whether the writer
    /// handled it.
    bool knobChanged(Knob& changed);
    /// Writes one frame; needs a writer. Failures are told by Application::error and by failed(). Where every
    /// frame is a file of its own, the file is ended too, unless the node has failed.
    void execute(double frame);
    /// Ends the file; needs a writer. Also after failed frames. Nothing to do where every frame is a file of
    /// its own.
    void finish();

private:
    std::string filename_;
    Format format_;
    int depth_ = 3;
    double frame_ = 0;
    const LUT* chosenLut = nullptr;
    std::function<std::string(int)> frameNames;
    Writer* writer_ = nullptr;  // not a smart pointer: its destructor may throw
};

}  // namespace Kex::Image
