#include "host/render/SettingsText.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

TEST(SettingsText, AddsBehindWhatWasGiven) {
    SettingsText sut("bitdepth=10");
    sut.add("threads", "2");
    EXPECT_EQ(sut.text(), "bitdepth=10:threads=2");
}

TEST(SettingsText, BeginsWithTheFirstAddition) {
    SettingsText sut("");
    sut.add("threads", "2");
    EXPECT_EQ(sut.text(), "threads=2");
}

TEST(SettingsText, LeavesAKeyAloneThatWasGiven) {
    SettingsText sut("aspect=2/1:threads=3");
    sut.add("aspect", "1/1");
    sut.add("threads", "8");
    EXPECT_EQ(sut.text(), "aspect=2/1:threads=3");
}

TEST(SettingsText, AddsAKeyOnce) {
    SettingsText sut("");
    sut.add("meta.title", "one");
    sut.add("meta.title", "two");
    EXPECT_EQ(sut.text(), "meta.title=one");
}

TEST(SettingsText, FindsKeysBehindEscapedAndQuotedSeparators) {
    const SettingsText sut("meta.title=a\\:threads=1:meta.comment='b:aspect=2':reel=A");
    EXPECT_TRUE(sut.has("meta.title"));
    EXPECT_TRUE(sut.has("meta.comment"));
    EXPECT_TRUE(sut.has("reel"));
    EXPECT_FALSE(sut.has("threads"));
    EXPECT_FALSE(sut.has("aspect"));
}

TEST(SettingsText, GivesTheValueThatCounts) {
    const SettingsText sut("alpha=none: alpha = straight :reel='a:b'");
    EXPECT_EQ(sut.value("alpha"), "straight");
    EXPECT_EQ(sut.value("reel"), "a:b");
    EXPECT_EQ(sut.value("curve"), "");
}

TEST(SettingsText, PassesOverBlanksAroundKeys) {
    EXPECT_TRUE(SettingsText("a=1: threads =2").has("threads"));
}

TEST(SettingsText, SurvivesTextsThatAreNone) {
    for (const char* text : {"=", ":", "a", "a=", "a=b:", "'", "\\", "a='b", "::=="}) {
        SettingsText sut(text);
        sut.add("threads", "2");
        EXPECT_TRUE(sut.has("threads")) << text;
    }
}

TEST(SettingsText, EscapesWhatTheFormNeeds) {
    SettingsText sut("");
    sut.add("meta.note", R"( a:b=c\d'e )");
    EXPECT_EQ(sut.text(), R"(meta.note=\ a\:b\=c\\d\'e\ )");
    EXPECT_FALSE(SettingsText(sut.text()).has("b"));
}

}  // namespace
}  // namespace Corvel
