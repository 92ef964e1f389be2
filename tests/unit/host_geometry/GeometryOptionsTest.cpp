#include "host/app/GeometryOptions.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

struct Parsed {
    std::optional<FormatRequest> format;
    GeometryRequest geometry;
};

Parsed parsed(const std::string& options) {
    CLI::App app;
    Parsed values;
    declareGeometryOptions(app, values.format, values.geometry);
    app.parse(options);
    return values;
}

TEST(GeometryOptions, AFormatHasASizeAndMayHaveAnAspect) {
    const auto plain = parsed("--format 1920x1080").format;
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->width, 1920);
    EXPECT_EQ(plain->height, 1080);
    EXPECT_FALSE(plain->pixelAspect);
    EXPECT_NEAR(*parsed("--format 720x576:16/15").format->pixelAspect, 16.0 / 15, 1e-9);
    EXPECT_EQ(*parsed("--format 720x576:1.5").format->pixelAspect, 1.5);
}

TEST(GeometryOptions, ACropMayHaveACorner) {
    EXPECT_FALSE(parsed("--crop 1920x800").geometry.crop->corner);
    const auto crop = parsed("--crop 1920x800+10+140").geometry.crop;
    ASSERT_TRUE(crop && crop->corner);
    EXPECT_EQ(crop->height, 800);
    EXPECT_EQ(crop->corner->x, 10);
    EXPECT_EQ(crop->corner->y, 140);
}

TEST(GeometryOptions, AMaskMayLetLightThrough) {
    EXPECT_EQ(parsed("--mask 2.39").geometry.mask->aspect, 2.39);
    EXPECT_EQ(parsed("--mask 2.39").geometry.mask->opacity, 1);
    EXPECT_NEAR(parsed("--mask 16/9:0.5").geometry.mask->aspect, 16.0 / 9, 1e-9);
    EXPECT_EQ(parsed("--mask 16/9:0.5").geometry.mask->opacity, 0.5);
}

TEST(GeometryOptions, FitsAndFiltersHaveNames) {
    EXPECT_EQ(parsed("--fit Inside").geometry.fit, Fit::Inside);
    EXPECT_EQ(parsed("--filter catmull-rom").geometry.filter, Filter::CatmullRom);
    EXPECT_FALSE(parsed("").geometry.fit);
}

TEST(GeometryOptions, RefuseWhatHasAnotherForm) {
    for (const char* bad : {"--format 1920", "--format 1920x", "--format 1920x0", "--format 1920x1080:",
                            "--format 1920x1080:0", "--format 1920x1080x3", "--format 1920x1080:1/0",
                            "--crop 10", "--crop 10x10+1", "--crop 10x10-1+1", "--crop 10x10+1+1x",
                            "--mask 0", "--mask x", "--mask 2:2", "--mask 2:", "--fit best", "--filter x"}) {
        EXPECT_THROW(parsed(bad), CLI::ParseError) << bad;
    }
}

}  // namespace
}  // namespace Corvel
