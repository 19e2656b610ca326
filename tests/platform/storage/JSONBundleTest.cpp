#include "platform/linux/JSONBundle.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace lumiwren {
namespace {

namespace fs = std::filesystem;

class JSONBundleTest : public ::testing::Test {
protected:
  JSONBundle bundleOf(const std::string &content) const {
    const fs::path file = folder_.path() / "Info.json";
    std::ofstream(file) << content;
    return JSONBundle(file);
  }

  const testing::TemporaryFolder folder_;
};

TEST_F(JSONBundleTest, AnEntryThatIsAStringHasAValue) {
  const JSONBundle bundle = bundleOf(R"({"CFBundleShortVersionString": "1.4", "SUFeedURL": ""})");
  EXPECT_EQ(bundle.stringForKey("CFBundleShortVersionString"), "1.4");
  EXPECT_EQ(bundle.stringForKey("SUFeedURL"), "");
}

TEST_F(JSONBundleTest, AnythingElseHasNone) {
  const JSONBundle bundle = bundleOf(R"({"number": 14, "list": ["1.4"], "null": null})");
  for (const char *const key : {"number", "list", "null", "absent"}) {
    EXPECT_EQ(bundle.stringForKey(key), std::nullopt) << key;
  }
}

TEST_F(JSONBundleTest, AFileThatIsNoPropertyListHasNoEntries) {
  for (const char *const content : {"", "{", "[]", "\"1.4\"", "{\"a\": \"\xff\"}"}) {
    EXPECT_EQ(bundleOf(content).stringForKey("a"), std::nullopt) << content;
  }
  EXPECT_EQ(JSONBundle(folder_.path() / "absent").stringForKey("a"), std::nullopt);
  EXPECT_EQ(JSONBundle(folder_.path()).stringForKey("a"), std::nullopt) << "a folder";
}

TEST_F(JSONBundleTest, IsFoundBesideTheInstalledDataOrTheProgram) {
  const fs::path programs = folder_.path() / "bin";
  fs::create_directories(programs);
  EXPECT_EQ(JSONBundle::fileFor(programs), programs / "Info.json");
  fs::create_directories(folder_.path() / "share" / "lumiwren");
  std::ofstream(folder_.path() / "share" / "lumiwren" / "Info.json") << "{}";
  EXPECT_TRUE(fs::equivalent(JSONBundle::fileFor(programs), folder_.path() / "share/lumiwren/Info.json"));
}

TEST_F(JSONBundleTest, TheProgramsOwnSaysItsVersion) {
  const fs::path programs = fs::read_symlink("/proc/self/exe").parent_path();
  EXPECT_EQ(JSONBundle(JSONBundle::fileFor(programs)).stringForKey("CFBundleShortVersionString"),
            LUMIWREN_VERSION);
}

}  // namespace
}  // namespace lumiwren
