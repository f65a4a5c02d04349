#include "browser/GoAddress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lumo {
namespace {

using Text = std::optional<std::string>;
using testing::Contains;

struct Row {
  const char* about;
  Text running;
  Text sender;
  Text server;
  GoPlan::Kind kind;
  // The loaded or the invalid address.
  std::string address;
  Text store;
};

class GoAddressTable : public testing::TestWithParam<Row> {};

TEST_P(GoAddressTable, PlansTheLoad) {
  const Row& row = GetParam();
  const GoPlan plan = planGo(row.running, row.sender, row.server);
  EXPECT_EQ(plan.kind, row.kind) << row.about;
  if (row.kind == GoPlan::Kind::Load) {
    ASSERT_TRUE(plan.url) << row.about;
    EXPECT_EQ(plan.url->absoluteString(), row.address) << row.about;
  } else if (row.kind == GoPlan::Kind::InvalidAddress) {
    EXPECT_EQ(plan.invalidAddress, row.address) << row.about;
  }
  EXPECT_EQ(plan.store, row.store) << row.about;
}

constexpr auto kLoad = GoPlan::Kind::Load;
constexpr auto kInvalid = GoPlan::Kind::InvalidAddress;
constexpr auto kNothing = GoPlan::Kind::Nothing;

INSTANTIATE_TEST_SUITE_P(
    Addresses, GoAddressTable,
    testing::Values(
        Row{"a plain address is loaded as it is",
            "http://10.0.0.5:9090/a",
            {},
            {},
            kLoad,
            "http://10.0.0.5:9090/a",
            {}},
        Row{"localhost and a port is completed and stored",
            "localhost:9090/x",
            {},
            {},
            kLoad,
            "http://localhost:9090/x",
            "http://localhost:9090/x"},
        Row{"LOCALHOST counts in any case",
            "LOCALHOST:9090/x",
            {},
            {},
            kLoad,
            "http://LOCALHOST:9090/x",
            "http://LOCALHOST:9090/x"},
        Row{"an address number and a port is completed and stored",
            "10.0.0.5:9090",
            {},
            {},
            kLoad,
            "http://10.0.0.5:9090",
            "http://10.0.0.5:9090"},
        Row{"a bare path has no scheme",
            "10.0.0.5/p",
            {},
            {},
            kLoad,
            "http://10.0.0.5/p",
            "http://10.0.0.5/p"},
        Row{"neither an address nor a sender: the server's",
            {},
            {},
            "http://s:9090/r",
            kLoad,
            "http://s:9090/r",
            {}},
        Row{"neither of the three: nothing", {}, {}, {}, kNothing, "", {}},
        Row{"an empty address stands for the server's", "  \n", {}, "http://s/", kLoad, "http://s/", {}},
        Row{"the server's address is neither trimmed nor escaped",
            "",
            {},
            " http://s/a b",
            kInvalid,
            " http://s/a b",
            {}},
        Row{"a sender's address counts when none is stored",
            {},
            "http://x/1",
            "http://s/",
            kLoad,
            "http://x/1",
            {}},
        Row{"a sender's address does not replace the stored one",
            "http://y/",
            "http://x/",
            {},
            kLoad,
            "http://y/",
            {}},
        Row{"escapes and blanks mixed are escaped once",
            "http://h/a%20b c",
            {},
            {},
            kLoad,
            "http://h/a%20b%20c",
            {}},
        Row{"an escaped percent sign is kept", "http://h/100%25", {}, {}, kLoad, "http://h/100%25", {}},
        Row{"a hash route survives", "http://h/#/orders/1", {}, {}, kLoad, "http://h/#/orders/1", {}},
        Row{"blanks around it go", "  http://h/p \n", {}, {}, kLoad, "http://h/p", {}},
        Row{"escapes that are no text: nothing", "http://h/%ff%fe", {}, "http://s/", kNothing, "", {}},
        Row{"dots in the path are resolved", "http://h/a/../b/./c", {}, {}, kLoad, "http://h/b/c", {}},
        Row{"an address that is none is shown", "http://h:port/", {}, {}, kInvalid, "http://h:port/", {}},
        Row{"a file is loaded",
            "file:///home/k/My%20File.html",
            {},
            {},
            kLoad,
            "file:///home/k/My%20File.html",
            {}}));

TEST(GoAddress, AMissingRunningAddressIsLoggedWithSevenQuestionMarks) {
  const GoPlan plan = planGo({}, "http://x/", {});
  EXPECT_THAT(plan.log, Contains("url string at start = (null)"));
  EXPECT_THAT(
      plan.log,
      Contains("MyWebViewWindowController->ibGoButtonWK:....HMMM prefRunningUrlString returned NIL???????"));
  EXPECT_THAT(plan.log,
              Contains("MyWebViewWindowController->ibGoButtonWK:....Checking if sender is NSString..."));
  EXPECT_THAT(
      plan.log,
      Contains("MyWebViewWindowController->ibGoButtonWK:....Will try to use sender string: [http://x/]..."));
}

TEST(GoAddress, TheNormalisedTextAndTheSchemeAreLogged) {
  const GoPlan plan = planGo("http://h/a%20b", {}, {});
  EXPECT_THAT(plan.log, Contains("url string withOUT percent encoding = http://h/a b"));
  EXPECT_THAT(plan.log, Contains("url.scheme = http"));
}

TEST(GoAddress, TheInvalidAddressPageShowsTheAddressAndRunsNothing) {
  EXPECT_EQ(invalidAddressPage("http://h:x/"), "Invalid url Request = [http://h:x/]");
  EXPECT_EQ(invalidAddressPage("<script>"), "Invalid url Request = [&lt;script&gt;]");
}

}  // namespace
}  // namespace lumo
