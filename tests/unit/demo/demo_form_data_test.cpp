#include <gtest/gtest.h>

#include "demo/form_data.h"

namespace juniva {
namespace {

TEST(DemoFormData, ReadsFields) {
  const auto form = FormData::parse("name=Zo%C3%AB+B&p1=2&&flag&empty=&a=b=c&name=second");
  ASSERT_TRUE(form);
  EXPECT_EQ(form->size(), 6u);
  EXPECT_EQ(form->value("name"), "Zoë B");
  EXPECT_EQ(form->value("p1"), "2");
  EXPECT_EQ(form->value("flag"), "");
  EXPECT_EQ(form->value("empty"), "");
  EXPECT_EQ(form->value("a"), "b=c");
  EXPECT_EQ(form->value("none"), std::nullopt);
  EXPECT_EQ(form->text("none"), "");
}

TEST(DemoFormData, RefusesWhatIsMalformed) {
  for (const std::string_view broken : {"a=%", "%zz=1", "a=%00", "a=%ff", "a=\xff", "x&y=%4"}) {
    EXPECT_FALSE(FormData::parse(broken)) << broken;
  }
  EXPECT_FALSE(FormData::parse(std::string_view("a=\0", 3)));
}

TEST(DemoFormData, RefusesMoreThanAThousandFields) {
  std::string text;
  for (int field = 0; field < 1000; ++field) text += "a&";
  EXPECT_TRUE(FormData::parse(text));
  EXPECT_FALSE(FormData::parse(text + "a"));
}

TEST(DemoFormOfRequest, ComesFromQueryOrBody) {
  EXPECT_EQ(formOfRequest({.method = "GET", .query = "a=1", .body = "a=2"})->value("a"), "1");
  EXPECT_EQ(formOfRequest({.method = "HEAD", .query = "a=1"})->value("a"), "1");
  Request post = {
      .method = "POST", .query = "a=1", .contentType = "application/x-www-form-urlencoded", .body = "a=2"};
  EXPECT_EQ(formOfRequest(post)->value("a"), "2");
  post.contentType = "Application/X-WWW-Form-Urlencoded; charset=utf-8";
  EXPECT_EQ(formOfRequest(post)->value("a"), "2");
  post.contentType = "application/json";
  EXPECT_FALSE(formOfRequest(post));
  post.contentType = "";
  EXPECT_FALSE(formOfRequest(post));
  post.body = "";
  EXPECT_EQ(formOfRequest(post)->size(), 0u);
}

}  // namespace
}  // namespace juniva
