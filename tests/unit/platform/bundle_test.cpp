#include "platform/bundle.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/property_list_file.h"
#include "tests/unit/platform/temporary_folder.h"

namespace {

using platform::Bundle;
using platform::Dictionary;

class BundleTest : public testing::Test {
 protected:
  BundleTest() {
    std::filesystem::create_directories(folder / "Lumo.app/Resources/folder.plist");
    writeFile(folder / "Lumo.app/Info.plist",
              platform::xmlDataFromPropertyList(Dictionary{{"CFBundleIdentifier", "com.example.lumo"},
                                                           {"CFBundleVersion", 7},
                                                           {"LSEnvironment", Dictionary{}}}));
    writeFile(folder / "Lumo.app/Resources/FactoryDefaults.plist", "x");
    writeFile(folder / "Lumo.app/Resources/README", "x");
    writeFile(folder / "Lumo.app/tool.sh", "x");
    writeFile(folder / "outside.plist", "x");
  }

  TemporaryFolder folder;
};

TEST_F(BundleTest, ReadsItsInformation) {
  const Bundle bundle(folder / "Lumo.app");
  EXPECT_EQ(bundle.path(), folder / "Lumo.app");
  EXPECT_EQ(bundle.infoDictionary().size(), 3U);
  EXPECT_EQ(bundle.bundleIdentifier(), "com.example.lumo");
  EXPECT_EQ(bundle.infoString("CFBundleVersion"), "7");
  EXPECT_EQ(bundle.infoString("LSEnvironment"), std::nullopt);
  EXPECT_EQ(bundle.bundleName(), std::nullopt);
}

TEST_F(BundleTest, FindsResources) {
  const Bundle bundle(folder / "Lumo.app");
  EXPECT_EQ(bundle.pathForResource("FactoryDefaults", "plist"),
            folder / "Lumo.app/Resources/FactoryDefaults.plist");
  EXPECT_EQ(bundle.pathForResource("README", ""), folder / "Lumo.app/Resources/README");
  EXPECT_EQ(bundle.pathForResource("Missing", "plist"), std::nullopt);
  EXPECT_EQ(bundle.pathForResource("folder", "plist"), std::nullopt);
  EXPECT_EQ(bundle.pathForAuxiliaryExecutable("tool.sh"), folder / "Lumo.app/tool.sh");
  EXPECT_EQ(bundle.pathForAuxiliaryExecutable("missing.sh"), std::nullopt);
}

TEST_F(BundleTest, NeverLeavesTheBundle) {
  const Bundle bundle(folder / "Lumo.app");
  for (const std::string name : {"../../outside", "..", ".", "", "/etc/passwd", "a/b"}) {
    EXPECT_EQ(bundle.pathForResource(name, "plist"), std::nullopt) << name;
    EXPECT_EQ(bundle.pathForResource(name, ""), std::nullopt) << name;
    EXPECT_EQ(bundle.pathForAuxiliaryExecutable(name), std::nullopt) << name;
  }
  EXPECT_EQ(bundle.pathForResource("x", "/../README"), std::nullopt);
  EXPECT_EQ(bundle.pathForResource(std::string("README\0x", 8), ""), std::nullopt);
}

TEST_F(BundleTest, LivesWithoutInformation) {
  for (const std::string content : {"", "damaged", "<plist><array/></plist>"}) {
    writeFile(folder / "Lumo.app/Info.plist", content);
    testing::internal::CaptureStderr();
    const Bundle bundle(folder / "Lumo.app");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("Info.plist"));
    EXPECT_TRUE(bundle.infoDictionary().empty());
    EXPECT_EQ(bundle.bundleIdentifier(), std::nullopt);
  }
}

TEST(Bundle, OfNothingHasNothing) {
  const Bundle bundle;
  EXPECT_EQ(bundle.bundleIdentifier(), std::nullopt);
  EXPECT_EQ(bundle.pathForResource("passwd", ""), std::nullopt);
  EXPECT_EQ(bundle.pathForAuxiliaryExecutable("passwd"), std::nullopt);
}

TEST(Bundle, MainIsWhereTheExecutableLies) {
  testing::internal::CaptureStderr();
  const auto bundle = Bundle::main();
  testing::internal::GetCapturedStderr();
  EXPECT_EQ(bundle.path(), std::filesystem::canonical("/proc/self/exe").parent_path());
}

}  // namespace
