#include "platform/linux/drop_content.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// How what other programs drag is understood.

namespace platform {
namespace {

using Text = std::optional<std::string>;
using Names = std::optional<std::vector<std::string>>;

struct Row {
  const char* what;
  Text uriList;
  Text text;
  Names filenames;
  Text string;
};

const Row kRows[] = {
    {"nothing", {}, {}, {}, {}},
    {"a text", {}, "http://h/x", {}, "http://h/x"},
    {"an empty text is one", {}, "", {}, ""},
    {"a text that ends with a NUL byte", {}, std::string("x\0", 2), {}, "x"},
    {"a text that is no UTF-8", {}, "a\xFFz", {}, "a\xEF\xBF\xBDz"},
    {"one file", "file:///k/a.txt\r\n", {}, Names{{"/k/a.txt"}}, {}},
    {"a file whose name is escaped",
     "file:///k/My%20Photos/100%25%20%C3%A4.jpg\r\n",
     {},
     Names{{"/k/My Photos/100% \xC3\xA4.jpg"}},
     {}},
    {"several files, in their order", "file:///k/b\r\nfile:///k/a\r\n", {}, Names{{"/k/b", "/k/a"}}, {}},
    {"plain line breaks, and none at the end", "file:///k/b\nfile:///k/a", {}, Names{{"/k/b", "/k/a"}}, {}},
    {"a NUL byte at the end", std::string("file:///k/a\0", 12), {}, Names{{"/k/a"}}, {}},
    {"comments and empty lines", "# from a file manager\r\n\r\nfile:///k/a\r\n", {}, Names{{"/k/a"}}, {}},
    {"a named host of this machine", "file://localhost/k/a\r\n", {}, Names{{"/k/a"}}, {}},
    {"the file of another machine", "file://elsewhere/k/a\r\n", {}, {}, {}},
    {"damaged addresses", "file:k\r\nfile:///k/%zz\r\nfile:///k/%00\r\n", {}, {}, {}},
    {"an empty list", "", {}, {}, {}},
    {"a link is no file", "http://h/x\r\n", "http://h/x", {}, "http://h/x"},
    {"a link without text", "http://h/x\r\n", {}, {}, {}},
    {"links beside files", "http://h/x\r\nfile:///k/a\r\n", {}, Names{{"/k/a"}}, {}},
    {"the path once more as text", "file:///k/a%20b\r\n", "/k/a b", Names{{"/k/a b"}}, {}},
    {"the address once more as text", "file:///k/a%20b\r\n", "file:///k/a%20b\r\n", Names{{"/k/a b"}}, {}},
    {"the paths with blanks between them",
     "file:///k/a%20b\r\nfile:///c\r\n",
     "/k/a b /c",
     Names{{"/k/a b", "/c"}},
     {}},
    {"the addresses with line breaks between them",
     "file:///a\r\nfile:///b\r\n",
     "file:///a\nfile:///b\n",
     Names{{"/a", "/b"}},
     {}},
    {"no more than the first names is a text of its own", "file:///a\r\nfile:///b\r\n", "/a",
     Names{{"/a", "/b"}}, "/a"},
    {"names and more are a text of their own", "file:///a\r\n", "/a is new", Names{{"/a"}}, "/a is new"},
    {"another text", "file:///a\r\n", "http://h/x", Names{{"/a"}}, "http://h/x"},
    {"an empty text beside files is a text", "file:///a\r\n", "", Names{{"/a"}}, ""},
};

TEST(DropContent, IsUnderstoodAsFilesAndStrings) {
  for (const Row& row : kRows) {
    const Pasteboard content = contentOfDrag(row.uriList, row.text);
    EXPECT_EQ(content.filenames, row.filenames) << row.what;
    EXPECT_EQ(content.string, row.string) << row.what;
    std::vector<std::string> types;
    if (row.filenames) {
      types.emplace_back("NSFilenamesPboardType");
    }
    if (row.string) {
      types.emplace_back("NSStringPboardType");
    }
    EXPECT_EQ(content.types, types) << row.what;
  }
}

TEST(DropContent, AListOfManyFilesTakesNoTime) {
  std::string list;
  std::string text;
  for (int number = 0; number < 20000; ++number) {
    list += "file:///k/" + std::to_string(number) + "\r\n";
    text += "/k/" + std::to_string(number) + "\n";
  }
  const Pasteboard content = contentOfDrag(list, text);
  EXPECT_EQ(content.filenames->size(), 20000U);
  EXPECT_FALSE(content.string);
}

}  // namespace
}  // namespace platform
