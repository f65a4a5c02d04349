#include "tools/lumoctl/defaults_command.h"

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/log_sink.h"
#include "platform/property_list_file.h"
#include "tests/unit/platform/temporary_folder.h"

namespace lumoctl {
namespace {

using platform::Array;
using platform::Dictionary;
using platform::PropertyList;
using testing::HasSubstr;

class DefaultsCommand : public testing::Test {
 protected:
  platform::UserDefaults defaults;
  Dictionary factory{{"prefServerAddress", "http://factory"}};
  std::ostringstream out;
  std::ostringstream err;
  std::vector<std::string> remarks;
  Streams streams{out, err, remarks};
};

TEST_F(DefaultsCommand, WritesAndReads) {
  EXPECT_EQ(writeDefaults({"prefThisUserAgent", "a b"}, defaults, streams), kDone);
  EXPECT_EQ(readDefaults({"prefThisUserAgent"}, defaults, factory, streams), kDone);
  EXPECT_EQ(out.str(), "a b\n");
  EXPECT_EQ(err.str(), "");
}

TEST_F(DefaultsCommand, ReadsOnlyWhatWasSet) {
  EXPECT_EQ(readDefaults({"prefServerAddress"}, defaults, factory, streams), kFailed);
  EXPECT_EQ(err.str(), "lumoctl: prefServerAddress is not set; its factory value is http://factory\n");
  EXPECT_EQ(out.str(), "");
}

TEST_F(DefaultsCommand, WarnsOfUnknownKeysAndTypes) {
  EXPECT_EQ(writeDefaults({"prefNothing", "x"}, defaults, streams), kDone);
  EXPECT_EQ(err.str(), "lumoctl: warning: the kiosk knows no key prefNothing\n");
  err.str("");
  EXPECT_EQ(writeDefaults({"prefShowMenuBar", Array{}}, defaults, streams), kDone);
  EXPECT_THAT(err.str(), HasSubstr("boolean"));
  EXPECT_EQ(defaults.userValues().size(), 2U);
}

TEST_F(DefaultsCommand, AddsToWhatIsThere) {
  EXPECT_EQ(writeDefaults({"a", Array{"1"}, true}, defaults, streams), kDone);
  EXPECT_EQ(writeDefaults({"a", Array{"2"}, true}, defaults, streams), kDone);
  EXPECT_TRUE(*defaults.objectForKey("a") == PropertyList(Array{"1", "2"}));
  EXPECT_EQ(writeDefaults({"d", Dictionary{{"x", 1}, {"y", 1}}, true}, defaults, streams), kDone);
  EXPECT_EQ(writeDefaults({"d", Dictionary{{"y", 2}}, true}, defaults, streams), kDone);
  EXPECT_TRUE(*defaults.objectForKey("d") == PropertyList(Dictionary{{"x", 1}, {"y", 2}}));
  EXPECT_EQ(writeDefaults({"a", Dictionary{}, true}, defaults, streams), kFailed);
  EXPECT_EQ(writeDefaults({"d", Array{}, true}, defaults, streams), kFailed);
}

TEST_F(DefaultsCommand, RefusesWhatAFileCannotCarry) {
  EXPECT_EQ(writeDefaults({"prefThisUserAgent", "a\x01"}, defaults, streams), kFailed);
  EXPECT_EQ(writeDefaults({"prefThisUserAgent", "a\xff"}, defaults, streams), kFailed);
  EXPECT_TRUE(defaults.userValues().empty());
}

TEST_F(DefaultsCommand, DeletesWhatWasSet) {
  defaults.setObject("x", "k");
  EXPECT_EQ(deleteDefaults({"k"}, defaults, streams), kDone);
  EXPECT_EQ(deleteDefaults({"k"}, defaults, streams), kFailed);
  EXPECT_EQ(err.str(), "lumoctl: k is not set\n");
}

TEST_F(DefaultsCommand, ListsEveryKey) {
  defaults.setObject(true, "prefForceFullScreen");
  defaults.setObject("z", "ownKey");
  EXPECT_EQ(listDefaults(defaults, factory, streams), kDone);
  EXPECT_THAT(out.str(),
              testing::ContainsRegex("prefServerAddress +string +http://factory +http://factory\n"));
  EXPECT_THAT(out.str(), testing::ContainsRegex("prefForceFullScreen +boolean +- +true\n"));
  EXPECT_THAT(out.str(), testing::ContainsRegex("prefShowMenuBar +boolean +- +false\n"));
  EXPECT_THAT(out.str(),
              testing::ContainsRegex("prefJunivaPhotoStationListPath +string +- +registrationorders\n"));
  EXPECT_THAT(out.str(), testing::ContainsRegex("ownKey +unknown +- +z\n"));
}

TEST_F(DefaultsCommand, RegistersTheReleasePathsAsTheKioskDoes) {
  const auto values = registeredValues({{"prefArrayOfPathNamesToDataForLumo", Array{"a/b", "c"}}});
  EXPECT_TRUE(*values.find("prefPathNamesToDataForLumo") == PropertyList("a/b, c"));
}

TEST_F(DefaultsCommand, ExportsWhatImportTakes) {
  const TemporaryFolder folder;
  const std::string file = (folder / "settings.plist").string();
  defaults.setObject("http://x", "prefServerAddress");
  defaults.setObject(Array{1, true}, "list");
  EXPECT_EQ(exportDefaults({file}, defaults, streams), kDone);
  EXPECT_EQ(exportDefaults({"-"}, defaults, streams), kDone);
  EXPECT_EQ(out.str(), readFile(file));

  platform::UserDefaults other;
  other.setObject("stays", "k");
  std::istringstream input(out.str());
  EXPECT_EQ(importDefaults({"-"}, other, input, streams), kDone);
  EXPECT_TRUE(*other.objectForKey("list") == PropertyList(Array{1, true}));
  EXPECT_EQ(other.stringForKey("k"), "stays");
  EXPECT_EQ(folder.names().size(), 1U);
}

TEST_F(DefaultsCommand, ImportsNothingOfABadFile) {
  for (const char* text :
       {"", "junk", "<plist version=\"1.0\"><array/></plist>",
        "<plist version=\"1.0\"><dict><key>a</key><true/><key></key><true/></dict></plist>"}) {
    std::istringstream input(text);
    EXPECT_EQ(importDefaults({"-"}, defaults, input, streams), kFailed) << text;
  }
  std::istringstream none;
  EXPECT_EQ(importDefaults({"/not/there"}, defaults, none, streams), kFailed);
  EXPECT_EQ(exportDefaults({"/not/there"}, defaults, streams), kFailed);
  EXPECT_TRUE(defaults.userValues().empty());
}

TEST_F(DefaultsCommand, FailsWhenTheFileCannotBeWritten) {
  const TemporaryFolder folder;
  writeFile(folder / "file", "");
  platform::UserDefaults stuck((folder / "file") / "below.plist");
  platform::setLogSink([this](const std::string& text) { remarks.push_back(text); });
  EXPECT_EQ(writeDefaults({"prefThisUserAgent", "x"}, stuck, streams), kFailed);
  platform::setLogSink(nullptr);
  EXPECT_EQ(err.str(),
            "lumoctl: the preferences could not be written, prefThisUserAgent is not stored; UserDefaults: "
            "cannot make the folder of " +
                (folder / "file" / "below.plist").string() + ": File exists\n");
}

}  // namespace
}  // namespace lumoctl
