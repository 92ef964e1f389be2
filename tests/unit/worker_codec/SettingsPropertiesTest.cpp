#include "property/PropertyList.h"
#include "worker/Status.h"
#include "worker/codec/Settings.h"

#include <gmock/gmock.h>

namespace Morvane::Worker {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

Property::PropertyList read(const std::string& text) {
    Property::PropertyList list;
    Property::readPropertyList(text, list);
    return list;
}

const Property::Base* find(const Property::PropertyList& list, const std::string& name) {
    for (const auto& property : list)
        if (property->name == name)
            return property.get();
    return nullptr;
}

std::string value(const Property::PropertyList& list, const std::string& name) {
    const Property::Base* property = find(list, name);
    return property ? property->toString() : "(none)";
}

TEST(SettingsProperties, TheCodecsFactsComeFirst) {
    const auto list = read(Settings::defaults(*findCodec("ap4h")).propertyListText());
    std::vector<std::string> names;
    for (const auto& property : list)
        names.push_back(property->name);
    names.resize(6);
    EXPECT_THAT(names, testing::ElementsAre("codec/bits", "codec/alpha", "codec/intra", "codec/lossless",
                                            "codec/sizes", "codec/quality"));
    EXPECT_EQ(value(list, "codec/bits"), "10");
    EXPECT_EQ(value(list, "codec/alpha"), "1");
    EXPECT_EQ(value(list, "codec/intra"), "1");
    EXPECT_EQ(value(list, "codec/lossless"), "0");
    EXPECT_EQ(value(list, "codec/sizes"), "even widths");
    EXPECT_THAT(value(list, "codec/quality"), StartsWith("Min: "));
}

TEST(SettingsProperties, QualitiesAreTold) {
    const auto told = [](const char* type) {
        return value(read(Settings::defaults(*findCodec(type)).propertyListText()), "codec/quality");
    };
    EXPECT_EQ(told("avc1"),
              "Min: rate factor 34; Low: rate factor 28; Normal: rate factor 23; High: rate factor 18; "
              "Max: rate factor 12; Lossless: lossless");
    EXPECT_THAT(told("apch"), HasSubstr("High: quantiser 7; Max: quantiser 3"));
    EXPECT_THAT(told("mjp2"), HasSubstr("Min: 80:1"));
    EXPECT_THAT(told("AVdn"), HasSubstr("Min: 75 Mbit/s"));
    EXPECT_EQ(told("raw "), "lossless at every quality");
    EXPECT_EQ(told("cvid"), "the same at every quality");
}

/// Lists read doubles back as whole numbers, so that only whole numbers may travel as numbers.
TEST(SettingsProperties, OnlyWholeNumbersAreNumbers) {
    const auto list =
        read(Settings::parse("crf=12.5:threads=4:bframes=2", *findCodec("avc1")).propertyListText());
    EXPECT_EQ(find(list, "threads")->type, Property::TypeInt);
    EXPECT_EQ(find(list, "bframes")->type, Property::TypeInt);
    EXPECT_EQ(find(list, "crf")->type, Property::TypeString);
    EXPECT_EQ(value(list, "crf"), "12.5");
    for (const auto& property : list)
        EXPECT_NE(property->type, Property::TypeDouble) << property->name;
}

TEST(SettingsProperties, EveryOptionTellsItsKindAndValues) {
    const auto list = read(Settings::defaults(*findCodec("avc1")).propertyListText());
    EXPECT_EQ(value(list, "preset"), "medium");
    EXPECT_EQ(value(list, "preset/type"), "choice");
    EXPECT_THAT(value(list, "preset/values"), HasSubstr("veryslow"));
    EXPECT_EQ(value(list, "crf/type"), "number");
    EXPECT_EQ(value(list, "crf/values"), "0|51");
    for (const char* key : {"profile", "bitdepth", "alpha", "primaries", "transfer", "matrix", "range",
                            "fields", "aspect", "threads", "timecode", "reel"})
        EXPECT_NE(find(list, std::string(key) + "/type"), nullptr) << key;
}

TEST(SettingsProperties, ListGivesTheSettingsBack) {
    for (const Codec& codec : codecTable()) {
        const Settings settings = Settings::parse("aspect=2/1:reel=A:meta.a/type=b", codec);
        EXPECT_EQ(Settings::fromPropertyList(settings.propertyListText(), codec).text(), settings.text())
            << codec.name;
    }
}

TEST(SettingsProperties, ChangedValueIsTaken) {
    const Codec& codec = *findCodec("avc1");
    EXPECT_EQ(Settings::fromPropertyList("S:preset:slow:I:bframes:2:I:codec/bits:99", codec).text(),
              Settings::parse("preset=slow:bframes=2", codec).text());
}

TEST(SettingsProperties, ListThatCannotBeReadIsRefused) {
    const Codec& codec = *findCodec("avc1");
    EXPECT_THROW(Settings::fromPropertyList("S:preset:\\q", codec), StatusError);
    EXPECT_THROW(Settings::fromPropertyList("S:preset:wrong", codec), StatusError);
    EXPECT_THROW(Settings::fromPropertyList("S:nonsense:1", codec), StatusError);
    EXPECT_EQ(Settings::fromPropertyList("", codec).text(), Settings::defaults(codec).text());
}

}  // namespace
}  // namespace Morvane::Worker
