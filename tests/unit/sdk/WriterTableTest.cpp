#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "Kex/Image/Writer.h"

namespace Kex::Image {
namespace {

/// Place of a virtual operation in the class's table. A pointer to a virtual member holds the byte offset of
/// its place, plus 1 (Itanium C++ ABI, 2.3).
template <typename Member>
std::ptrdiff_t slotOf(Member member) {
    std::ptrdiff_t parts[2];
    static_assert(sizeof(member) == sizeof(parts));
    std::memcpy(parts, &member, sizeof(parts));
    return (parts[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(WriterTable, HasEveryOperationInItsPlace) {
    EXPECT_EQ(slotOf(&Writer::knobs), 0);
    EXPECT_EQ(slotOf(&Writer::help), 1);
    // 2 and 3 are the destructor's.
    EXPECT_EQ(slotOf(&Writer::abi6_0_1), 4);
    EXPECT_EQ(slotOf(&Writer::defaultLUT), 5);
    EXPECT_EQ(slotOf(&Writer::writesFilePerFrame), 6);
    EXPECT_EQ(slotOf(&Writer::needsFramesInOrder), 7);
    EXPECT_EQ(slotOf(&Writer::split_input), 8);
    EXPECT_EQ(slotOf(&Writer::inputContext), 9);
    EXPECT_EQ(slotOf(&Writer::appearsAtFinish), 10);
    EXPECT_EQ(slotOf(&Writer::execute), 11);
    EXPECT_EQ(slotOf(&Writer::finish), 12);
    EXPECT_EQ(slotOf(&Writer::knob_changed), 13);
}

class LeastWriter : public Writer {
public:
    using Writer::Writer;
    void execute() override {}
};

TEST(Writer, AnswersForOneFileAFrameUnlessItSaysOtherwise) {
    LeastWriter sut(nullptr);

    EXPECT_STREQ(sut.help(), "");
    EXPECT_EQ(sut.defaultLUT(), nullptr);
    EXPECT_TRUE(sut.writesFilePerFrame());
    EXPECT_FALSE(sut.needsFramesInOrder());
    EXPECT_FALSE(sut.appearsAtFinish());
    EXPECT_EQ(sut.split_input(), 1);
    EXPECT_EQ(sut.inputContext(0, 12.5), 12.5);
    EXPECT_EQ(sut.knob_changed(nullptr), 0);
}

}  // namespace
}  // namespace Kex::Image
