#include "platform/linux/open_request.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/file_url.h"
#include "tests/fakes/captured_log.h"

using platform::OpenRequest;
using platform::openRequests;
using Kind = platform::OpenRequest::Kind;

TEST(OpenRequest, KeepsTheOrderOfAddressesAndFiles) {
  const std::vector<OpenRequest> expected{
      {Kind::Files, {"/a b", "/b"}}, {Kind::Urls, {"http://x/", "lumobrowser:y"}}, {Kind::Files, {"/c"}}};
  EXPECT_EQ(openRequests({"file:///a%20b", "file:/b", "http://x/", "lumobrowser:y", "FILE://localhost/c"}),
            expected);
}

TEST(OpenRequest, HandsOverAnEmptyRequestAsAnEmptyList) {
  EXPECT_EQ(openRequests({}), (std::vector<OpenRequest>{{Kind::Urls, {}}}));
}

TEST(OpenRequest, LeavesOutWhatNamesNoFileOfThisMachine) {
  const fakes::CapturedLog log;
  EXPECT_EQ(openRequests({"file://elsewhere/a", "http://x/", "file:relative"}),
            (std::vector<OpenRequest>{{Kind::Urls, {"http://x/"}}}));
  EXPECT_EQ(log.lines().size(), 2U) << log.text();
  EXPECT_EQ(openRequests({"file:"}), std::vector<OpenRequest>{});
}

TEST(OpenRequest, PutsTheBracketsOfPlaceholdersBack) {
  struct Case {
    const char* given;
    const char* expected;
  };
  const Case cases[] = {
      {"lumobrowser://%5Bjunivaserver%5D/x", "lumobrowser://[junivaserver]/x"},
      {"lumobrowser://%5bDorvinServer%5d", "lumobrowser://[DorvinServer]"},
      {"%5Bjunivaserver%5D%5Bdorvinserver%5D", "[junivaserver][dorvinserver]"},
      {"http://x/?a=%5Bjunivaserver%5D&b%5B0%5D=c", "http://x/?a=[junivaserver]&b%5B0%5D=c"},
      {"http://x/?items%5Bcolour%5D=red", "http://x/?items%5Bcolour%5D=red"},
      {"%5Bjunivaserver", "%5Bjunivaserver"},
      {"%5Bjunivaserver]", "%5Bjunivaserver]"},
      {"%5B%5Bjunivaserver%5D", "%5B[junivaserver]"},
      {"%255Bjunivaserver%255D", "%255Bjunivaserver%255D"},
      {"[junivaserver]/x", "[junivaserver]/x"},
      {"%5", "%5"},
      {"", ""},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(platform::withPlaceholderBrackets(one.given), one.expected);
  }
}

TEST(FileUrl, NamesAnAbsolutePathOfThisMachine) {
  struct Case {
    std::string url;
    std::optional<std::string> path;
  };
  const Case cases[] = {
      {"file:///", "/"},
      {"file:/tmp/x", "/tmp/x"},
      {"file:///tmp/a%20b", "/tmp/a b"},
      {"File://LocalHost/tmp/%C3%B6", "/tmp/\u00f6"},
      {"file:///tmp/%ff", "/tmp/\xff"},
      {"file:///tmp/x?query", "/tmp/x"},
      {"file:///tmp/x#fragment?", "/tmp/x"},
      {"file:///tmp/%23%3F%25", "/tmp/#?%"},
      {"file:///tmp/[x]", "/tmp/[x]"},
      {"file:////tmp//x", "//tmp//x"},
      {"file:///tmp/%2", std::nullopt},
      {"file:///tmp/%", std::nullopt},
      {"file:///tmp/%zz", std::nullopt},
      {"file:///tmp/%00", std::nullopt},
      {std::string("file:///tmp/\0x", 14), std::nullopt},
      {"file://elsewhere/tmp/x", std::nullopt},
      {"file://", std::nullopt},
      {"file:", std::nullopt},
      {"file:tmp/x", std::nullopt},
      {"file:?x", std::nullopt},
      {"http://localhost/tmp/x", std::nullopt},
      {"/tmp/x", std::nullopt},
      {"", std::nullopt},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(platform::pathFromFileUrl(one.url), one.path) << one.url;
  }
}
