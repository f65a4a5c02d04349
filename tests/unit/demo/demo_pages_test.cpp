#include <algorithm>

#include <gtest/gtest.h>

#include "demo/code39.h"
#include "demo/embedded_pages.h"
#include "demo/page_template.h"

namespace juniva {
namespace {

TEST(DemoTemplate, FillsGaps) {
  const Values values = {{"name", "<b>"}, {"raw-part", "<i>"}};
  EXPECT_EQ(fillTemplate("a {{name}} b {{{raw-part}}} c", values), "a &lt;b&gt; b <i> c");
  EXPECT_EQ(fillTemplate("{{none}}|{{{none}}}|", values), "||");
  EXPECT_EQ(fillTemplate("", values), "");
}

TEST(DemoTemplate, LeavesOtherBracesAlone) {
  for (const std::string_view text : {"{{", "{{{", "{{name", "a{b{c}}", "{{A}}", "{{}}", "{{ name }}"}) {
    EXPECT_EQ(fillTemplate(text, {{"name", "x"}}), text);
  }
}

TEST(DemoTemplate, DoesNotFillWhatItFilledIn) {
  EXPECT_EQ(fillTemplate("{{name}}{{{name}}}", {{"name", "{{name}}"}}), "{{name}}{{name}}");
}

TEST(DemoEmbeddedPages, AreThere) {
  for (const std::string_view name :
       {"layout.html", "landing.html", "photos.html", "tile.html", "details.html", "thumb.html",
        "review.html", "review_line.html", "confirmation.html", "receipt.html", "receipt_line.html",
        "message.html", "try.html", "dialogs.html", "login.html", "style.css", "order.js", "act.js"}) {
    EXPECT_FALSE(embeddedPage(name).empty()) << name;
  }
  EXPECT_TRUE(embeddedPage("none.html").empty());
}

TEST(DemoCode39, HasThreeWideElementsOfNineForEachCharacter) {
  const std::string all = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ-";
  const auto elements = code39Elements(all);
  ASSERT_TRUE(elements);
  EXPECT_EQ(elements->size(), (all.size() + 2) * 10 - 1);
  std::vector<std::string> seen;
  for (std::size_t at = 0; at < elements->size(); at += 10) {
    const std::string character = elements->substr(at, 9);
    EXPECT_EQ(std::count(character.begin(), character.end(), 'w'), 3) << at;
    if (at + 9 < elements->size()) {
      EXPECT_EQ((*elements)[at + 9], 'n');
    }
    seen.push_back(character);
  }
  EXPECT_EQ(seen.front(), seen.back());
  seen.pop_back();
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(std::adjacent_find(seen.begin(), seen.end()), seen.end());
}

TEST(DemoCode39, WritesAKnownCode) {
  EXPECT_EQ(code39Elements("A1"),
            "nwnnwnwnn"
            "n"
            "wnnnnwnnw"
            "n"
            "wnnwnnnnw"
            "n"
            "nwnnwnwnn");
  EXPECT_FALSE(code39Elements("a"));
  EXPECT_FALSE(code39Elements("A*"));
  EXPECT_EQ(code39Svg("ä", 10), "");
  EXPECT_NE(code39Svg("A-1042", 60).find("height=\"60\""), std::string::npos);
}

}  // namespace
}  // namespace juniva
