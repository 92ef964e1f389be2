#include "host/images/ChannelWords.h"

#include <gtest/gtest.h>

#include "host/images/PictureChoice.h"

namespace Corvel {
namespace {

using Channels = std::array<std::string, 4>;

std::string faultOf(const std::string& text) {
    try {
        parseChannels(text);
    } catch (const BadPictureChoice& error) {
        return error.what();
    }
    return "none";
}

TEST(ChannelWords, ReadsWhichChannelBecomesWhich) {
    EXPECT_EQ(parseChannels("R=beauty.red,G=beauty.green,B=beauty.blue,A=matte.a"),
              (Channels{"beauty.red", "beauty.green", "beauty.blue", "matte.a"}));
    EXPECT_EQ(parseChannels("a=matte.a"), (Channels{"", "", "", "matte.a"}));
    EXPECT_EQ(parseChannels("R=Z,G=Z,B=Z"), (Channels{"Z", "Z", "Z", ""}));
    EXPECT_EQ(parseChannels("A=x=y"), (Channels{"", "", "", "x=y"}));
}

TEST(ChannelWords, ReadsListsInOrder) {
    EXPECT_EQ(parseChannels("B,G,R"), (Channels{"B", "G", "R", ""}));
    EXPECT_EQ(parseChannels("R,G,B,matte.a"), (Channels{"R", "G", "B", "matte.a"}));
    EXPECT_EQ(parseChannels("Z"), (Channels{"Z", "Z", "Z", ""}));
}

TEST(ChannelWords, SaysWhatIsWrong) {
    EXPECT_NE(faultOf("R=a,R=b").find("R stands twice"), std::string::npos);
    EXPECT_NE(faultOf("Z,Z,Z").find("R=Z,G=Z,B=Z"), std::string::npos);
    EXPECT_NE(faultOf("R=,G=b").find("R= names no channel"), std::string::npos);
    EXPECT_NE(faultOf("R,,B").find("name is empty"), std::string::npos);
    EXPECT_NE(faultOf("").find("name is empty"), std::string::npos);
    EXPECT_NE(faultOf("R,G").find("one channel, three or four"), std::string::npos);
    EXPECT_NE(faultOf("R,G,B,A,Z").find("one channel, three or four"), std::string::npos);
    for (const char* text : {"X=a", "RG=a", "=a", "R=a,b"}) {
        EXPECT_NE(faultOf(text).find("an equals sign"), std::string::npos) << text;
    }
}

}  // namespace
}  // namespace Corvel
