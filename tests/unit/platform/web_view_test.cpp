#include "platform/web_view.h"

#include <gtest/gtest.h>

#include "platform/format.h"

namespace {

using namespace platform;

TEST(HeaderFields, AreFoundByTheirExactName) {
  const HeaderFields fields{
      {"Glimmerpad-Plus-Print", "Receipt"}, {"Scan-Return", ""}, {"a", "1"}, {"a", "2"}};
  ASSERT_NE(headerValue(fields, "Glimmerpad-Plus-Print"), nullptr);
  EXPECT_EQ(*headerValue(fields, "Glimmerpad-Plus-Print"), "Receipt");
  EXPECT_EQ(*headerValue(fields, "Scan-Return"), "");
  EXPECT_EQ(*headerValue(fields, "a"), "1");
  EXPECT_EQ(headerValue(fields, "glimmerpad-plus-print"), nullptr);
  EXPECT_EQ(headerValue(fields, "Glimmerpad-Plus"), nullptr);
  EXPECT_EQ(headerValue({}, "a"), nullptr);
}

TEST(WebViewDescriptions, TellWhatIsAskedForAndAnswered) {
  const UrlRequest request{*Url::parse("http://h/a?b"), CachePolicy::UseProtocolCachePolicy, Millis{0}, {}};
  EXPECT_EQ(description(request), "<NSMutableURLRequest: {URL: http://h/a?b}>");
  EXPECT_EQ(
      stringWithFormat("action = %@", NavigationAction{request, false}),
      "action = <WKNavigationAction: {request: <NSMutableURLRequest: {URL: http://h/a?b}>, mainFrame: NO}>");
  NavigationResponse response;
  response.url = Url::parse("file:///x");
  EXPECT_EQ(description(response), "<WKNavigationResponse: {URL: file:///x, mainFrame: YES}>");
  response.url = std::nullopt;
  response.isHttp = true;
  response.statusCode = 404;
  response.headers = {{"Server", "x y"}};
  EXPECT_EQ(description(response),
            "<WKNavigationResponse: {URL: (null), mainFrame: YES, status code: 404, headers: {\n"
            "    Server = \"x y\";\n"
            "}}>");
}

TEST(WebViewDescriptions, TellWhatWentWrong) {
  EXPECT_EQ(description(WebError{kErrorTimedOut, "The request timed out.", "http://h/"}),
            "Error code=-1001 \"The request timed out.\" url=http://h/");
  EXPECT_EQ(description(WebError{102, "", std::nullopt}), "Error code=102 \"\" url=(null)");
}

TEST(ViewDescriptions, NameTheKind) {
  const std::vector<std::pair<ViewKind, std::string>> names{
      {ViewKind::View, "View"},
      {ViewKind::Button, "Button"},
      {ViewKind::TextField, "TextField"},
      {ViewKind::SegmentedControl, "SegmentedControl"},
      {ViewKind::ImageView, "ImageView"},
      {ViewKind::ProgressIndicator, "ProgressIndicator"},
      {ViewKind::SettingsForm, "SettingsForm"},
      {ViewKind::WebView, "WebView"}};
  for (const auto& [kind, name] : names) {
    EXPECT_EQ(description(kind), name);
  }
  EXPECT_EQ(stringWithFormat("%@", ViewKind::WebView), "WebView");
  EXPECT_EQ(description(std::vector<View*>{nullptr}), "(\n    \"(null)\"\n)");
}

}  // namespace
