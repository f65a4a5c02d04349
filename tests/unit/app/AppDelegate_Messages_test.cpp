#include "platform/pasteboard.h"
#include "tests/unit/app/app_delegate_fixture.h"

namespace lumo {
namespace {

using platform::Millis;
using testing::ElementsAre;

class MessagesTest : public apptest::AppDelegateTest {
 protected:
  void SetUp() override { launch(); }
  // What is loaded in the end.
  std::vector<std::string> loadedAddresses() {
    std::vector<std::string> addresses;
    for (const platform::UrlRequest& request : page().requests()) {
      addresses.push_back(request.url.absoluteString());
    }
    return addresses;
  }
};

TEST_F(MessagesTest, AnAddressIsStoredAtOnceAndLoaded100MillisecondsLater) {
  EXPECT_TRUE(delegate().validateUrlString("lumobrowser://http://h/x"));
  machine.dispatch.advance(Millis{99});
  EXPECT_EQ(runningAddress(), "http://h/x");
  EXPECT_TRUE(loadedAddresses().empty());
  machine.dispatch.advance(Millis{1});
  EXPECT_THAT(loadedAddresses(), ElementsAre("http://h/x"));
  EXPECT_TRUE(
      log.contains("AppDelegate->validateUrlString:....222222222222222222222222222222222222.........."));
  EXPECT_TRUE(log.contains(
      "AppDelegate->validateUrlString:....prefRunningUrlString will be set with: [http://h/x].........."));
}

TEST_F(MessagesTest, ARefusedTextStoresAndLoadsNothing) {
  EXPECT_FALSE(delegate().validateUrlString(std::nullopt));
  EXPECT_FALSE(delegate().validateUrlString("[junivaserver]/x"));
  machine.dispatch.advance(Millis{200});
  EXPECT_FALSE(runningAddress());
  EXPECT_TRUE(loadedAddresses().empty());
}

TEST_F(MessagesTest, OfSeveralAddressesTheLastEndsUpLoaded) {
  machine.application.openURLs({"http://h/1", "lumobrowser:http://h/2", "no address at all"});
  machine.dispatch.advance(Millis{100});
  EXPECT_EQ(runningAddress(), "http://h/2");
  EXPECT_EQ(loadedAddresses().back(), "http://h/2");
  EXPECT_NE(log.text().find("-[AppDelegate application:openURLs:] ("), std::string::npos);
}

TEST_F(MessagesTest, AnOpenFileRequestForSeveralFilesOpensOnlyTheFirstAndAnEmptyOneNothing) {
  machine.application.openFiles({});
  EXPECT_TRUE(loadedAddresses().empty());
  machine.application.openFiles({"/home/k/a.html", "/home/k/b.html"});
  machine.dispatch.runUntilIdle();
  EXPECT_THAT(loadedAddresses(), ElementsAre("file:///home/k/a.html"));
  EXPECT_NE(log.text().find("AppDelegate->application:openFiles:....filenames = (\n"
                            "    /home/k/a.html,"),
            std::string::npos)
      << log.text();
}

TEST_F(MessagesTest, BlanksInAFilesPathAreEscaped) {
  machine.application.openFiles({"/home/k/My Photos #1?.html"});
  EXPECT_EQ(runningAddress(), "file:///home/k/My%20Photos%20%231%3F.html");
  EXPECT_THAT(loadedAddresses(), ElementsAre("file:///home/k/My%20Photos%20%231%3F.html"));
}

TEST_F(MessagesTest, AServicesRequestWithTheOwnSchemeLoadsTheAddressWithoutIt) {
  machine.application.requestService(
      {{platform::kStringPboardType}, std::nullopt, "lumobrowser://http://h/x"}, "data");
  machine.dispatch.advance(Millis{100});
  EXPECT_THAT(loadedAddresses(), ElementsAre("http://h/x"));
  EXPECT_TRUE(log.contains("Found pasteboard string data = lumobrowser://http://h/x"));
  EXPECT_TRUE(log.contains("Found data = data"));
  EXPECT_TRUE(log.contains("Found error = (null)"));
}

TEST_F(MessagesTest, AServicesRequestWithNeitherKindOnlyLogs) {
  machine.application.requestService({{"public.html"}, std::nullopt, std::nullopt});
  machine.dispatch.advance(Millis{100});
  EXPECT_TRUE(loadedAddresses().empty());
  EXPECT_FALSE(runningAddress());
  EXPECT_TRUE(log.contains("AppDelegate->SearchFromPasteboard:userData:error:...."));
  EXPECT_NE(log.text().find("AppDelegate->SearchFromPasteboard:userData:error:....pboardtypes = (\n"),
            std::string::npos);
}

TEST_F(MessagesTest, AServicesRequestWithBothLoadsTheStringLast) {
  machine.application.requestService({{platform::kFilenamesPboardType, platform::kStringPboardType},
                                      std::vector<std::string>{"/a.html"},
                                      "http://h/x"});
  machine.dispatch.advance(Millis{100});
  EXPECT_THAT(loadedAddresses(), ElementsAre("file:///a.html", "http://h/x"));
  EXPECT_TRUE(log.contains("filearray class type = NSArray"));
}

TEST_F(MessagesTest, ADroppedStringWithAPlaceholderIsResolvedLikeAnyAddress) {
  set(prefServerAddress, "http://10.1.2.3:8080/ignored");
  machine.notifications.postNotification({"LumoNotificationAddFromString",
                                          std::nullopt,
                                          {{"mystrings", "[junivaserver]/registrationorders"}},
                                          nullptr});
  machine.dispatch.advance(Millis{100});
  EXPECT_THAT(loadedAddresses(), ElementsAre("http://10.1.2.3:8080/registrationorders"));
  EXPECT_NE(log.text().find("AppDelegate->handleDragDropNotification:....userInfo = {\n    mystrings = "),
            std::string::npos);
}

TEST_F(MessagesTest, APlaceholderStandsForTheServerOfThePreferencesElseForTheDefaultOne) {
  EXPECT_EQ(delegate().replaceKnownPlaceholdersForUrl("http://h/x"), "http://h/x");
  EXPECT_EQ(delegate().replaceKnownPlaceholdersForUrl("[junivaserver]/x"), std::nullopt);
  set(prefDefaultServerAddress, "http://10.1.2.4");
  EXPECT_EQ(delegate().replaceKnownPlaceholdersForUrl("[junivaserver]/x"), "http://10.1.2.4:9090/x");
  set(prefServerAddress, "http://10.1.2.3:8080/ignored");
  EXPECT_EQ(delegate().replaceKnownPlaceholdersForUrl("[dorvinserver]/x"), "http://10.1.2.3:8080/x");
}

TEST_F(MessagesTest, ADropWithoutAStringIsRefused) {
  machine.notifications.postNotificationName("LumoNotificationAddFromString");
  machine.dispatch.advance(Millis{100});
  EXPECT_TRUE(loadedAddresses().empty());
}

TEST_F(MessagesTest, TheGetUrlHandlerWaits100MillisecondsBeforeItResolves) {
  delegate().handleGetURLEvent_withReplyEvent("lumobrowser://http://h/a%2Fb");
  machine.dispatch.advance(Millis{99});
  EXPECT_FALSE(runningAddress());
  machine.dispatch.advance(Millis{1});
  EXPECT_EQ(runningAddress(), "http://h/a/b");
  machine.dispatch.advance(Millis{100});
  EXPECT_THAT(loadedAddresses(), ElementsAre("http://h/a/b"));
  EXPECT_TRUE(log.contains(
      "AppDelegate->handleGetURLEvent:withReplyEvent:....urlstring = lumobrowser://http://h/a%2Fb"));
}

TEST_F(MessagesTest, TheOpenContentsHandlerOnlyLogs) {
  delegate().handleOpenContentsEvent_withReplyEvent("contents");
  machine.dispatch.advance(Millis{500});
  EXPECT_TRUE(log.contains("AppDelegate->handleOpenContentsEvent:withReplyEvent:...."));
  EXPECT_TRUE(log.contains("contents"));
  EXPECT_TRUE(loadedAddresses().empty());
}

TEST_F(MessagesTest, AnUntitledFileIsAnsweredYesAndNotOpened) {
  EXPECT_TRUE(machine.application.openUntitledFile());
  EXPECT_TRUE(log.contains("AppDelegate->applicationOpenUntitledFile:...."));
  EXPECT_TRUE(loadedAddresses().empty());
}

}  // namespace
}  // namespace lumo
