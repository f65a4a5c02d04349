#include "browser/ReceiptPrint.h"

#include <fstream>

#include <gmock/gmock.h>

#include "platform/format.h"
#include "tests/unit/browser/receipt_fixture.h"

namespace browsertest {
namespace {

namespace fs = std::filesystem;

constexpr const char* kShellLine =
    "the shell will not take this path as one word, and the receipt is not printed: [%@]";

class ReceiptPrintTest : public testing::Test {
 protected:
  std::vector<std::string> filesOnTheDesktop() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(home.path() / "Desktop")) {
      names.push_back(entry.path().filename());
    }
    return names;
  }

  TestHome home;
  fakes::CapturedLog log;
};

TEST_F(ReceiptPrintTest, TheSnapshotIsOnTheDesktopOfTheHomeFolder) {
  EXPECT_EQ(lumo::snapshotPath(), home.path().string() + "/Desktop/Snapshot.jpg");
}

TEST_F(ReceiptPrintTest, TheSnapshotIsAJpegInAFolderThatIsMade) {
  ASSERT_FALSE(fs::exists(home.path() / "Desktop"));
  ASSERT_TRUE(lumo::writeSnapshot(fakes::FakeWebView::picture(8, 8), lumo::snapshotPath()));
  const std::string bytes = home.read("Desktop/Snapshot.jpg");
  EXPECT_TRUE(bytes.starts_with("\xFF\xD8\xFF"));
  EXPECT_TRUE(bytes.ends_with("\xFF\xD9"));
  EXPECT_THAT(filesOnTheDesktop(), testing::ElementsAre("Snapshot.jpg"));
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ReceiptPrintTest, ANewSnapshotTakesTheOldOnesPlaceInOneStep) {
  home.write("Desktop/Snapshot.jpg", "the receipt of another customer");
  // Whoever reads the old one reads it to its end.
  std::ifstream reader(home.snapshot(), std::ios::binary);
  ASSERT_TRUE(lumo::writeSnapshot(fakes::FakeWebView::picture(8, 8), lumo::snapshotPath()));
  std::string old;
  std::getline(reader, old);
  EXPECT_EQ(old, "the receipt of another customer");
  EXPECT_TRUE(home.read("Desktop/Snapshot.jpg").starts_with("\xFF\xD8\xFF"));
}

TEST_F(ReceiptPrintTest, WhatCannotBeWrittenIsToldAndLeavesNothingBehind) {
  const std::string path = lumo::snapshotPath();
  home.write("Desktop/Snapshot.jpg/occupied", "");
  EXPECT_FALSE(lumo::writeSnapshot(fakes::FakeWebView::picture(8, 8), path));
  EXPECT_TRUE(log.contains("the receipt cannot be written to " + path + ": Is a directory"));
  EXPECT_THAT(filesOnTheDesktop(), testing::ElementsAre("Snapshot.jpg"));
}

TEST_F(ReceiptPrintTest, ADesktopThatIsAFileIsTold) {
  home.write("Desktop", "no folder");
  EXPECT_FALSE(lumo::writeSnapshot(fakes::FakeWebView::picture(8, 8), lumo::snapshotPath()));
  EXPECT_THAT(log.lines(), testing::Contains(testing::StartsWith("the receipt cannot be written to ")));
  EXPECT_EQ(home.read("Desktop"), "no folder");
}

TEST_F(ReceiptPrintTest, AnEmptyPictureIsNotWritten) {
  home.write("Desktop/Snapshot.jpg", "old");
  EXPECT_FALSE(lumo::writeSnapshot({}, lumo::snapshotPath()));
  EXPECT_EQ(home.read("Desktop/Snapshot.jpg"), "old");
}

TEST_F(ReceiptPrintTest, TheCommandLineIsBothPathsWithOneBlankBetween) {
  EXPECT_EQ(lumo::printCommandLine("/opt/printtocups2.sh", "/home/kiosk/Desktop/Snapshot.jpg"),
            "/opt/printtocups2.sh /home/kiosk/Desktop/Snapshot.jpg");
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ReceiptPrintTest, TheTextForAScriptThatWasNotFoundIsRunAsItStands) {
  EXPECT_EQ(lumo::printCommandLine("(null)", "/s.jpg"), "(null) /s.jpg");
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ReceiptPrintTest, WithoutAScriptThereIsNoCommandLine) {
  EXPECT_FALSE(lumo::printCommandLine(std::nullopt, "/s.jpg"));
  EXPECT_FALSE(lumo::printCommandLine("", "/s.jpg"));
  EXPECT_EQ(log.count("UNALBE TO FIND CUPS SCRIPT...."), 2U);
}

TEST_F(ReceiptPrintTest, AHomeThatTheShellTakesApartIsToldAndNotQuoted) {
  EXPECT_EQ(lumo::printCommandLine("/p.sh", "/home/photo desk/Desktop/Snapshot.jpg"),
            "/p.sh /home/photo desk/Desktop/Snapshot.jpg");
  EXPECT_THAT(log.lines(), testing::ElementsAre(platform::stringWithFormat(
                               kShellLine, "/home/photo desk/Desktop/Snapshot.jpg")));
  for (const char* path : {"/a'b", "/a&b", "/a;b", "/a$b", "/a(b", "/a\nb"}) {
    log.clear();
    lumo::printCommandLine("/p.sh", path);
    EXPECT_THAT(log.text(), testing::HasSubstr(platform::stringWithFormat(kShellLine, path))) << path;
  }
}

TEST_F(ReceiptPrintTest, TheMarkerCountsAnywhereInTheOutput) {
  EXPECT_TRUE(lumo::reportsNoPrinter("no-printers-available"));
  EXPECT_TRUE(lumo::reportsNoPrinter("lpstat: nothing\n<no-printers-available>\nbye\n"));
  EXPECT_FALSE(lumo::reportsNoPrinter("No-Printers-Available"));
  EXPECT_FALSE(lumo::reportsNoPrinter("no-printers-availabl"));
  EXPECT_FALSE(lumo::reportsNoPrinter(""));
  EXPECT_FALSE(lumo::reportsNoPrinter(std::nullopt));
}

TEST_F(ReceiptPrintTest, TheAlertsSayWhatTheySay) {
  const platform::Alert printer = lumo::noPrinterAlert();
  EXPECT_EQ(printer.messageText, "No Receipt Printer Detected");
  EXPECT_EQ(printer.informativeText, "Please connect a receipt printer and try again.");
  EXPECT_EQ(printer.style, platform::AlertStyle::Warning);
  ASSERT_EQ(printer.buttons.size(), 2U);
  EXPECT_EQ(printer.buttons[0].title, "Try Again");
  EXPECT_EQ(printer.buttons[0].tag, 1);
  EXPECT_EQ(printer.buttons[1].title, "Do Not Print Receipt");
  EXPECT_EQ(printer.buttons[1].tag, 0);

  const platform::Alert page = lumo::noReturnPageAlert();
  EXPECT_EQ(page.messageText, "NO PAGE TO RETURN To ???????");
  EXPECT_EQ(page.informativeText, "");
  EXPECT_EQ(page.style, platform::AlertStyle::Critical);
  ASSERT_EQ(page.buttons.size(), 1U);
  EXPECT_EQ(page.buttons[0].title, "OK");
}

}  // namespace
}  // namespace browsertest
