#include "platform/url.h"

#include <random>

#include <gtest/gtest.h>

#include "platform/format.h"
#include "platform/strings.h"

namespace {

using namespace platform;
using Text = std::optional<std::string>;

constexpr std::nullopt_t none = std::nullopt;

struct Parts {
  std::string text;
  Text scheme;
  Text host;
  std::optional<int> port;
  Text path;
  Text query;
  Text fragment;
};

TEST(Url, ParsesIntoItsParts) {
  const std::vector<Parts> table = {
      {"http://h", "http", "h", none, "", none, none},
      {"http://h/", "http", "h", none, "/", none, none},
      {"HTTPS://Host/", "HTTPS", "Host", none, "/", none, none},
      {"http://10.0.0.5:9090/a/b/?q=1&r=a/b?c#x?y", "http", "10.0.0.5", 9090, "/a/b/", "q=1&r=a/b?c", "x?y"},
      {"http://h/?", "http", "h", none, "/", "", none},
      {"http://h/#", "http", "h", none, "/", none, ""},
      {"http://h?q", "http", "h", none, "", "q", none},
      {"http://h#/orders/5?x", "http", "h", none, "", none, "/orders/5?x"},
      {"http://h:/x", "http", "h", none, "/x", none, none},
      {"http://:80/", "http", none, 80, "/", none, none},
      {"http:///p", "http", none, none, "/p", none, none},
      {"http://", "http", none, none, "", none, none},
      {"http:", "http", none, none, "", none, none},
      {"http://user:pass@h:81/x", "http", "h", 81, "/x", none, none},
      {"http://[::1]:8080/a", "http", "::1", 8080, "/a", none, none},
      {"http://[2001:db8::10.0.0.5]/", "http", "2001:db8::10.0.0.5", none, "/", none, none},
      {"http://h%20x/", "http", "h%20x", none, "/", none, none},
      {"http://h/a%20b%2Fc%C3%A4?a%20b#c%20d", "http", "h", none, "/a b/cä", "a%20b", "c%20d"},
      {"http://h/a%FF%20b", "http", "h", none, "/a%FF%20b", none, none},
      {"file:///home/a%23b.html", "file", none, none, "/home/a#b.html", none, none},
      {"file:/x", "file", none, none, "/x", none, none},
      {"lumobrowser://10.0.0.5/x", "lumobrowser", "10.0.0.5", none, "/x", none, none},
      // What follows the scheme of an opaque address is no path.
      {"localhost:9090/x?q", "localhost", none, none, none, "q", none},
      {"mailto:a@b", "mailto", none, none, none, none, none},
      {"about:blank", "about", none, none, none, none, none},
      {"data:text/html,a#b", "data", none, none, none, none, "b"},
      {"http:?q", "http", none, none, "", "q", none},
      // References without a scheme.
      {"10.0.0.5/p", none, none, none, "10.0.0.5/p", none, none},
      {"10.0.0.5", none, none, none, "10.0.0.5", none, none},
      {"/a/b?c#d", none, none, none, "/a/b", "c", "d"},
      {"a/b:c", none, none, none, "a/b:c", none, none},
      {"//h:1/x", none, "h", 1, "/x", none, none},
      {"?q", none, none, none, "", "q", none},
      {"#f", none, none, none, "", none, "f"},
      {"x", none, none, none, "x", none, none},
      // A host and port as people type them.
      {"10.0.0.5:9090", none, "10.0.0.5", 9090, "", none, none},
      {"10.0.0.5:9090/x/?q#f", none, "10.0.0.5", 9090, "/x/", "q", "f"},
      {"10.0.0.5:9090?q", none, "10.0.0.5", 9090, "", "q", none},
      {"10.0.0.5:9090#f:1", none, "10.0.0.5", 9090, "", none, "f:1"},
      {"255.255.255.255:65535", none, "255.255.255.255", 65535, "", none, none},
  };
  for (const Parts& parts : table) {
    const auto url = Url::parse(parts.text);
    ASSERT_TRUE(url) << parts.text;
    EXPECT_EQ(url->absoluteString(), parts.text);
    EXPECT_EQ(url->scheme(), parts.scheme) << parts.text;
    EXPECT_EQ(url->host(), parts.host) << parts.text;
    EXPECT_EQ(url->port(), parts.port) << parts.text;
    EXPECT_EQ(url->path(), parts.path) << parts.text;
    EXPECT_EQ(url->query(), parts.query) << parts.text;
    EXPECT_EQ(url->fragment(), parts.fragment) << parts.text;
    EXPECT_EQ(description(*url), parts.text);
  }
}

TEST(Url, RefusesWhatIsNoAddress) {
  for (const std::string text : {"",
                                 " ",
                                 "a b",
                                 "http://h/a b",
                                 " http://h/",
                                 "http://h/\n",
                                 "http://h/ä",
                                 "http://h/%",
                                 "http://h/%2",
                                 "http://h/%zz",
                                 "http://h/a|b",
                                 "http://h/<x>",
                                 "http://h/\"x\"",
                                 "http://h/a\\b",
                                 "http://h/{x}",
                                 "http://h/^`",
                                 "http://h/[x]",
                                 "http://h/?a[]=1",
                                 "http://h/#a#b",
                                 "http://[junivaserver]/x",
                                 "[junivaserver]/x",
                                 "http://[::1",
                                 "http://[::1]x/",
                                 "http://[fe80::1%25eth0]/",
                                 "http://h:80:90/",
                                 "http://h:x/",
                                 "http://h:+80/",
                                 "http://h:-1/",
                                 "http://h:(null)/x",
                                 "http://10.0.0.5:(null)",
                                 "(null)://(null):(null)",
                                 "http://h:65536/",
                                 "http://h:99999999999999999999/",
                                 "http://h:18446744073709551696/",
                                 "10.0.0.5:",
                                 "10.0.0.5:/x",
                                 "10.0.0.5:65536",
                                 "10.0.0.5:90a",
                                 "10.0.0.5:(null)",
                                 "10.0.0.5:80:90",
                                 "10.0.0.5:9090/a b",
                                 "256.0.0.1:80",
                                 "10.0.0:80",
                                 "010.0.0.5:80",
                                 "10.0.0.5.6:80",
                                 "1:2",
                                 ":80",
                                 "://h"}) {
    EXPECT_FALSE(Url::parse(text)) << text;
  }
  EXPECT_FALSE(Url::parse(std::string_view("http://h/\0x", 11)));
  EXPECT_FALSE(Url::parse(std::string_view("\0", 1)));
  EXPECT_FALSE(Url::parse(Text()));
  EXPECT_FALSE(Url::parse(Text("")));
  EXPECT_TRUE(Url::parse(Text("x")));
}

TEST(Url, KnowsTheBoundsOfPorts) {
  EXPECT_EQ(Url::parse("http://h:0/")->port(), 0);
  EXPECT_EQ(Url::parse("http://h:65535/")->port(), 65535);
  EXPECT_EQ(Url::parse("http://h:00080/")->port(), 80);
}

TEST(Url, TakesLongAddressesUpToALimit) {
  const std::string start = "http://h/";
  for (const std::string unit : {"a", "/", "/..", "%41"}) {
    std::string text = start;
    while (text.size() + unit.size() <= std::size_t{2} << 20) {
      text += unit;
    }
    const auto url = Url::parse(text);
    ASSERT_TRUE(url) << unit;
    EXPECT_LE(url->standardized().absoluteString().size(), text.size());
  }
  EXPECT_TRUE(Url::parse(start + std::string((2 << 20) - start.size(), 'a')));
  EXPECT_FALSE(Url::parse(start + std::string((2 << 20) - start.size() + 1, 'a')));
}

TEST(Url, ReadsWhatWebEnginesWrite) {
  struct Row {
    std::string given;
    Text result;
  };
  const std::vector<Row> table = {
      {"http://h/a?filter[name]=x|y^{z}`", "http://h/a?filter%5Bname%5D=x%7Cy%5E%7Bz%7D%60"},
      {"http://h/a|b[c]", "http://h/a%7Cb%5Bc%5D"},
      {"http://h/a%20b%zz%", "http://h/a%20b%25zz%25"},
      {"http://[::1]:9090/[x]#a#b", "http://[::1]:9090/%5Bx%5D#a%23b"},
      {"file:///a%23b?c#d", "file:///a%23b?c#d"},
      {"http://h/plain?q#f", "http://h/plain?q#f"},
      {"about:blank", "about:blank"},
      {"data:text/html,<p>ä</p>", "data:text/html,%3Cp%3E%C3%A4%3C/p%3E"},
      {"", none},
      {"http://h:(null)/", none},
  };
  for (const auto& [given, result] : table) {
    const auto url = Url::parseEngineText(given);
    EXPECT_EQ(url ? Text(url->absoluteString()) : none, result) << given;
  }
}

TEST(Url, KnowsTheLastPathComponent) {
  const std::vector<std::pair<std::string, std::string>> table = {
      {"http://h", ""},
      {"http://h/", "/"},
      {"http://h//", "/"},
      {"http://h/a", "a"},
      {"http://h/a/b/", "b"},
      {"http://h/a/b//", "b"},
      {"http://h/a%20b?x/y#z/w", "a b"},
      {"http://h/a/b%2Fc", "b/c"},
      {"http://h/a/b%2F", "b/"},
      {"http://h/a/%FF", "%FF"},
      {"a", "a"},
      {"a/b", "b"},
      {"mailto:a/b", ""},
      {"10.0.0.5:9090/x/y", "y"},
      {"?q", ""},
  };
  for (const auto& [text, component] : table) {
    EXPECT_EQ(Url::parse(text)->lastPathComponent(), component) << text;
  }
}

TEST(Url, KnowsTheParameters) {
  const std::vector<std::pair<std::string, Text>> table = {
      {"http://h/a;b", "b"},
      {"http://h/a;b=1;c?d;e#f;g", "b=1;c"},
      {"http://h/a;b/c", none},
      {"http://h/a;b/c;", ""},
      {"http://h/a;b/", none},
      {"http://h/a%3Bb", none},
      {"http://h/a;b%20c", "b%20c"},
      {"http://h;x/", none},
      {"a;b", "b"},
      {"data:text/html;base64,x", none},
      {"http://h?a;b", none},
  };
  for (const auto& [text, parameters] : table) {
    EXPECT_EQ(Url::parse(text)->parameterString(), parameters) << text;
  }
}

TEST(Url, ResolvesDotSegments) {
  const std::vector<std::pair<std::string, std::string>> table = {
      {"http://h/a/./b/../c", "http://h/a/c"},
      {"http://h/a/b/..", "http://h/a/"},
      {"http://h/a/b/.", "http://h/a/b/"},
      {"http://h/..", "http://h/"},
      {"http://h/.", "http://h/"},
      {"http://h/../../a", "http://h/a"},
      {"http://h/a/../../../b/", "http://h/b/"},
      {"http://h/a//../b", "http://h/a/b"},
      {"http://h/a/..//b", "http://h//b"},
      {"http://h/a/.../b..c/.d/..e/f.", "http://h/a/.../b..c/.d/..e/f."},
      {"http://h/a/%2E%2e/b", "http://h/a/%2E%2e/b"},
      // Only the path changes, byte for byte.
      {"HTTP://User@H:080/A/../b%2f?../x/./y#/../z", "HTTP://User@H:080/b%2f?../x/./y#/../z"},
      {"http://a/../a", "http://a/a"},
      {"http://h", "http://h"},
      {"http://h?a/../b", "http://h?a/../b"},
      {"http://[::1]/a/../b", "http://[::1]/b"},
      {"file:///a/./b", "file:///a/b"},
      {"file:/a/../b", "file:/b"},
      {"/a/../b", "/b"},
      {"//h/../b", "//h/b"},
      {"10.0.0.5:9090/a/../b", "10.0.0.5:9090/b"},
      // A path must not turn into an authority.
      {"file:/..//x", "file:/.//x"},
      {"file:/.//x", "file:/.//x"},
      {"/a/..//b", "/.//b"},
      // Nothing to be resolved against.
      {"a/../b", "a/../b"},
      {"../a", "../a"},
      {"localhost:9090/../x", "localhost:9090/../x"},
  };
  for (const auto& [text, result] : table) {
    const Url url = Url::parse(text)->standardized();
    EXPECT_EQ(url.absoluteString(), result) << text;
    EXPECT_EQ(url.standardized(), url) << text;
    EXPECT_EQ(url.host(), Url::parse(text)->host()) << text;
  }
}

TEST(Url, AppendsPathComponents) {
  struct Row {
    std::string text;
    Text component;
    std::string result;
  };
  const std::vector<Row> table = {
      {"http://h:9090", "/registration/start", "http://h:9090/registration/start"},
      {"http://h:9090", "registration/start", "http://h:9090/registration/start"},
      {"http://h:9090/", "/a", "http://h:9090/a"},
      {"http://h:9090/", "a", "http://h:9090/a"},
      {"http://h/a", "b", "http://h/a/b"},
      {"http://h/a/", "b/", "http://h/a/b/"},
      {"http://h/a//", "//b", "http://h/a/b"},
      {"http://h/a", "/", "http://h/a/"},
      {"http://h", none, "http://h"},
      {"http://h/a/", none, "http://h/a/"},
      {"http://h/a/", "", "http://h/a/"},
      {"http://h/a", "b?c#d", "http://h/a/b%3Fc%23d"},
      {"http://h/a", "b c%20[ä]", "http://h/a/b%20c%2520%5B%C3%A4%5D"},
      {"http://h/a", "b:c;d=e@f&g,h+i", "http://h/a/b:c;d=e@f&g,h+i"},
      {"http://h/a?q#f", "b", "http://h/a/b?q#f"},
      {"http://h?q", "b", "http://h/b?q"},
      {"file:///", "x", "file:///x"},
      {"file:/", "//x", "file:/x"},
      {"10.0.0.5:9090", "x", "10.0.0.5:9090/x"},
      {"a", "b", "a/b"},
      {"?q", "b", "/b?q"},
      {"http://[::1]:9090", "b", "http://[::1]:9090/b"},
  };
  for (const auto& [text, component, result] : table) {
    const Url url = Url::parse(text)->byAppendingPathComponent(component);
    EXPECT_EQ(url.absoluteString(), result) << text;
    EXPECT_EQ(url.host(), Url::parse(text)->host());
    EXPECT_EQ(url.query(), Url::parse(text)->query());
  }
}

TEST(PercentEscapes, AreAddedToWhatHasNoPlaceInAnAddress) {
  const std::vector<std::pair<std::string, std::string>> table = {
      {"", ""},
      {"http://h:9090/a-b_c.d~e!$&'()*+,;=:@/?f#g", "http://h:9090/a-b_c.d~e!$&'()*+,;=:@/?f#g"},
      {"http://h/a b\tc\n", "http://h/a%20b%09c%0A"},
      {"http://h/\"<>\\^`{|}", "http://h/%22%3C%3E%5C%5E%60%7B%7C%7D"},
      {"http://h/100%", "http://h/100%25"},
      {"http://h/a%20b", "http://h/a%2520b"},
      {"http://h/ä写", "http://h/%C3%A4%E5%86%99"},
      {"http://h/\xFF\x7F", "http://h/%FF%7F"},
      {std::string("a\0b", 3), "a%00b"},
      // Brackets belong to the authority.
      {"http://[::1]:9090/[x]?[y]#[z]", "http://[::1]:9090/%5Bx%5D?%5By%5D#%5Bz%5D"},
      {"http://[junivaserver]/x", "http://[junivaserver]/x"},
      {"lumobrowser://[junivaserver]", "lumobrowser://[junivaserver]"},
      {"[junivaserver]/x", "%5Bjunivaserver%5D/x"},
      {"//[::1]/[", "//[::1]/%5B"},
      {"http://[::1]?[", "http://[::1]?%5B"},
      {"http:/[x]//[y]", "http:/%5Bx%5D//%5By%5D"},
      {"a/b://[x]", "a/b://%5Bx%5D"},
      {"1a://[x]", "1a://%5Bx%5D"},
      // A hash route survives, a second hash is escaped.
      {"http://h/#/orders/5", "http://h/#/orders/5"},
      {"http://h/#/a#b#c", "http://h/#/a%23b%23c"},
      {"##", "#%23"},
      // In the name of a file both are plain characters.
      {"file:///a#b?c d", "file:///a%23b%3Fc%20d"},
      {"FILE:///a#b", "FILE:///a%23b"},
      {"/file:#?", "/file:#?"},
  };
  for (const auto& [text, escaped] : table) {
    EXPECT_EQ(stringByAddingPercentEscapes(text), escaped) << text;
  }
}

TEST(PercentEscapes, AreRemoved) {
  const std::vector<std::pair<std::string, Text>> table = {
      {"", ""},
      {"a%20b", "a b"},
      {"%41%6a%4A%2f%25", "AjJ/%"},
      {"%C3%A4ä", "ää"},
      {"%2520", "%20"},
      {"100%", "100%"},
      {"%2", "%2"},
      {"%zz%4", "%zz%4"},
      {"%%41", "%A"},
      {"%4%31", "%41"},
      {"a+b", "a+b"},
      {"%FF", none},
      {"%C3", none},
      {"\xC3%A4", "ä"},
      {"\xFF", none},
      {"%ED%A0%80", none},
      {"%00", std::string(1, '\0')},
  };
  for (const auto& [text, plain] : table) {
    EXPECT_EQ(stringByRemovingPercentEscapes(text), plain) << text;
  }
}

// An address that arrives half escaped: the escapes are removed, then added once.
TEST(PercentEscapes, BringAnAddressToOneForm) {
  const std::vector<std::pair<std::string, std::string>> table = {
      {"http://h/a%20b c", "http://h/a%20b%20c"},
      {"http://h/a%20b%20c", "http://h/a%20b%20c"},
      {"http://h/a%2520b", "http://h/a%2520b"},
      {"http://h/%C3%A4ö", "http://h/%C3%A4%C3%B6"},
      {"http://h/50%", "http://h/50%25"},
      {"http://h/#/orders%20a", "http://h/#/orders%20a"},
      {"http://h/%5Bx%5D", "http://h/%5Bx%5D"},
      {"http://%5B::1%5D/", "http://[::1]/"},
      {"http://h/?q=a%26b", "http://h/?q=a&b"},
      {"file:///a%23b%3F", "file:///a%23b%3F"},
      {"localhost:9090/a b", "localhost:9090/a%20b"},
      {"10.0.0.5:9090/a b", "10.0.0.5:9090/a%20b"},
  };
  for (const auto& [text, form] : table) {
    const Text plain = stringByRemovingPercentEscapes(text);
    ASSERT_TRUE(plain) << text;
    const std::string escaped = stringByAddingPercentEscapes(*plain);
    EXPECT_EQ(escaped, form) << text;
    EXPECT_TRUE(Url::parse(escaped)) << text;
  }
}

// How a start address gets a scheme: by what parses and what the scheme then is.
TEST(Url, TellsWhichAddressesLackAScheme) {
  const std::vector<std::pair<std::string, Text>> table = {
      {"localhost:9090/page", "localhost"}, {"10.0.0.5/p", none}, {"10.0.0.5:9090/p", none},
      {"HTTPS://host/", "HTTPS"},           {"photo", none},      {"photo.local/x", none},
      {"photo.local:9090/x", "photo.local"}};
  for (const auto& [text, scheme] : table) {
    ASSERT_TRUE(Url::parse(text)) << text;
    EXPECT_EQ(Url::parse(text)->scheme(), scheme) << text;
    if (!scheme) {
      EXPECT_EQ(Url::parse("http://" + text)->scheme(), "http") << text;
    }
  }
  EXPECT_EQ(Url::parse("http://localhost:9090/page")->host(), "localhost");
}

TEST(HtmlEscape, LeavesNothingThatHasAMeaning) {
  EXPECT_EQ(htmlEscaped("<a href=\"x\" b='y'>&amp;ä</a>"),
            "&lt;a href=&quot;x&quot; b=&#39;y&#39;&gt;&amp;amp;ä&lt;/a&gt;");
  EXPECT_EQ(htmlEscaped(""), "");
}

TEST(Url, TakesAnyText) {
  const std::string pieces[] = {"http:", "file:", "//",     "/",  ".", "..",   "a", "10.0.0.5", ":",
                                "9090",  "?",     "#",      "[",  "]", "@",    "%", "%2",       "%20",
                                "%C3",   "%A4",   ";",      " ",  "ä", "\xFF", "|", "::",       "h",
                                "&",     "%2e",   "(null)", "\"", "1", "//"};
  std::mt19937 random(20261121);
  int parsed = 0;
  for (int round = 0; round < 12000; ++round) {
    std::string text;
    for (auto count = random() % 10; count > 0; --count) {
      text += pieces[random() % std::size(pieces)];
    }
    const std::string escaped = stringByAddingPercentEscapes(text);
    if (isValidUtf8(text)) {
      ASSERT_EQ(stringByRemovingPercentEscapes(escaped), text);
    }
    // Escaped text always has a place behind a host.
    ASSERT_TRUE(Url::parse(stringByAddingPercentEscapes("http://h/" + text))) << text;
    ASSERT_TRUE(Url::parseEngineText("http://h/" + text)) << text;
    const Text component = validUtf8(text);
    const Url appended = Url::parse("http://h")->byAppendingPathComponent(component);
    if (!component->empty() && !component->starts_with('/')) {
      ASSERT_EQ(appended.path(), "/" + *component);
    }
    if (const auto url = Url::parse(text)) {
      ++parsed;
      ASSERT_EQ(url->absoluteString(), text);
      ASSERT_EQ(Url::parseEngineText(text), url);
      const Url standard = url->standardized();
      ASSERT_EQ(standard.standardized(), standard) << text;
      ASSERT_EQ(standard.scheme(), url->scheme()) << text;
      ASSERT_EQ(standard.host(), url->host()) << text;
      ASSERT_EQ(standard.query(), url->query()) << text;
      const Url longer = url->byAppendingPathComponent("x y");
      ASSERT_TRUE(longer == Url::parse(longer.absoluteString())) << text;
      ASSERT_NE(longer, *url) << text;
      ASSERT_EQ(longer.host(), url->host()) << text;
    }
    EXPECT_EQ(htmlEscaped(text).find_first_of("<>\"'"), std::string::npos);
  }
  EXPECT_GT(parsed, 500);
}

}  // namespace
