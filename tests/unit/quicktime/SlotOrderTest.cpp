// The order of the virtual operations is part of the binary interface. A pointer to a virtual operation holds
// its place in the table (in the Itanium C++ ABI); the destructor takes the first two places.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <type_traits>

#include "quicktime/QuickTimeCodecReaderIPCController.h"
#include "quicktime/QuickTimeCodecTask.h"
#include "quicktime/QuickTimeCodecWriterIPCController.h"
#include "quicktime/QuickTimeVideoOutputIPCController.h"

namespace {

using namespace Morvane::QuickTime;
using Morvane::ProcessBridge::Controller;

template <typename Operation>
std::size_t slotOf(Operation operation) {
    constexpr std::size_t destructors = 2;
    std::size_t value = 0;
    std::memcpy(&value, &operation, sizeof value);
    return (value - 1) / sizeof(void*) - destructors + 1;
}

TEST(WriterInterface, KeepsTheOrderOfItsOperations) {
    using Sut = QuickTimeCodecWriterInterface;
    EXPECT_EQ(slotOf(&Sut::initialise), 1u);
    EXPECT_EQ(slotOf(&Sut::openFile), 2u);
    EXPECT_EQ(slotOf(&Sut::finishVideo), 3u);
    EXPECT_EQ(slotOf(&Sut::finishSamples), 4u);
    EXPECT_EQ(slotOf(&Sut::closeFile), 5u);
    EXPECT_EQ(slotOf(&Sut::addFrame), 6u);
    EXPECT_EQ(slotOf(&Sut::addSamples), 7u);
    EXPECT_EQ(slotOf(&Sut::setSampleFormat), 8u);
    EXPECT_EQ(slotOf(&Sut::setProperties), 9u);
    EXPECT_EQ(slotOf(&Sut::addTimecodeTrack), 10u);
    EXPECT_EQ(slotOf(&Sut::addAudioFile), 11u);
    EXPECT_EQ(slotOf(&Sut::configure), 12u);
    EXPECT_EQ(slotOf(&Sut::textOperation6), 13u);
    EXPECT_EQ(slotOf(&Sut::editSettings), 14u);
    EXPECT_EQ(slotOf(&Sut::textOperation7), 15u);
    EXPECT_EQ(slotOf(&Sut::textOperation21), 16u);
    EXPECT_EQ(slotOf(&Sut::textOperation22), 17u);
    EXPECT_EQ(slotOf(&Sut::codecList), 18u);
    EXPECT_EQ(slotOf(&Sut::getCodec), 19u);
    EXPECT_EQ(slotOf(&Sut::setCodec), 20u);
    EXPECT_EQ(slotOf(&Sut::setUseFormatAspect), 21u);
    EXPECT_EQ(slotOf(&Sut::getQuality), 22u);
    EXPECT_EQ(slotOf(&Sut::getFrameRate), 23u);
    EXPECT_EQ(slotOf(&Sut::getKeyFrameRate), 24u);
    EXPECT_EQ(slotOf(&Sut::acquireBuffer), 25u);
    EXPECT_EQ(slotOf(&Sut::releaseBuffer), 26u);
}

TEST(ReaderInterface, KeepsTheOrderOfItsOperations) {
    using Sut = QuickTimeCodecReaderInterface;
    EXPECT_EQ(slotOf(&Sut::openFile), 1u);
    EXPECT_EQ(slotOf(&Sut::closeFile), 2u);
    EXPECT_EQ(slotOf(&Sut::getProperties), 3u);
    EXPECT_EQ(slotOf(&Sut::getMetadata), 4u);
    EXPECT_EQ(slotOf(&Sut::fixedEight), 5u);
    EXPECT_EQ(slotOf(&Sut::fixedZero), 6u);
    EXPECT_EQ(slotOf(&Sut::ignore), 7u);
    EXPECT_EQ(slotOf(&Sut::fixedZeroToo), 8u);
    EXPECT_EQ(slotOf(&Sut::fixedOne), 9u);
    EXPECT_EQ(slotOf(&Sut::readFrame), 10u);
    EXPECT_EQ(slotOf(&Sut::getFrameCount), 11u);
    EXPECT_EQ(slotOf(&Sut::getInfo), 12u);
}

TEST(VideoOutputInterface, KeepsTheOrderOfItsOperations) {
    using Sut = QuickTimeVideoOutputInterface;
    EXPECT_EQ(slotOf(&Sut::selectMode), 1u);
    EXPECT_EQ(slotOf(&Sut::closeOutput), 2u);
    EXPECT_EQ(slotOf(&Sut::sendFrame), 3u);
    EXPECT_EQ(slotOf(&Sut::queryValue5), 4u);
    EXPECT_EQ(slotOf(&Sut::queryValue6), 5u);
    EXPECT_EQ(slotOf(&Sut::queryValue7), 6u);
    EXPECT_EQ(slotOf(&Sut::queryValue8), 7u);
    EXPECT_EQ(slotOf(&Sut::getFrameSize), 8u);
    EXPECT_EQ(slotOf(&Sut::getModes), 9u);
    EXPECT_EQ(slotOf(&Sut::getDevices), 10u);
}

/// Where the base lies in the class, in bytes. No object is looked into.
template <typename Derived, typename Base>
std::ptrdiff_t offsetOf() {
    alignas(Derived) static unsigned char storage[sizeof(Derived)];
    auto* object = reinterpret_cast<Derived*>(storage);
    return reinterpret_cast<unsigned char*>(static_cast<Base*>(object)) - storage;
}

TEST(IpcControllers, DeriveFirstFromTheirInterfaceAndThenFromController) {
    EXPECT_EQ((offsetOf<QuickTimeCodecWriterIPCController, QuickTimeCodecWriterInterface>()), 0);
    EXPECT_EQ((offsetOf<QuickTimeCodecReaderIPCController, QuickTimeCodecReaderInterface>()), 0);
    EXPECT_EQ((offsetOf<QuickTimeVideoOutputIPCController, QuickTimeVideoOutputInterface>()), 0);
    constexpr auto second = static_cast<std::ptrdiff_t>(sizeof(void*));
    EXPECT_EQ((offsetOf<QuickTimeCodecWriterIPCController, Controller>()), second);
    EXPECT_EQ((offsetOf<QuickTimeCodecReaderIPCController, Controller>()), second);
    EXPECT_EQ((offsetOf<QuickTimeVideoOutputIPCController, Controller>()), second);
}

TEST(IpcControllers, MayThrowFromTheirDestructors) {
    EXPECT_FALSE(std::is_nothrow_destructible_v<QuickTimeCodecWriterInterface>);
    EXPECT_FALSE(std::is_nothrow_destructible_v<QuickTimeCodecReaderInterface>);
    EXPECT_FALSE(std::is_nothrow_destructible_v<QuickTimeVideoOutputInterface>);
    EXPECT_FALSE(std::is_nothrow_destructible_v<QuickTimeCodecWriterIPCController>);
    EXPECT_FALSE(std::is_nothrow_destructible_v<QuickTimeCodecReaderIPCController>);
    EXPECT_FALSE(std::is_nothrow_destructible_v<QuickTimeVideoOutputIPCController>);
}

TEST(TaskRecords, AreDestroyedThroughTheirBase) {
    EXPECT_TRUE(std::has_virtual_destructor_v<QuickTimeCodecTask>);
    EXPECT_TRUE((std::is_base_of_v<QuickTimeCodecTask, QuickTimeCodecReadTask>));
    EXPECT_TRUE((std::is_base_of_v<QuickTimeCodecTask, QuickTimeCodecWriteTask>));
}

}  // namespace
