#include "host/presets/PresetStore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "host/render/Failure.h"
#include "tests/unit/host/TemporaryFolder.h"

namespace Corvel {
namespace {

using testing::ElementsAre;

class PresetStoreTest : public testing::Test {
protected:
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const Preset& preset : sut.list()) {
            found.push_back(preset.name + (preset.shipped ? " (shipped)" : ""));
        }
        return found;
    }
    void save(const std::string& name) {
        sut.save({.name = name, .description = "", .knobs = {{"fps", "25"}}});
    }

    TemporaryFolder folder;
    const std::string own = folder.path() + "/config/corvel/presets";
    PresetStore sut{SHIPPED_PRESETS, own};
};

TEST_F(PresetStoreTest, HasTheShippedOnesBeforeAnythingWasSaved) {
    EXPECT_THAT(names(), ElementsAre("archive (shipped)", "editorial (shipped)", "review (shipped)"));
}

TEST_F(PresetStoreTest, KeepsWhatAPersonSaves) {
    save("My dailies");
    EXPECT_THAT(names(),
                ElementsAre("My dailies", "archive (shipped)", "editorial (shipped)", "review (shipped)"));
    ASSERT_EQ(sut.load("My dailies").knobs.size(), 1u);
    EXPECT_EQ(sut.load("My dailies").knobs[0].text, "25");
}

TEST_F(PresetStoreTest, AShippedOneIsHiddenByAPersonsAndBackWithoutIt) {
    save("review");
    EXPECT_FALSE(sut.load("review").shipped);
    sut.remove("review");
    EXPECT_TRUE(sut.load("review").shipped);
    EXPECT_THROW(sut.remove("review"), Failure) << "it comes with the application";
}

TEST_F(PresetStoreTest, TheBeginningOfOneNameIsEnough) {
    save("rehearsal");
    EXPECT_EQ(sut.load("Edit").name, "editorial");
    EXPECT_THROW(sut.load("re"), Failure) << "review or rehearsal";
    EXPECT_THROW(sut.load(""), Failure);
    EXPECT_THROW(sut.load("nothing"), Failure);
}

TEST_F(PresetStoreTest, RefusesNamesThatLeadElsewhere) {
    for (const char* name : {"", "../x", "a/b", ".hidden", "-o", "a\nb"}) {
        EXPECT_THROW(save(name), Failure) << name;
        EXPECT_THROW(sut.remove(name), Failure) << name;
    }
}

TEST_F(PresetStoreTest, LeavesAFileOutThatIsNoPreset) {
    save("good");
    std::ofstream(own + "/bad.json") << "{";
    std::ofstream(own + "/note.txt") << "x";
    EXPECT_THAT(names(), ElementsAre("archive (shipped)", "editorial (shipped)", "good", "review (shipped)"));
}

TEST_F(PresetStoreTest, LeavesNothingBesideWhatItSaves) {
    save("a");
    save("a");
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(own)) {
        EXPECT_EQ(entry.path().filename(), "a.json");
        ++files;
    }
    EXPECT_EQ(files, 1);
}

TEST_F(PresetStoreTest, SavesNothingWhereThereIsNoPlaceForIt) {
    const PresetStore homeless(SHIPPED_PRESETS, "");
    EXPECT_EQ(homeless.list().size(), 3u);
    EXPECT_THROW(homeless.save({.name = "a", .description = "", .knobs = {}}), Failure);
}

TEST_F(PresetStoreTest, IsInTheConfigurationFolderThatTheEnvironmentNames) {
    const char* const before = std::getenv("XDG_CONFIG_HOME");
    const std::string kept = before == nullptr ? "" : before;
    setenv("HOME", "/somebody", 1);
    setenv("XDG_CONFIG_HOME", "/settings", 1);
    EXPECT_EQ(personalPresetFolder(), "/settings/corvel/presets");
    setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(personalPresetFolder(), "/somebody/.config/corvel/presets");
    setenv("XDG_CONFIG_HOME", kept.c_str(), 1);
}

}  // namespace
}  // namespace Corvel
