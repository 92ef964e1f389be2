#include "host/images/NameMatch.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

using Names = std::vector<std::string>;

TEST(NameMatch, FindsANameWhateverTheLetterCaseIfOnlyOneIsMeant) {
    EXPECT_EQ(findName({"Beauty", "beauty"}, "beauty"), 1);
    EXPECT_EQ(findName({"Beauty", "depth"}, "beauty"), 0);
    EXPECT_EQ(findName({"Beauty", "BEAUTY"}, "beauty"), -1);
    EXPECT_EQ(findName({"Beauty", "Beauty"}, "beauty"), 0) << "one name twice";
    EXPECT_EQ(findName({}, "beauty"), -1);
}

TEST(NameMatch, GuessesWhatWasMeant) {
    EXPECT_EQ(guessFor({"depth", "beauty"}, "beuty"), "; did you mean \"beauty\"?");
    EXPECT_EQ(guessFor({"depth", "light.specular"}, "spec"), "; did you mean \"light.specular\"?");
    EXPECT_EQ(guessFor({"depth", "beauty"}, "crypto"), "");
    EXPECT_EQ(guessFor({}, "x"), "");
}

TEST(NameMatch, ListsEachNameOnce) {
    EXPECT_EQ(listed({"a", "b", "a"}), "a, b");
    EXPECT_EQ(listed({}), "none");
    EXPECT_EQ(listed({""}), "\"\"");
}

TEST(NameMatch, KeepsMessagesOnOneLineOfSomeLength) {
    EXPECT_EQ(inQuotes("a\nb\x1b"), "\"a?b?\"");
    EXPECT_EQ(printable("Größe \xff\xc3 \xe2\x82", 80), "Größe ?? ??");
    EXPECT_EQ(printable("ööö", 3), "öö…");
    EXPECT_LT(inQuotes(std::string(10'000, 'x')).size(), 100U);
    Names many;
    for (int i = 0; i < 1000; ++i) {
        many.push_back(std::to_string(i));
    }
    EXPECT_NE(listed(many).find("and 960 more"), std::string::npos);
    EXPECT_LT(listed(many).size(), 300U);
}

}  // namespace
}  // namespace Corvel
