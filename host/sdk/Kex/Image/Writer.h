#pragma once

#include <string>

#include "Kex/Image/Description.h"
#include "Kex/Image/Export.h"
#include "Kex/Image/Knob_Closure.h"
#include "Kex/Image/LUT.h"
#include "Kex/Image/Row.h"

namespace Kex::Image {

class Write;

/// Base of every file writer. A plug-in derives from it, registers how to make one (Writer::Description), and
/// the host makes one for each Write node whose file name has the registered extension.
///
/// Legal order of calls: `knobs` once after construction, then `knob_changed` at any time between frames;
/// `execute` once a frame, then `finish` once after the last one; then possibly the next render. One thread
/// at a time.
///
/// The virtual operations are called by their place in the table, so their order is part of the interface:
/// new ones are added at the end only. (The destructor takes two places.)
class KEX_IMAGE_API Writer {
public:
    class Description;

    explicit Writer(Write* node);
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// Declares the writer's settings.
    virtual void knobs(Knob_Closure& closure);
    /// A short text that says what the writer writes; never null.
    virtual const char* help();
    /// May throw, as Op's.
    virtual ~Writer() noexcept(false);
    /// Does nothing: its place marks the generation of this table.
    virtual void abi6_0_1();
    /// The curve for the file's samples, used where the application does not choose another one; null for
    /// none.
    virtual const LUT* defaultLUT();
    /// Whether every frame is a file of its own: the host then puts the frame number in each name and calls
    /// `finish` after each frame. True here.
    virtual bool writesFilePerFrame() const;
    /// Whether frames must come one after another in ascending order. False here.
    virtual bool needsFramesInOrder() const;
    /// How many pictures of the input a frame is made of. 1 here.
    virtual int split_input() const;
    /// The frame at which picture n of `split_input` is taken for output frame `frame`. `frame` itself here.
    virtual double inputContext(int n, double frame) const;
    /// Whether the file stands under a temporary name until `finish`, so that an older file of the final name
    /// stays readable during the render. False here.
    virtual bool appearsAtFinish() const;
    /// Writes the Write node's current frame. Failures are reported through the node's `error`.
    virtual void execute() = 0;
    /// Ends the file.
    virtual void finish();
    /// Told after a person changed a knob, whose field is stored already. 1 when the writer handled it, else
    /// 0.
    virtual int knob_changed(Knob* changed);

    /// Full path of the hidden temporary file, in the output's own folder, to write to while the render runs.
    /// The same until renameFromHash, then a new one. No file is made; none of that name exists when it is
    /// chosen.
    const std::string& createFileHash();
    /// The same without choosing one: empty between two renders. For the application, which names or removes
    /// it when a render ends badly.
    const std::string& temporaryFile() const { return temporaryFile_; }

protected:
    /// The node being written; outlives the writer.
    Write& write() const { return *write_; }

    /// Converts one channel of a row from linear light to what the file stores, with the curve of Write::lut:
    /// reads from[0 … width - 1], writes to[0], to[delta], to[2 delta], …. z is 0 red, 1 green, 2 blue, 3
    /// alpha; alpha passes without a curve. Nothing is clamped. With `alpha` (width floats, null for none)
    /// the curve is applied to the unpremultiplied colour: each sample is divided by its alpha, converted and
    /// multiplied by its alpha again, but for those whose alpha is 0 or less, which are converted as they
    /// are.
    void to_float(int z, float* to, const float* from, const float* alpha, int width, int delta = 1) const;
    /// The same for a channel of a row. What its codes become is looked up, where it has codes and `alpha` is
    /// null: the same values.
    void to_float(int z, float* to, const Row::Samples& from, const float* alpha, int width,
                  int delta = 1) const;

    /// Gives the temporary file its final name, replacing an older file at once, and syncs the folder; the
    /// temporary name is forgotten. Without a temporary file, or when the system refuses, the final name is
    /// left alone and the reason goes to the node's `error`.
    void renameFromHash();

private:
    const LUT& curveOf(int z) const;

    Write* write_;
    std::string temporaryFile_;
};

/// The record with which a plug-in offers a writer. Fill the fields, then call ctor2 with `add`; the record
/// takes itself out again when it is destroyed, that is, when the plug-in is unloaded.
class KEX_IMAGE_API Writer::Description : public Kex::Image::Description {
public:
    Description();
    ~Description();

    /// Extensions without the dot, separated by blanks, such as "mov". Letter case doesn't matter.
    const char* formats = nullptr;
    /// What a list of formats shows.
    const char* label = nullptr;
    /// Makes a writer on the node, owned by the caller; null when there is no memory. What it throws, the
    /// host gets.
    Writer* (*constructor)(Write* node) = nullptr;

    /// Registration callback for ctor2. The record must be a Writer::Description.
    static void add(Kex::Image::Description* record);
    /// The record registered last for that extension (without the dot), null when there is none.
    static const Description* find(const std::string& extension);
};

}  // namespace Kex::Image
