#include "host/colour_library/CompiledTransform.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "host/colour_library/CurveTable.h"
#include "host/colour_library/RowKernels.h"

namespace Corvel {
namespace {

namespace OCIO = OCIO_NAMESPACE;

class MatrixTransform : public ColourTransform {
public:
    explicit MatrixTransform(const ColourMatrix& wanted) : matrix(wanted) {}
    void apply(float* red, float* green, float* blue, std::size_t count, std::vector<float>&) const override {
        applyMatrix(matrix, red, green, blue, count);
    }

private:
    const ColourMatrix matrix;
};

class TableTransform : public ColourTransform {
public:
    explicit TableTransform(CurveTable wanted) : table(std::move(wanted)) {}
    void apply(float* red, float* green, float* blue, std::size_t count, std::vector<float>&) const override {
        table.apply(red, green, blue, count);
    }

private:
    const CurveTable table;
};

// Left to the library, which wants pixels rather than rows.
class LibraryTransform : public ColourTransform {
public:
    explicit LibraryTransform(const OCIO::ConstProcessorRcPtr& processor)
        : cpu(processor->getDefaultCPUProcessor()) {}

    void applyPixels(float* pixels, std::size_t count) const {
        OCIO::PackedImageDesc image(pixels, static_cast<long>(count), 1, OCIO::CHANNEL_ORDERING_RGBA);
        cpu->apply(image);
    }
    void apply(float* red, float* green, float* blue, std::size_t count,
               std::vector<float>& scratch) const override {
        scratch.resize(4 * count);
        packPixels(red, green, blue, count, scratch.data());
        applyPixels(scratch.data(), count);
        unpackPixels(scratch.data(), count, red, green, blue);
    }

private:
    const OCIO::ConstCPUProcessorRcPtr cpu;
};

class Chain : public ColourTransform {
public:
    void add(std::unique_ptr<const ColourTransform> link) { links.push_back(std::move(link)); }
    void apply(float* red, float* green, float* blue, std::size_t count,
               std::vector<float>& scratch) const override {
        for (const auto& link : links) {
            link->apply(red, green, blue, count, scratch);
        }
    }

