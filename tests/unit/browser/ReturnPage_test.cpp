#include "browser/ReturnPage.h"

#include <gtest/gtest.h>

namespace {

using lumo::returnUrl;
using platform::Url;

TEST(ReturnPageTest, ATextAndAnAddressGiveTheSame) {
  const std::string address = "http://127.0.0.1:9090/start?x=1#top";
  EXPECT_EQ(returnUrl(address), Url::parse(address));
  EXPECT_EQ(returnUrl(*Url::parse(address)), Url::parse(address));
}

TEST(ReturnPageTest, WhatIsNoAddressGivesNone) {
  EXPECT_FALSE(returnUrl({}));
  for (const char* text : {"", " ", "http://a b/", "http://127.0.0.1:(null)/", "http://h:99999/"}) {
    EXPECT_FALSE(returnUrl(std::string(text))) << text;
  }
}

}  // namespace
