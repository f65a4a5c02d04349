#include "dropview/DroppedItems.h"

#include <gmock/gmock.h>

namespace lumo {
namespace {

struct AddressRow {
  const char* what;
  std::string item;
  std::optional<std::string> address;
};

TEST(DroppedItems, AnItemBecomesAnAddressOfTheOwnScheme) {
  const AddressRow rows[] = {
      {"a plain path", "file:///home/k/a.jpg", "lumobrowser://file:///home/k/a.jpg"},
      {"blanks are escaped", "file:///home/k/My Photos/a b.jpg",
       "lumobrowser://file:///home/k/My%20Photos/a%20b.jpg"},
      {"every language is escaped byte for byte", "file:///k/Größe.jpg",
       "lumobrowser://file:///k/Gr%C3%B6%C3%9Fe.jpg"},
      {"an escape in the name is undone first", "file:///k/100%20.txt", "lumobrowser://file:///k/100%20.txt"},
      {"so another file is meant then", "file:///k/a%41b.txt", "lumobrowser://file:///k/aAb.txt"},
      {"an escaped slash becomes a folder's", "file:///k/a%2Fb.txt", "lumobrowser://file:///k/a/b.txt"},
      {"a percent sign that starts no escape stays one", "file:///k/100%.txt",
       "lumobrowser://file:///k/100%25.txt"},
      {"what would begin a query or a fragment is part of the name", "file:///k/a?b#c.txt",
       "lumobrowser://file:///k/a%3Fb%23c.txt"},
      {"blanks and line breaks at the end are lost", "file:///k/a.txt \n", "lumobrowser://file:///k/a.txt"},
      {"no UTF-8 after the escapes are undone", "file:///k/%FF.txt", std::nullopt},
      {"no UTF-8 at all", "file:///k/\xFF.txt", std::nullopt},
  };
  for (const AddressRow& row : rows) {
    EXPECT_EQ(ownAddressOfItem(row.item), row.address) << row.what;
  }
}

TEST(DroppedItems, AnItemIsThePathBehindItsScheme) {
  EXPECT_EQ(fileItem("/k/a b%20.txt"), "file:///k/a b%20.txt");
}

TEST(DroppedItems, ATextIsTrimmedAndMayBecomeEmpty) {
  EXPECT_EQ(droppedText("  http://h/x\r\n"), "http://h/x");
  EXPECT_EQ(droppedText(" \t\n"), "");
  EXPECT_EQ(droppedText("two words"), "two words");
  EXPECT_FALSE(droppedText(""));
  EXPECT_FALSE(droppedText(std::nullopt));
}

TEST(DroppedItems, TextImagePdfAndMovieAreAccepted) {
  for (const char* type : {"text/plain", "text/html", "application/x-shellscript", "image/jpeg",
                           "image/svg+xml", "application/pdf", "video/mp4", "video/quicktime"}) {
    EXPECT_TRUE(isAccepted(type)) << type;
  }
  for (const char* type : {"inode/directory", "application/zip", "audio/mpeg", "application/octet-stream",
                           "application/x-nobody-knows", ""}) {
    EXPECT_FALSE(isAccepted(type)) << type;
  }
  EXPECT_FALSE(isAccepted(std::nullopt));
}

}  // namespace
}  // namespace lumo
