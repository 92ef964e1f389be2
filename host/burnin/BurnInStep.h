#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "host/burnin/FieldText.h"
#include "host/burnin/Ink.h"
#include "host/burnin/Template.h"
#include "host/images/PictureStep.h"

namespace Corvel {

/// What fonts could not do, each thing told once a render. Any thread.
class FontFaults {
public:
    void tell(const TextStyle& style, const DrawnText& text);

private:
    void warnOnce(const std::string& text);

    std::mutex mutex;
    std::set<std::string> told;
};

/// The fields of the frame that is under way.
using FrameLookup = std::function<FieldValue(const FrameUnderWay& frame, const std::string& field,
                                             const std::string& argument)>;

/// What labels are painted for.
struct BurnInContext {
    DisplayValues values;
    double pixelAspect = 1;
    FrameLookup lookup;
    std::shared_ptr<FontFaults> faults;
};

/// Paints labels on pictures. A text is drawn again only when it has changed. One thread.
class LabelPainter {
public:
    LabelPainter(std::vector<Label> labels, double margin, BurnInContext context);
    ~LabelPainter();

    void paintOn(const FrameUnderWay& frame, Picture& picture);

private:
    struct Drawn;

    void draw(std::size_t index, const FrameUnderWay& frame, const Picture& picture);
    int columnsBeside(Place place) const;

    const std::vector<Label> labels;
    const double margin;
    const BurnInContext context;
    const std::unique_ptr<TextDrawer> drawer;
    std::vector<Drawn> drawn;
};

/// The step that paints the labels of a template on every picture but that of position `except` (a slate's),
/// if there is one. Throws std::runtime_error where the text library cannot be loaded.
std::unique_ptr<PictureStep> makeBurnInStep(const BurnInTemplate& burnIn, const BurnInContext& context,
                                            bool exceptFirst);

/// What sizes in templates are shares of, in pixels.
double unitOf(const Picture& picture, double pixelAspect);

}  // namespace Corvel
