#include "support/EmailAddress.h"

#include <chrono>
#include <ctime>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/regex.h>
#include <unicode/unistr.h>

#include "support/ZELKOR_Log.h"
#include "tests/fakes/captured_log.h"

namespace {

using namespace std::string_view_literals;
using lumo::matchesEmailExpression;

struct Row {
  std::string_view address;
  bool isValid;
};

const std::vector<Row> kRows = {
    {"anna@example.com", true},
    {"anna.b-c+order_1@photos.example.co.uk", true},
    {"!#$%&'*+/=?^_`{|}~-@a.b", true},
    {"\"anna,b\"@example.com", true},
    {"\"anna\\ b\"@example.com", true},
    {"\"anna b\"@example.com", false},
    {"\"a\\\"b\"@example.com", true},
    {"\"\"@example.com", true},
    {"\"a@b\"@example.com", true},
    {"anna@[192.168.0.1]", true},
    {"anna@[1.2.3.x:tag]", true},
    {"anna@[1.2.3.ipv6:abc]", true},
    {"a@b.c", true},
    {"a@1.2", true},
    {"a@b-c.d--e.f", true},
    {"anna.example.com", false},
    {"", false},
    {"@", false},
    {"@example.com", false},
    {"anna@", false},
    {"anna@example", false},
    {"anna@example.", false},
    {"anna@.example.com", false},
    {"anna@exa mple.com", false},
    {".anna@example.com", false},
    {"anna.@example.com", false},
    {"an..na@example.com", false},
    {"anna@@example.com", false},
    {"anna@-example.com", false},
    {"anna@example-.com", false},
    {"anna@[256.1.1.1]", false},
    {"anna@[1.2.3]", false},
    {"anna@example.com ", false},
    {" anna@example.com", false},
    {"anna@example.com\n", false},
    {"anna@example.com, otto@example.com", false},
    {"\"anna@example.com", false},
    {"anna@ex\u00e4mple.com", false},
    {"anna@example.com\0"sv, false},
    {"Anna@Example.COM", false},
};

TEST(EmailAddress, MatchesWholeAddressesInLowerCase) {
  for (const Row& row : kRows) {
    EXPECT_EQ(matchesEmailExpression(row.address), row.isValid) << row.address;
  }
}

TEST(EmailAddress, AnswersAsABacktrackingEngineDoes) {
  UErrorCode status = U_ZERO_ERROR;
  const auto expression = icu::UnicodeString::fromUTF8(
      icu::StringPiece(lumo::kEmailExpression.data(), static_cast<int32_t>(lumo::kEmailExpression.size())));
  icu::RegexMatcher matcher(expression, 0, status);
  ASSERT_TRUE(U_SUCCESS(status)) << u_errorName(status);
  std::mt19937 random(20261114);
  const std::vector<std::string> parts = {"a",  "b1",  "z",    "@",  "@", ".", ".",    "-",
                                          "\"", "\\",  " ",    "[",  "]", ":", "25",   "6",
                                          "0",  "1.2", "3.4.", "\t", "'", "|", "\x7f", "_"};
  int valid = 0;
  for (int i = 0; i < 60000; ++i) {
    std::string noise;
    for (auto count = random() % 9; count > 0; --count) {
      noise += parts[random() % parts.size()];
    }
    const std::vector<std::string> addresses = {noise,
                                                "a@" + noise,
                                                noise + "@a.b",
                                                "\"" + noise + "\"@a.b",
                                                "\"" + noise,
                                                "a@[1.2.3." + noise + "]",
                                                "a@[1.2.3.a:" + noise + "]"};
    const std::string& address = addresses[random() % addresses.size()];
    const auto text = icu::UnicodeString::fromUTF8(address);
    matcher.reset(text);
    const bool expected = matcher.matches(status) != 0;
    ASSERT_EQ(matchesEmailExpression(address), expected) << address;
    valid += expected ? 1 : 0;
  }
  // Else this would say little.
  EXPECT_GT(valid, 1000);
}

// What the thread itself has worked: what else the machine does does not count.
std::chrono::milliseconds timeOfThisThread() {
  timespec time{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::seconds(time.tv_sec) +
                                                               std::chrono::nanoseconds(time.tv_nsec));
}

TEST(EmailAddress, ALongTextIsAnsweredAtOnce) {
  const auto repeated = [](std::string_view part, std::size_t length) {
    std::string text;
    while (text.size() < length) {
      text += part;
    }
    return text.substr(0, length);
  };
  struct LongRow {
    std::string address;
    bool isValid;
  };
  constexpr std::size_t kLength = 10000;
  const std::vector<LongRow> rows = {
      {repeated("a", kLength), false},
      {repeated("a.", kLength), false},
      {repeated("a", kLength) + "@example.com", true},
      {repeated("a.", kLength) + "a@example.com", true},
      {"a@" + repeated("a", kLength), false},
      {"a@" + repeated("a", kLength) + ".b", true},
      {"a@" + repeated("a.", kLength) + "-", false},
      {"a@" + repeated("a-", kLength) + ".", false},
      {"a@" + repeated("a-", kLength) + "a.b", true},
      {"a@" + repeated("a.", kLength), false},
      {"\"" + repeated("\\\\", kLength), false},
      {"\"" + repeated("\\a", kLength) + "\"@a.b", true},
      {"\"" + repeated("a", kLength) + "\"@a.b", true},
      {"a@[1.2.3.a:" + repeated("\\a", kLength), false},
      {"a@[1.2.3.a:" + repeated("\\a", kLength) + "]", true},
      {"a@[1.2.3." + repeated("a-", kLength) + "]", false},
      {repeated("@", kLength), false},
  };
  for (const LongRow& row : rows) {
    const auto start = timeOfThisThread();
    EXPECT_EQ(matchesEmailExpression(row.address), row.isValid) << row.address.substr(0, 20);
    EXPECT_LT((timeOfThisThread() - start).count(), 50) << row.address.substr(0, 20);
  }
}

TEST(ValidateEmailAddress, AcceptsWhateverTheCase) {
  const fakes::CapturedLog log;
  EXPECT_TRUE(lumo::ZELKOR_Log::validateEmailAddress("anna@EXAMPLE.COM"));
  EXPECT_TRUE(lumo::ZELKOR_Log::validateEmailAddress("Anna@Example.com"));
  EXPECT_TRUE(lumo::ZELKOR_Log::validateEmailAddress("\"Anna,B\"@example.com"));
  EXPECT_FALSE(lumo::ZELKOR_Log::validateEmailAddress("anna.example.com"));
  EXPECT_FALSE(lumo::ZELKOR_Log::validateEmailAddress(""));
  EXPECT_FALSE(lumo::ZELKOR_Log::validateEmailAddress("anna@ex\xe4mple.com"));
}

TEST(ValidateEmailAddress, LogsTheAddressAndItsLength) {
  const fakes::CapturedLog log;
  lumo::ZELKOR_Log::validateEmailAddress("Anna@example.com");
  EXPECT_TRUE(log.contains("Passed emailAddress=[Anna@example.com] with length=[16]..."));
  lumo::ZELKOR_Log::validateEmailAddress("\u00e4\U0001F5A8@x");
  EXPECT_TRUE(log.contains("Passed emailAddress=[\u00e4\U0001F5A8@x] with length=[5]..."));
}

}  // namespace