    /// The same for one pixel. Answers the largest magnitude on the way.
    float tryPixel(std::array<float, 3>& pixel, std::vector<float>& scratch) const {
        float largest = 0;
        for (const auto& link : links) {
            link->apply(&pixel[0], &pixel[1], &pixel[2], 1, scratch);
            for (const float value : pixel) {
                largest = std::max(largest, std::abs(value));
            }
        }
        return largest;
    }

private:
    std::vector<std::unique_ptr<const ColourTransform>> links;
};

// Who does a part of the chain. Alpha is 1 all along, so what touches it does not matter.
enum class Kind { Matrix, Separate, Other };

Kind kindOf(const OCIO::ConstTransformRcPtr& transform) {
    switch (transform->getTransformType()) {
        case OCIO::TRANSFORM_TYPE_MATRIX:
            return Kind::Matrix;
        case OCIO::TRANSFORM_TYPE_LUT1D: {
            const auto lut = OCIO_DYNAMIC_POINTER_CAST<const OCIO::Lut1DTransform>(transform);
            return lut->getHueAdjust() == OCIO::HUE_NONE ? Kind::Separate : Kind::Other;
        }
        case OCIO::TRANSFORM_TYPE_EXPONENT:
        case OCIO::TRANSFORM_TYPE_EXPONENT_WITH_LINEAR:
        case OCIO::TRANSFORM_TYPE_LOG:
        case OCIO::TRANSFORM_TYPE_LOG_AFFINE:
        case OCIO::TRANSFORM_TYPE_LOG_CAMERA:
        case OCIO::TRANSFORM_TYPE_GRADING_RGB_CURVE:
        case OCIO::TRANSFORM_TYPE_RANGE:
            return Kind::Separate;
        default:
            return Kind::Other;
    }
}

ColourMatrix matrixOf(const OCIO::ConstTransformRcPtr& transform) {
    // As the library applies it, its direction included.
    const OCIO::ConstProcessorRcPtr processor = OCIO::Config::CreateRaw()->getProcessor(transform);
    const LibraryTransform library(processor);
    std::array<float, 16> pixels{0, 0, 0, 1, 1, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1};
    library.applyPixels(pixels.data(), 4);
    ColourMatrix matrix;
    for (std::size_t to = 0; to < 3; ++to) {
        matrix.offsets[to] = pixels[to];
        for (std::size_t from = 0; from < 3; ++from) {
            matrix.cells[3 * to + from] = pixels[4 * (from + 1) + to] - pixels[to];
        }
    }
    return matrix;
}

std::unique_ptr<const ColourTransform> linkOf(Kind kind, const OCIO::ConstGroupTransformRcPtr& part) {
    if (kind == Kind::Matrix) {
        return std::make_unique<MatrixTransform>(matrixOf(part));
    }
    auto library = std::make_unique<LibraryTransform>(OCIO::Config::CreateRaw()->getProcessor(part));
    if (kind == Kind::Separate) {
        auto table =
            CurveTable::of([&](float* pixels, std::size_t count) { library->applyPixels(pixels, count); });
        if (table) {
            return std::make_unique<TableTransform>(std::move(*table));
        }
    }
    return library;
}

// Parts of one kind that follow each other become one link.
std::shared_ptr<const Chain> chainOf(const OCIO::ConstGroupTransformRcPtr& group) {
    auto chain = std::make_shared<Chain>();
    for (int i = 0; i < group->getNumTransforms();) {
        const Kind kind = kindOf(group->getTransform(i));
        const OCIO::GroupTransformRcPtr part = OCIO::GroupTransform::Create();
        for (; i < group->getNumTransforms() && kindOf(group->getTransform(i)) == kind; ++i) {
            part->appendTransform(group->getTransform(i)->createEditableCopy());
        }
        chain->add(linkOf(kind, part));
    }
    return chain;
}

// Colours from dark to bright, some of them negative, greys and saturated ones among them.
std::vector<std::array<float, 3>> trialColours() {
    std::vector<std::array<float, 3>> colours(4096);
    std::uint32_t state = 1;
    const auto next = [&state] {
        state = state * 1664525U + 1013904223U;
        return static_cast<double>(state >> 8) / 16777216.0;
    };
    for (std::size_t i = 0; i < colours.size(); ++i) {
        const double level = std::exp2(-16 + 22 * next());
        for (float& sample : colours[i]) {
            const double saturated = i % 2 == 0 ? next() : std::pow(next(), 4) - 0.02;
            sample = static_cast<float>(i % 8 == 0 ? level : i % 3 == 0 ? next() : level * saturated);
        }
    }
    return colours;
}

// Within a quarter of a 10-bit code value for every colour that was tried. What becomes larger than white on
// the way loses accordingly when matrices subtract it again, with the library too; what becomes larger than
// any picture's values means nothing.
bool areAlike(const Chain& chain, const LibraryTransform& library) {
    constexpr double tolerance = 0.25 / 1023;
    std::vector<float> scratch;
    for (std::array<float, 3>& own : trialColours()) {
        std::array<float, 3> wanted = own;
        const float largest = chain.tryPixel(own, scratch);
        if (!(largest < 1e5F)) {
            continue;
        }
        library.apply(&wanted[0], &wanted[1], &wanted[2], 1, scratch);
        for (std::size_t i = 0; i < 3; ++i) {
            if (!(std::abs(own[i] - wanted[i]) <= tolerance * std::max(1.0F, largest))) {
                return false;
            }
        }
    }
    return true;
}

}  // namespace

std::shared_ptr<const ColourTransform> compileTransform(const OCIO::ConstProcessorRcPtr& processor) {
    const auto library = std::make_shared<const LibraryTransform>(processor);
    const auto chain =
        chainOf(processor->getOptimizedProcessor(OCIO::OPTIMIZATION_DEFAULT)->createGroupTransform());
    if (areAlike(*chain, *library)) {
        return chain;
    }
    return library;
}

}  // namespace Corvel
