#include "host/colour/DisplayTags.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

TEST(DisplayTagsTest, KnowsDisplaysByTheNamesThatConfigurationsGiveThem) {
    struct Known {
        const char* name;
        DisplayTags tags;
    };
    const DisplayTags srgb{"bt709", "iec61966-2-1", "bt709"};
    const DisplayTags television{"bt709", "bt709", "bt709"};
    const DisplayTags pq{"bt2020", "smpte2084", "bt2020nc"};
    const DisplayTags hlg{"bt2020", "arib-std-b67", "bt2020nc"};
    const DisplayTags displayP3{"smpte432", "iec61966-2-1", "bt709"};
    for (const Known& known : {Known{"sRGB - Display", srgb},
                               {"sRGB", srgb},
                               {"srgb_display", srgb},
                               {"Output - sRGB", srgb},
                               {"Rec.1886 Rec.709 - Display", television},
                               {"rec709", television},
                               {"Gamma 2.4 Rec.709", television},
                               {"Gamma 2.2 Rec.709", {"bt709", "gamma22", "bt709"}},
                               {"Rec.1886 Rec.2020 - Display", {"bt2020", "bt709", "bt2020nc"}},
                               {"Rec.2020", {"bt2020", "bt2020-10", "bt2020nc"}},
                               {"Rec.2100-PQ - Display", pq},
                               {"Rec.2020 ST2084 1000 nits", pq},
                               {"Rec.2100-HLG - Display", hlg},
                               {"Display P3 - Display", displayP3},
                               {"P3-D65 - Display", {"smpte432", "smpte428", "bt709"}},
                               {"ST2084-P3-D65 - Display", {"smpte432", "smpte2084", "bt709"}},
                               {"P3-DCI", {"smpte431", "smpte428", "bt709"}},
                               {"Linear Rec.709 (sRGB)", {"bt709", "linear", "bt709"}}}) {
        const DisplayTags found = tagsOf({known.name});
        EXPECT_EQ(found, known.tags) << known.name << ": " << found.primaries << " " << found.transfer;
    }
}

TEST(DisplayTagsTest, SaysNothingAboutWhatHasNoTag) {
    EXPECT_EQ(tagsOf({"ARRI LogC4"}), DisplayTags());
    EXPECT_EQ(tagsOf({"Client Monitor"}), DisplayTags());
    EXPECT_EQ(tagsOf({"S-Log3 Rec.709"}).transfer, "");
    EXPECT_EQ(tagsOf({"ACEScg"}), (DisplayTags{"", "linear", ""}));
    EXPECT_EQ(tagsOf({}), DisplayTags());
}

TEST(DisplayTagsTest, TakesTheFirstNameThatSaysSomething) {
    EXPECT_EQ(tagsOf({"Monitor 3", "rec1886_rec709_display", "sRGB"}).transfer, "bt709");
}

}  // namespace
}  // namespace Corvel
