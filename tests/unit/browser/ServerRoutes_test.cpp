#include "browser/ServerRoutes.h"

#include <gtest/gtest.h>

#include "tests/fakes/captured_log.h"

namespace lumo {
namespace {

using platform::HeaderFields;
using platform::Url;

struct WishCase {
  const char* name;
  HeaderFields fields;
  HeaderWish wish;
};

class HeaderWishTest : public testing::TestWithParam<WishCase> {};

TEST_P(HeaderWishTest, FollowsFromTheFields) {
  EXPECT_EQ(headerWish(GetParam().fields), GetParam().wish);
}

INSTANTIATE_TEST_SUITE_P(
    Fields, HeaderWishTest,
    testing::Values(
        WishCase{"NoFields", {}, HeaderWish::None},
        WishCase{"Start", {{"Glimmerpad-Plus-Scanner", "start"}}, HeaderWish::Scan},
        WishCase{"StartInUpperCase", {{"Glimmerpad-Plus-Scanner", "START"}}, HeaderWish::Scan},
        WishCase{"CloseIsOfTheOldView", {{"Glimmerpad-Plus-Scanner", "close"}}, HeaderWish::None},
        WishCase{"NameInAnotherCase", {{"glimmerpad-plus-scanner", "start"}}, HeaderWish::None},
        WishCase{"EmptyValue", {{"Glimmerpad-Plus-Scanner", ""}}, HeaderWish::None},
        WishCase{"Repeated", {{"Glimmerpad-Plus-Scanner", "start, start"}}, HeaderWish::None},
        WishCase{"Receipt", {{"Glimmerpad-Plus-Print", "Receipt"}}, HeaderWish::PrintReceipt},
        WishCase{"ReceiptInLowerCase", {{"Glimmerpad-Plus-Print", "receipt"}}, HeaderWish::PrintReceipt},
        WishCase{"PrintNameInAnotherCase", {{"GLIMMERPAD-PLUS-PRINT", "Receipt"}}, HeaderWish::None},
        WishCase{"OtherPrint", {{"Glimmerpad-Plus-Print", "Photo"}}, HeaderWish::None},
        WishCase{"ScanBeforeReceipt",
                 {{"Glimmerpad-Plus-Print", "Receipt"}, {"Glimmerpad-Plus-Scanner", "start"}},
                 HeaderWish::Scan}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(FieldsWithAddressTest, TheAddressIsAddedUnderItsOwnName) {
  const HeaderFields fields = fieldsWithAddress({{"Server", "x"}}, Url::parse("http://h:9090/a?b=c"));
  EXPECT_EQ(fields, (HeaderFields{{"Server", "x"}, {"respurlstring", "http://h:9090/a?b=c"}}));
}

TEST(FieldsWithAddressTest, TheServerCannotClaimAnotherAddress) {
  const HeaderFields fields =
      fieldsWithAddress({{"respurlstring", "http://evil/"}}, Url::parse("http://h/a"));
  EXPECT_EQ(fields, (HeaderFields{{"respurlstring", "http://h/a"}}));
  EXPECT_EQ(fieldsWithAddress({{"respurlstring", "http://evil/"}}, std::nullopt), HeaderFields{});
}

std::string textOf(const ReturnPage& page) {
  if (const auto* url = std::get_if<Url>(&page)) {
    return "address " + url->absoluteString();
  }
  const auto* text = std::get_if<std::string>(&page);
  return text != nullptr ? "text " + *text : "nothing";
}

struct ReturnCase {
  const char* address;
  std::optional<std::string> scanReturn;
  const char* page;
};

TEST(ReceiptReturnPageTest, IsTheServersRootWithTheNamedPage) {
  const ReturnCase cases[] = {
      {"http://h:9090/receipt/1?x=1", "registrationorders/start",
       "address http://h:9090/registrationorders/start"},
      {"http://h:9090/receipt", "/start/", "address http://h:9090/start/"},
      {"http://h:9090/receipt", "a b", "address http://h:9090/a%20b"},
      {"http://h:9090/receipt", "list?x=1", "address http://h:9090/list%3Fx=1"},
      {"http://h:9090/receipt", "", "address http://h:9090"},
      {"http://h:9090/receipt", std::nullopt, "address http://h:9090"},
      // A missing port stays as its text, which is no address.
      {"http://h/receipt", "start", "text http://h:(null)"},
      {"file:///tmp/receipt.html", "start", "text file://(null):(null)"},
  };
  for (const ReturnCase& c : cases) {
    EXPECT_EQ(textOf(receiptReturnPage(Url::parse(c.address), c.scanReturn)), c.page) << c.address;
  }
  EXPECT_EQ(textOf(receiptReturnPage(std::nullopt, "start")), "nothing");
}

TEST(RegistrationSaveTest, IsOnePathInAnyCase) {
  EXPECT_TRUE(isRegistrationSave("/registration/save"));
  EXPECT_TRUE(isRegistrationSave("/Registration/SAVE"));
  EXPECT_FALSE(isRegistrationSave("/registration/save/"));
  EXPECT_FALSE(isRegistrationSave("registration/save"));
  EXPECT_FALSE(isRegistrationSave("/registrationorders/save"));
  EXPECT_FALSE(isRegistrationSave(std::nullopt));
}

struct RouteCase {
  const char* name;
  std::optional<std::string> list;
  std::optional<std::string> path;
  bool releases;
};

class ReleasePathTest : public testing::TestWithParam<RouteCase> {
 protected:
  // Each cleaned path gives a line.
  fakes::CapturedLog log;
};

TEST_P(ReleasePathTest, ReleasesAsListed) {
  const RouteCase& c = GetParam();
  EXPECT_EQ(isReleasePath(c.path, releasePaths(c.list)), c.releases);
}

constexpr const char* kLongList = " /registrationorders/photostationdata , gradorders/gowndata ";

INSTANTIATE_TEST_SUITE_P(
    Routes, ReleasePathTest,
    testing::Values(RouteCase{"CaseBlanksAndOuterSlashesDoNotCount", kLongList,
                              "/RegistrationOrders/PhotoStationData/", true},
                    RouteCase{"TheSecondItem", kLongList, "/gradorders/gowndata", true},
                    RouteCase{"AnotherPath", kLongList, "/registrationorders/start", false},
                    RouteCase{"PartOfAnItem", kLongList, "/registrationorders", false},
                    RouteCase{"TheLastComponent", "posdata", "/a/b/posdata", true},
                    RouteCase{"TheLastComponentBeforeASlash", "posdata", "/a/b/posdata/", true},
                    RouteCase{"AComponentInTheMiddle", "posdata", "/a/posdata/b", false},
                    RouteCase{"TheLastComponentOfAnItemIsNot", "a/posdata", "/posdata", false},
                    RouteCase{"BlanksInsideAnItem", "grad orders/gown data", "/gradorders/gowndata", true},
                    RouteCase{"BlanksInsideThePath", "gradorders/gowndata", "/grad orders/gowndata", true},
                    RouteCase{"UpperCaseItem", "PosData", "/posdata", true},
                    RouteCase{"TheRootWithAnEmptyItem", "a,,b", "/", true},
                    RouteCase{"TheRootWithAnEmptyList", "", "/", true},
                    RouteCase{"AnotherPathWithAnEmptyList", "", "/a", false},
                    RouteCase{"TheRootWithoutAnEmptyItem", "a,b", "/", false},
                    RouteCase{"NoList", std::nullopt, "/", false},
                    RouteCase{"NoPath", "a,,b", std::nullopt, false}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ScanHeaderTest, IsAddedOnceWhereThereIsACamera) {
  platform::UrlRequest request{*Url::parse("http://h/a")};
  request.headers = {{"Accept", "text/html"}};
  EXPECT_FALSE(requestWithScanHeader(request, false));
  const auto marked = requestWithScanHeader(request, true);
  ASSERT_TRUE(marked);
  EXPECT_EQ(marked->url.absoluteString(), "http://h/a");
  EXPECT_EQ(marked->headers, (HeaderFields{{"Glimmerpad-Scan", "yes"}}));
  EXPECT_FALSE(requestWithScanHeader(*marked, true));
}

}  // namespace
}  // namespace lumo
