#include "app/StartUrl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lumo {
namespace {

using Text = std::optional<std::string>;

struct Row {
  const char* about;
  Text given;
  Text server;
  Text defaultServer;
  Text address;
};

class StartUrlTable : public testing::TestWithParam<Row> {};

TEST_P(StartUrlTable, ResolvesTheAddress) {
  const Row& row = GetParam();
  EXPECT_EQ(resolveStartUrl(row.given, row.server, row.defaultServer).address, row.address) << row.about;
}

INSTANTIATE_TEST_SUITE_P(
    Addresses, StartUrlTable,
    testing::Values(
        Row{"the placeholder takes scheme, host and port of the server, and nothing else of it",
            "lumobrowser://[junivaserver]/registrationorders",
            "http://10.1.2.3:8080/ignored?q#f",
            {},
            "http://10.1.2.3:8080/registrationorders"},
        Row{"a server without a port gets the usual one",
            "lumobrowser://[junivaserver]/registrationorders",
            "http://10.1.2.3",
            {},
            "http://10.1.2.3:9090/registrationorders"},
        Row{"the user of a server's address is dropped",
            "[junivaserver]/x",
            "http://me:pw@10.1.2.3",
            {},
            "http://10.1.2.3:9090/x"},
        Row{"the default server counts when no server is set",
            "[dorvinserver]/x",
            {},
            "https://photo.local",
            "https://photo.local:9090/x"},
        Row{"the server counts before the default one", "[dorvinserver]/x", "http://a", "http://b",
            "http://a:9090/x"},
        Row{"a placeholder in capitals alone is none", "[JUNIVASERVER]/x", "http://a", {}, {}},
        Row{"once one is found, every spelling is replaced",
            "[junivaserver]/[JunivaServer]/[DORVINSERVER]",
            "http://a",
            {},
            "http://a:9090/http://a:9090/http://a:9090"},
        Row{"http in front of the placeholder is not doubled",
            "http://[junivaserver]/x",
            "http://host:8080",
            {},
            "http://host:8080/x"},
        Row{"a placeholder without any server is refused", "[junivaserver]/x", {}, {}, {}},
        Row{"a server that is no address stands as it is", "[junivaserver]", "no such thing", {}, {}},
        Row{"a server without a host shows the text for none",
            "[junivaserver]/x",
            "file:///srv",
            {},
            "file://(null):9090/x"},
        Row{"an IPv6 server keeps its brackets",
            "[junivaserver]/x",
            "http://[::1]:8080",
            {},
            "http://[::1]:8080/x"},
        Row{"localhost and a port has no usable scheme",
            "localhost:9090/page",
            {},
            {},
            "http://localhost:9090/page"},
        Row{"a bare address number has no scheme", "10.0.0.5/p", {}, {}, "http://10.0.0.5/p"},
        Row{"an address number and a port has no scheme",
            "10.0.0.5:9090/p",
            {},
            {},
            "http://10.0.0.5:9090/p"},
        Row{"a scheme in capitals is kept as it is", "HTTPS://host/", {}, {}, "HTTPS://host/"},
        Row{"a file is taken", "file:///home/kiosk/a%20b.html", {}, {}, "file:///home/kiosk/a%20b.html"},
        Row{"the scheme goes with two slashes", "lumobrowser://http://h/x", {}, {}, "http://h/x"},
        Row{"the scheme goes with one slash", "lumobrowser:/http://h/x", {}, {}, "http://h/x"},
        Row{"the scheme goes without slashes", "lumobrowser:http://h/x", {}, {}, "http://h/x"},
        Row{"it goes wherever it stands", "lumobrowser:lumobrowser://http://h/x", {}, {}, "http://h/x"},
        Row{"but not in another case", "LumoBrowser://h/x", {}, {}, "http://LumoBrowser://h/x"},
        Row{"blanks and line breaks at both ends go", " \n\thttp://h/x\r\n ", {}, {}, "http://h/x"},
        Row{"also behind the scheme", "lumobrowser://  http://h/x ", {}, {}, "http://h/x"},
        Row{"a blank inside is refused", "http://h/a b", {}, {}, {}},
        Row{"another scheme is no way out: it is taken for a user of a host",
            "mailto:a@b",
            {},
            {},
            "http://mailto:a@b"},
        Row{"what is no address behind http either gets it once more",
            "a:b:c",
            {},
            {},
            "http://http://a:b:c"},
        Row{"and is refused where that does not help", "a:b:[", {}, {}, {}},
        Row{"nothing is refused", {}, "http://a", {}, {}},
        Row{"the empty text is refused", "", "http://a", {}, {}},
        Row{"the scheme alone is refused", "lumobrowser://", "http://a", {}, {}}));

TEST(StartUrl, SubstitutionAloneLeavesATextWithoutPlaceholderAlone) {
  EXPECT_EQ(replaceKnownPlaceholders("[JUNIVASERVER]/x", "http://a", {}), "[JUNIVASERVER]/x");
  EXPECT_EQ(replaceKnownPlaceholders("http://http://x", {}, {}), "http://http://x");
}

TEST(StartUrl, LogsTheTextAndItsScheme) {
  EXPECT_THAT(resolveStartUrl("lumobrowser:http://h/x", {}, {}).log,
              testing::ElementsAre("http://h/x", "url.scheme = http"));
  EXPECT_THAT(resolveStartUrl("h/x", {}, {}).log, testing::ElementsAre("h/x", "url.scheme = (null)"));
}

TEST(StartUrl, SaysThatNoServerIsSetInOneLine) {
  EXPECT_EQ(resolveStartUrl("[junivaserver]/x", {}, {}).log.size(), 1U);
}

}  // namespace
}  // namespace lumo
