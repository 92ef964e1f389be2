#include "host/burnin/BurnInStep.h"

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace Corvel {
namespace {

// Below that, letters are a blur.
constexpr double smallestSize = 9;

int columnOf(Place place) {
    return static_cast<int>(place) % 3;
}

int rowOf(Place place) {
    return static_cast<int>(place) / 3;
}

int rounded(double pixels) {
    return static_cast<int>(std::lround(pixels));
}

// Of a part of `size` within `all`, at the first or second edge or in the middle.
int placed(int where, int all, int size, int margin) {
    const std::array<int, 3> positions{margin, (all - size) / 2, all - margin - size};
    return positions[static_cast<std::size_t>(where)];
}

class BurnInStep : public PictureStep {
public:
    BurnInStep(const BurnInTemplate& burnIn, const BurnInContext& context, bool butFirst)
        : painter(burnIn.labels, burnIn.margin, context), exceptFirst(butFirst) {}

    void apply(const FrameUnderWay& frame, Picture& picture) override {
        if (!exceptFirst || frame.position != 0) {
            painter.paintOn(frame, picture);
        }
    }

private:
    LabelPainter painter;
    const bool exceptFirst;
};

}  // namespace

void FontFaults::warnOnce(const std::string& text) {
    const std::lock_guard lock(mutex);
    if (told.insert(text).second) {
        spdlog::warn(text);
    }
}

void FontFaults::tell(const TextStyle& style, const DrawnText& text) {
    if (!text.lacking.empty()) {
        warnOnce(fmt::format("no font here has \"{}\"; boxes stand for it", text.lacking));
    }
    if (style.family == LabelStyle().font) {
        return;  // the usual fonts are a list: any of them will do
    }
    if (!text.otherFamily.empty()) {
        warnOnce(fmt::format("there is no font \"{}\"; {} is used", style.family, text.otherFamily));
    } else if (!text.borrowed.empty()) {
        warnOnce(fmt::format("the font \"{}\" has no \"{}\"; another one is used for it", style.family,
                             text.borrowed));
    }
}

double unitOf(const Picture& picture, double pixelAspect) {
    return std::min(static_cast<double>(picture.height()), picture.width() * pixelAspect * 9 / 16);
}

// One label as it was last drawn.
struct LabelPainter::Drawn {
    std::string text;
    TextStyle style;
    Coverage letters;
};

LabelPainter::LabelPainter(std::vector<Label> what, double edge, BurnInContext where)
    : labels(std::move(what)),
      margin(edge),
      context(std::move(where)),
      drawer(textLibrary().createDrawer()),
      drawn(labels.size()) {}

LabelPainter::~LabelPainter() = default;

// How many labels share the width, so that they do not cover each other.
int LabelPainter::columnsBeside(Place place) const {
    std::array<bool, 3> taken{};
    for (const Label& label : labels) {
        if (rowOf(label.place) == rowOf(place)) {
            taken[static_cast<std::size_t>(columnOf(label.place))] = true;
        }
    }
    return static_cast<int>(std::count(taken.begin(), taken.end(), true));
}

void LabelPainter::draw(std::size_t index, const FrameUnderWay& frame, const Picture& picture) {
    const Label& label = labels[index];
    const double unit = unitOf(picture, context.pixelAspect);
    const int columns = columnsBeside(label.place);
    // The middle one is in the middle: beside it there is as much room at both sides.
    const double room = picture.width() - 2 * margin * unit / context.pixelAspect;
    TextStyle style{label.style.font, std::max(label.style.size * unit, smallestSize), label.style.bold,
                    context.pixelAspect, std::max(1, rounded(room / columns * 0.95))};
    std::string text = label.text.textWith([&](const std::string& field, const std::string& argument) {
        return context.lookup(frame, field, argument);
    });
    Drawn& last = drawn[index];
    if (text == last.text && style == last.style) {
        return;
    }
    DrawnText fresh = drawer->draw(text, style);
    context.faults->tell(style, fresh);
    last = {std::move(text), std::move(style), std::move(fresh.coverage)};
}

void LabelPainter::paintOn(const FrameUnderWay& frame, Picture& picture) {
    const int down = rounded(margin * unitOf(picture, context.pixelAspect));
    const int across = rounded(down / context.pixelAspect);
    std::array<int, 9> heights{};  // of all labels at a place
    const auto paddingOf = [](const Drawn& label) { return rounded(label.style.size * 0.3); };
    const auto heightOf = [&](const Drawn& label) { return label.letters.height + paddingOf(label); };
    for (std::size_t i = 0; i < labels.size(); ++i) {
        draw(i, frame, picture);
        heights[static_cast<std::size_t>(labels[i].place)] +=
            drawn[i].letters.width > 0 ? heightOf(drawn[i]) : 0;
    }
    std::array<int, 9> used{};
    for (std::size_t i = 0; i < labels.size(); ++i) {
        const Drawn& label = drawn[i];
        if (label.letters.width == 0) {
            continue;
        }
        const std::size_t place = static_cast<std::size_t>(labels[i].place);
        const int padding = rounded(paddingOf(label) / context.pixelAspect);
        const int width = label.letters.width + 2 * padding;
        const int x = placed(columnOf(labels[i].place), picture.width(), width, across);
        const int y = placed(rowOf(labels[i].place), picture.height(), heights[place], down) + used[place];
        used[place] += heightOf(label);
        paint(picture, context.values, {x, y, width, heightOf(label)}, labels[i].style.box, label.letters,
              x + padding, y + paddingOf(label) / 2, labels[i].style.letters);
    }
}

std::unique_ptr<PictureStep> makeBurnInStep(const BurnInTemplate& burnIn, const BurnInContext& context,
                                            bool exceptFirst) {
    return std::make_unique<BurnInStep>(burnIn, context, exceptFirst);
}

}  // namespace Corvel
