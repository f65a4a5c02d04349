#include "browser/LoadFailure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// Which failures stay silent, and the page that tells of the others.

namespace {

using lumo::errorPage;
using lumo::failingUrl;
using lumo::isExpectedFailure;
using platform::Url;

struct Failure {
  const char* address;
  bool isExpected;
};

class ExpectedFailure : public testing::TestWithParam<Failure> {};

TEST_P(ExpectedFailure, OnlyWhereTheAnswerWasCancelledOnPurpose) {
  const auto& [address, isExpected] = GetParam();
  const auto url = Url::parse(address);
  ASSERT_TRUE(url) << address;
  EXPECT_EQ(isExpectedFailure(url), isExpected) << address;
}

INSTANTIATE_TEST_SUITE_P(
    Table, ExpectedFailure,
    testing::Values(
        // The end of a registration, in any case and with any query.
        Failure{"http://h:9090/registration/save", true}, Failure{"http://h/Registration/SAVE", true},
        Failure{"http://h/registration/save?id=3", true}, Failure{"https://h/registration/%73ave", true},
        Failure{"http://h/registration/save/", false}, Failure{"http://h/a/registration/save", false},
        Failure{"http://h/registration/savemore", false}, Failure{"http://h/registration", false},
        // The data of an order, with its code alone.
        Failure{"http://h/registrationorders/posdata?code=123", true},
        Failure{"http://h/registrationorders/posdata?code=", true},
        Failure{"http://h/registrationorders/posdata?code=1&name=x", true},
        Failure{"http://h/registrationorders/posdata", false},
        Failure{"http://h/registrationorders/posdata?", false},
        Failure{"http://h/registrationorders/posdata?name=x&code=1", false},
        Failure{"http://h/registrationorders/posdata?CODE=1", false},
        Failure{"http://h/registrationorders/posdata?codes=1", false},
        Failure{"http://h/RegistrationOrders/PosData?code=1", false},
        Failure{"http://h/registrationorders/posdata/?code=1", false},
        Failure{"http://h/registrationorders/photostationdata?code=123", true},
        Failure{"http://h/registrationorders/photostationdata", false},
        Failure{"http://h/registrationorders/photostationdata?id=1", false},
        // Other paths that release an order do show the page before the kiosk ends.
        Failure{"http://h/registrationam/posdata?code=1", false},
        Failure{"http://h/gradorders/gowndata?code=1", false},
        Failure{"http://h/registrationorders/save?code=1", false},
        // Everything else.
        Failure{"http://h/", false}, Failure{"http://h", false}, Failure{"about:blank", false},
        Failure{"localhost:9090/registration/save", false}));

TEST(ExpectedFailureRule, AnAbsentAddressIsNeverExpectedToFail) {
  EXPECT_FALSE(isExpectedFailure(std::nullopt));
}

TEST(FailingUrl, IsReadAsTheEngineWritesIt) {
  EXPECT_EQ(failingUrl({1, "x", "http://h/a|b"})->path(), "/a|b");
  EXPECT_FALSE(failingUrl({1, "x", std::nullopt}));
  EXPECT_FALSE(failingUrl({1, "x", "http://h:99999999/"}));
}

TEST(ErrorPage, TellsCodeTextAndAddress) {
  EXPECT_EQ(errorPage({-1001, "The request timed out.", "http://10.0.0.5:9090/x"}),
            "Error Encountered at handleWebViewError: !!<br>error code = [-1001] = The request timed "
            "out.<br><br>sender url = http://10.0.0.5:9090/x");
}

TEST(ErrorPage, IsShownInLettersThatGrowWithTheWindow) {
  const std::string page = lumo::readablePage("sender url = x");
  EXPECT_TRUE(page.starts_with("<!doctype html><meta charset=utf-8>"));
  EXPECT_NE(page.find("font:clamp("), std::string::npos);
  EXPECT_TRUE(page.ends_with("</style>sender url = x"));
}

TEST(ErrorPage, WithoutAnAddressSaysSo) {
  EXPECT_EQ(errorPage({7, "", std::nullopt}),
            "Error Encountered at handleWebViewError: !!<br>error code = [7] = <br><br>sender url = (null)");
}

TEST(ErrorPage, TextsFromOutsideShowAsTheyAreAndRunNothing) {
  EXPECT_EQ(errorPage({1, "<b>\"no\" & 'never'", "http://h/?<script>alert(1)</script>"}),
            "Error Encountered at handleWebViewError: !!<br>error code = [1] = &lt;b&gt;&quot;no&quot; &amp; "
            "&#39;never&#39;<br><br>sender url = http://h/?&lt;script&gt;alert(1)&lt;/script&gt;");
}

}  // namespace
