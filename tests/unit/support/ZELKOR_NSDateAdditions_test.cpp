#include "support/ZELKOR_NSDateAdditions.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/locid.h>

#include "tests/fakes/captured_log.h"
#include "tests/unit/platform/child_process.h"

namespace {

using lumo::ZELKOR_NSDateAdditions::stringWithUTSFormat;

// 2026-11-14 23:56:06.123 UTC, a Saturday.
const platform::Date kDate{std::chrono::milliseconds(1794700566123)};

// The library keeps its own idea of the user's language.
class Language {
 public:
  explicit Language(const char* name) { set(icu::Locale(name)); }
  ~Language() { set(before_); }
  Language(const Language&) = delete;
  Language& operator=(const Language&) = delete;

 private:
  static void set(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(locale, status);
  }
  const icu::Locale before_ = icu::Locale::getDefault();
};

TEST(StringWithUTSFormat, WritesADateInTheFormat) {
  const ScopedEnvironment zone("TZ", "UTC");
  const Language english("en_US");
  struct Row {
    const char* format;
    const char* text;
  };
  const std::vector<Row> rows = {
      {"yyyy-MM-dd HH:mm:ss.SSS", "2026-11-14 23:56:06.123"},
      {"yyyyMMddHHmmss", "20261114235606"},
      {"d.M.yy", "14.11.26"},
      {"EEEE, d MMMM y", "Saturday, 14 November 2026"},
      {"EEE MMM", "Sat Nov"},
      {"h:mm a", "11:56 PM"},
      {"Z", "+0000"},
      {"YYYY 'week' ww, 'day' DDD", "2026 week 46, day 318"},
      {"QQQ G", "Q4 AD"},
      {"hh 'o''clock'", "11 o'clock"},
      {"'gr\u00fc\u00dfe' yyyy", "gr\u00fc\u00dfe 2026"},
      {"", ""},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(stringWithUTSFormat(kDate, row.format), row.text) << row.format;
  }
}

TEST(StringWithUTSFormat, CountsInThisMachinesTimeZone) {
  {
    const ScopedEnvironment zone("TZ", "America/New_York");
    EXPECT_EQ(stringWithUTSFormat(kDate, "yyyy-MM-dd HH:mm Z"), "2026-11-14 18:56 -0500");
  }
  {
    const ScopedEnvironment zone("TZ", "Asia/Tokyo");
    EXPECT_EQ(stringWithUTSFormat(kDate, "yyyy-MM-dd HH:mm Z"), "2026-11-15 08:56 +0900");
  }
}

TEST(StringWithUTSFormat, HasTheNamesOfTheUsersLanguage) {
  const ScopedEnvironment zone("TZ", "UTC");
  const Language german("de_DE");
  EXPECT_EQ(stringWithUTSFormat(kDate, "EEEE, d. MMMM"), "Samstag, 14. November");
}

TEST(StringWithUTSFormat, WritesDatesBefore1970) {
  const ScopedEnvironment zone("TZ", "UTC");
  const platform::Date date{std::chrono::milliseconds(-1)};
  EXPECT_EQ(stringWithUTSFormat(date, "yyyy-MM-dd HH:mm:ss.SSS"), "1969-12-31 23:59:59.999");
}

TEST(StringWithUTSFormat, WhatIsNoFormatGivesNothingAndALine) {
  for (const std::string format : {"j", "yyyy n"}) {
    const fakes::CapturedLog log;
    EXPECT_EQ(stringWithUTSFormat(kDate, format), std::nullopt) << format;
    EXPECT_NE(log.text().find("No date can be written in the format \"" + format + "\""), std::string::npos);
  }
}

}  // namespace
