#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

namespace Morvane {
namespace {

namespace fs = std::filesystem;

/// What a command prints.
std::string outputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    for (int byte = std::fgetc(pipe.get()); byte != EOF; byte = std::fgetc(pipe.get())) {
        text += static_cast<char>(byte);
    }
    return text;
}

/// Bundle, executable and library of the built application.
const fs::path plugin = MOVIE_PLUGIN;
const fs::path pluginBundle = plugin.parent_path().parent_path().parent_path();
const fs::path library = SDK_LIBRARY;

TEST(PluginFile, LiesInItsBundleBesideItsInfo) {
    EXPECT_EQ(plugin.filename(), "movWriter");
    EXPECT_EQ(pluginBundle.filename(), "movWriter.bundle");
    EXPECT_TRUE(fs::exists(pluginBundle / "Contents" / "Info.plist"));
    EXPECT_EQ(pluginBundle.parent_path().filename(), "PlugIns");
}

TEST(PluginFile, LinksNeitherMovieNorImageLibraries) {
    const std::string libraries = outputOf("ldd '" + plugin.string() + "'");

    ASSERT_NE(libraries.find("libKexImage"), std::string::npos) << libraries;
    for (const char* const foreign : {"libav", "libsw", "libzimg", "OpenImageIO", "OpenEXR", "OpenColorIO",
                                      "libSDL", "libpng", "libjpeg", "libtiff", "libQt"}) {
        EXPECT_EQ(libraries.find(foreign), std::string::npos) << foreign << " in " << libraries;
    }
}

TEST(PluginFile, FindsTheLibraryWhereverTheApplicationLies) {
    std::string pattern = (fs::temp_directory_path() / "corvel-moved-XXXXXX").string();
    const fs::path folder = mkdtemp(pattern.data());
    const fs::path contents = folder / "Some where" / "Corvel.app" / "Contents";
    fs::create_directories(contents / "PlugIns");
    fs::create_directories(contents / "Frameworks");
    fs::copy(pluginBundle, contents / "PlugIns" / "movWriter.bundle", fs::copy_options::recursive);
    fs::copy(library, contents / "Frameworks");
    const fs::path moved = contents / "PlugIns" / "movWriter.bundle" / "Contents" / "MacOS" / "movWriter";

    const std::string libraries = outputOf("ldd '" + moved.string() + "'");

    const std::size_t line = libraries.find("libKexImage.so => ");
    ASSERT_NE(line, std::string::npos) << libraries;
    const std::size_t start = line + std::string("libKexImage.so => ").size();
    const fs::path found = libraries.substr(start, libraries.find(" (", start) - start);
    EXPECT_TRUE(fs::equivalent(found, contents / "Frameworks" / library.filename())) << found;
    fs::remove_all(folder);
}

TEST(PluginFile, KeepsItsSymbolsToItself) {
    const std::string symbols = outputOf("nm -D --defined-only '" + plugin.string() + "'");

    // An exported inline symbol would keep the plug-in from being unloaded.
    EXPECT_EQ(symbols.find(" u "), std::string::npos) << symbols;
    EXPECT_EQ(symbols.find("movWriter"), std::string::npos) << symbols;
}

}  // namespace
}  // namespace Morvane
