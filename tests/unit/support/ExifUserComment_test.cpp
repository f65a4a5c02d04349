#include "support/ExifUserComment.h"

#include <string>

#include <gtest/gtest.h>

namespace {

using lumo::textOfUserComment;
using lumo::userCommentField;

const std::string kAscii("ASCII\0\0\0", 8);
const std::string kUnicode("UNICODE\0", 8);
const std::string kNone(8, '\0');

TEST(ExifUserCommentTest, PlainTextIsWrittenAsAscii) {
  EXPECT_EQ(userCommentField("a <b>", true), kAscii + "a <b>");
  EXPECT_EQ(userCommentField("a <b>", false), kAscii + "a <b>");
  EXPECT_EQ(userCommentField("", false), kAscii);
}

TEST(ExifUserCommentTest, OtherTextIsWrittenAsUnicodeInTheByteOrderAround) {
  EXPECT_EQ(userCommentField("a\u00E9", true), kUnicode + std::string("\0a\0\xE9", 4));
  EXPECT_EQ(userCommentField("a\u00E9", false), kUnicode + std::string("a\0\xE9\0", 4));
  EXPECT_EQ(userCommentField("\U0001F4F7", true), kUnicode + "\xD8\x3D\xDC\xF7");
}

TEST(ExifUserCommentTest, TextOfAnyLanguageReadsBack) {
  for (const std::string text :
       {"plain", "Grüße", "Ελληνικά", "русский", "日本語", "一二", "العربية", "עברית", "ไทย", "𝄞📷"}) {
    for (const bool isBigEndian : {false, true}) {
      EXPECT_EQ(textOfUserComment(userCommentField(text, isBigEndian), isBigEndian), text) << text;
    }
  }
}

struct Case {
  const char* what;
  std::string field;
  bool isBigEndian;
  std::optional<std::string> text;
};

TEST(ExifUserCommentTest, WhatOtherProgramsWriteIsUnderstood) {
  const std::string little("<\0\xE9\0>\0", 6);
  const std::string big("\0<\0\xE9\0>", 6);
  const Case cases[] = {
      {"zeros behind the text", kAscii + "text" + std::string(20, '\0'), false, "text"},
      {"UTF-8 under ASCII", kAscii + "Gr\u00FC\u00DFe", false, "Gr\u00FC\u00DFe"},
      {"Latin 1 under ASCII",
       kAscii + "Gr\xFC\xDF"
                "e",
       false, "Gr\u00FC\u00DFe"},
      {"a code in small letters", "Ascii" + std::string(3, '\0') + "text", false, "text"},
      {"a code with blanks", "UNICODE " + little, false, "<\u00E9>"},
      {"the other byte order", kUnicode + little, true, "<\u00E9>"},
      {"the other byte order, big", kUnicode + big, false, "<\u00E9>"},
      {"a mark, little", kUnicode + "\xFF\xFE" + little, true, "<\u00E9>"},
      {"a mark, big", kUnicode + "\xFE\xFF" + big, false, "<\u00E9>"},
      {"a zero unit behind", kUnicode + little + std::string(2, '\0'), false, "<\u00E9>"},
      {"half a unit behind", kUnicode + little + "x", false, "<\u00E9>"},
      {"UTF-8 under Unicode", kUnicode + "<plist>\u00E9", false, "<plist>\u00E9"},
      {"no code, zeros", kNone + "text", false, "text"},
      {"no code, blanks", "        text", false, "text"},
      {"text from the first byte on", "<?xml version", false, "<?xml version"},
      {"less than a code", "abc", false, "abc"},
      {"nothing", "", false, ""},
      {"only a code", kUnicode, false, ""},
      {"JIS", std::string("JIS\0\0\0\0\0", 8) + "\x1B$BF|K\\\x1B(B", false, "\u65E5\u672C"},
      {"half a surrogate pair", kUnicode + std::string("\x3D\xD8<\0", 4), false, std::nullopt},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(textOfUserComment(each.field, each.isBigEndian), each.text) << each.what;
  }
}

}  // namespace
