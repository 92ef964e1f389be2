#include "worker/picture/PictureConverter.h"

#include "worker/picture/StraightAlpha.h"
#include "worker/picture/StripConverter.h"
#include "worker/picture/ThreadTeam.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>

namespace Morvane::Worker {

const float* RowSource::pixels(int y, std::vector<float>& scratch) const {
    const auto width = static_cast<std::size_t>(plan.width);
    const float* source = rgba + 4 * static_cast<std::size_t>(y) * width;
    if (plan.alpha != AlphaMode::Straight)
        return source;
    scratch.resize(4 * width);
    divideAlphaOut(source, scratch.data(), width, plan.curve);
    return scratch.data();
}

namespace {

std::unique_ptr<StripConverter> makeConverter(const EncodingPlan& plan, int members) {
    if (plan.picture->order == SampleOrder::Palette)
        return makePaletteConverter(plan, members);
    const bool rgb = (av_pix_fmt_desc_get(plan.picture->format)->flags & AV_PIX_FMT_FLAG_RGB) != 0;
    return rgb ? makeRgbConverter(plan, members) : makeYcbcrConverter(plan, members);
}

}  // namespace

class PictureConverter::Strips {
public:
    explicit Strips(const EncodingPlan& encodingPlan)
        : plan(encodingPlan), team(plan.threads), converter(makeConverter(plan, team.size())) {}

    void convert(const float* rgba, AVFrame& target) {
        const RowSource rows(plan, rgba);
        const int rowsEach = converter->stripRows();
        const std::size_t count = (plan.height + rowsEach - 1) / rowsEach;
        team.share(count, [&](std::size_t strip, int member) {
            const int first = static_cast<int>(strip) * rowsEach;
            converter->convert(rows, first, std::min(rowsEach, plan.height - first), member, target);
        });
    }

private:
    const EncodingPlan plan;
    ThreadTeam team;
    const std::unique_ptr<StripConverter> converter;
};

PictureConverter::PictureConverter(const EncodingPlan& plan) : strips(std::make_unique<Strips>(plan)) {}
PictureConverter::~PictureConverter() = default;

void PictureConverter::convert(const float* rgba, AVFrame& target) {
    strips->convert(rgba, target);
}

}  // namespace Morvane::Worker
