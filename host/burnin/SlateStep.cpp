#include "host/burnin/SlateStep.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "host/geometry/Resampler.h"

namespace Corvel {
namespace {

// Of 75 % bars (SMPTE EG 1), and steps of grey.
constexpr std::array<std::array<float, 3>, 7> bars{{{0.75F, 0.75F, 0.75F},
                                                    {0.75F, 0.75F, 0},
                                                    {0, 0.75F, 0.75F},
                                                    {0, 0.75F, 0},
                                                    {0.75F, 0, 0.75F},
                                                    {0.75F, 0, 0},
                                                    {0, 0, 0.75F}}};
constexpr int greySteps = 11;

int rounded(double pixels) {
    return static_cast<int>(std::lround(pixels));
}

// Draws one slate from top to bottom. Works in the values of the display; `apply` makes them linear again.
class SlateStep : public PictureStep {
public:
    SlateStep(SlateTemplate what, BurnInContext where)
        : slate(std::move(what)),
          context(std::move(where)),
          drawer(textLibrary().createDrawer()),
          labels(slate.labels, slate.margin, onDisplay()) {}

    void apply(const FrameUnderWay& frame, Picture& picture) override;

private:
    // The same context for pictures that have the values of the display already.
    BurnInContext onDisplay() const {
        BurnInContext same = context;
        same.values.curve = nullptr;
        return same;
    }

    void layOut(const Picture& picture);
    void paintThumbnail(const Picture& shot, Picture& picture);
    void paintTexts(const FrameUnderWay& frame, Picture& picture);
    void paintBars(Picture& picture) const;
    int write(Picture& picture, const std::string& text, int x, int y, double size, bool bold, const Ink& ink,
              int widest);
    void fill(Picture& picture, const Window& window, const std::array<float, 3>& colour) const {
        paint(picture, {nullptr, context.values.white}, window, {colour, 1});
    }

    const SlateTemplate slate;
    const BurnInContext context;
    const std::unique_ptr<TextDrawer> drawer;
    LabelPainter labels;
    double unit = 0;  // pixels that sizes are shares of
    int across = 0;   // margins, pixels
    int down = 0;
    int barsTop = 0;   // row
    Window thumbnail;  // where there is room for one
};

void SlateStep::layOut(const Picture& picture) {
    unit = unitOf(picture, context.pixelAspect);
    down = rounded(slate.margin * unit);
    across = rounded(slate.margin * unit / context.pixelAspect);
    barsTop = picture.height() - down - (slate.bars ? rounded(0.1 * unit) : 0);
    const int width = rounded((picture.width() - 2 * across) * 0.46);
    thumbnail = {picture.width() - across - width, down, width, barsTop - 2 * down};
}

void SlateStep::paintThumbnail(const Picture& shot, Picture& picture) {
    const Raster from{shot.width(), shot.height(), context.pixelAspect};
    const Raster to{thumbnail.width, thumbnail.height, context.pixelAspect};
    Placement placement = placementOf(from, {0, 0, shot.width(), shot.height()}, to, Fit::Inside);
    // At the top, whatever room is left below.
    placement.down.begin = 0;
    Picture small;
    Resampler(placement, Filter::Lanczos).place(shot, small);
    for (int channel = 0; channel < 3; ++channel) {
        for (int y = 0; y < placement.down.count; ++y) {
            float* const row = small.row(channel, y) + placement.across.begin;
            const std::size_t count = static_cast<std::size_t>(placement.across.count);
            if (context.values.curve != nullptr) {
                context.values.curve->toStored(row, row, count, 1);
            }
            std::transform(row, row + count,
                           picture.row(channel, thumbnail.y + y) + thumbnail.x + placement.across.begin,
                           [this](float sample) { return std::clamp(sample, 0.0F, context.values.white); });
        }
    }
}

// One line; returns its height.
int SlateStep::write(Picture& picture, const std::string& text, int x, int y, double size, bool bold,
                     const Ink& ink, int widest) {
    const TextStyle style{slate.style.font, std::max(size * unit, 9.0), bold, context.pixelAspect,
                          std::max(widest, 1)};
    const DrawnText drawn = drawer->draw(text, style);
    context.faults->tell(style, drawn);
    const Coverage& letters = drawn.coverage;
    paint(picture, {nullptr, context.values.white}, {x, y, letters.width, letters.height}, {{}, 0}, letters,
          x, y, ink);
    return letters.height;
}

void SlateStep::paintTexts(const FrameUnderWay& frame, Picture& picture) {
    const auto lookup = [&](const std::string& field, const std::string& argument) {
        return context.lookup(frame, field, argument);
    };
    const int right = slate.thumbnail ? thumbnail.x - across / 2 : picture.width() - across;
    const int widest = right - across;
    int y = down;
    y += write(picture, slate.title.textWith(lookup), across, y, slate.style.size * 1.2, false, slate.faint,
               widest);
    y += write(picture, slate.heading.textWith(lookup), across, y, slate.style.size * 2.4, true,
               slate.style.letters, widest);
    y += rounded(slate.style.size * unit * 0.5);
    const int indent = rounded(slate.style.size * unit * 5.8 / context.pixelAspect);
    for (const SlateTemplate::Line& line : slate.lines) {
        const std::string text = line.text.textWith(lookup);
        const int room = barsTop - y;
        if (text.empty() || room < rounded(slate.style.size * unit * 1.3)) {
            continue;
        }
        write(picture, line.label, across, y, slate.style.size, false, slate.faint, indent);
        y += write(picture, text, across + indent, y, slate.style.size, slate.style.bold, slate.style.letters,
                   widest - indent);
    }
    labels.paintOn(frame, picture);
}

void SlateStep::paintBars(Picture& picture) const {
    const int width = picture.width() - 2 * across;
    const int height = picture.height() - down - barsTop;
    const auto edge = [&](int index, std::size_t of) {
        return across + static_cast<int>(std::int64_t{width} * index / static_cast<std::int64_t>(of));
    };
    const int half = height / 2;
    for (int i = 0; i < static_cast<int>(bars.size()); ++i) {
        const int left = edge(i, bars.size());
        fill(picture, {left, barsTop, edge(i + 1, bars.size()) - left, half},
             bars[static_cast<std::size_t>(i)]);
    }
    for (int i = 0; i < greySteps; ++i) {
        const float grey = static_cast<float>(i) / (greySteps - 1);
        const int left = edge(i, greySteps);
        fill(picture, {left, barsTop + half, edge(i + 1, greySteps) - left, height - half},
             {grey, grey, grey});
    }
}

void SlateStep::apply(const FrameUnderWay& frame, Picture& picture) {
    if (frame.position != 0) {
        return;
    }
    Picture made;
    made.reset(picture.width(), picture.height(), picture.channels());
    made.clear();
    layOut(made);
    fill(made, {0, 0, made.width(), made.height()}, slate.background.colour);
    if (slate.thumbnail && thumbnail.width > 0 && thumbnail.height > 0) {
        paintThumbnail(picture, made);
    }
    paintTexts(frame, made);
    if (slate.bars) {
        paintBars(made);
    }
    if (context.values.curve != nullptr) {
        float* const samples = made.row(0, 0);
        context.values.curve->toLinear(samples, samples, made.planeStride() * 3, 1);
    }
    std::swap(picture, made);
}

}  // namespace

std::unique_ptr<PictureStep> makeSlateStep(const SlateTemplate& slate, const BurnInContext& context) {
    return std::make_unique<SlateStep>(slate, context);
}

}  // namespace Corvel
