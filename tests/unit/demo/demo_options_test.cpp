#include <gtest/gtest.h>

#include "demo/options.h"

namespace juniva {
namespace {

TEST(DemoOptions, StartOnLoopback) {
  const Options options = std::get<Options>(parseOptions({}));
  EXPECT_EQ(options.address, "127.0.0.1");
  EXPECT_EQ(options.port, 9090);
  EXPECT_FALSE(options.act || options.help || options.version);
}

TEST(DemoOptions, AreRead) {
  const Options options = std::get<Options>(
      parseOptions({"--port", "1", "--port=0", "--listen", "::1", "--act", "--help", "--version"}));
  EXPECT_EQ(options.address, "::1");
  EXPECT_EQ(options.port, 0);
  EXPECT_TRUE(options.act && options.help && options.version);
  EXPECT_EQ(std::get<Options>(parseOptions({"--listen=localhost"})).address, "127.0.0.1");
  EXPECT_EQ(std::get<Options>(parseOptions({"--listen=0.0.0.0"})).address, "0.0.0.0");
}

TEST(DemoOptions, AreRefused) {
  const std::vector<std::string> wrong[] = {
      {"--port"},    {"--port", "65536"}, {"--port", "-1"},   {"--port=x"}, {"--port="},
      {"--listen"},  {"--listen", "no"},  {"--listen=1.2.3"}, {"--act=1"},  {"--help="},
      {"--unknown"}, {"extra"},           {"-p", "1"},        {""},
  };
  for (const auto& arguments : wrong) {
    const auto parsed = parseOptions(arguments);
    const auto* error = std::get_if<OptionError>(&parsed);
    ASSERT_NE(error, nullptr) << arguments[0];
    EXPECT_FALSE(error->message.empty());
  }
}

TEST(DemoOptions, GiveTheHostOfAUrl) {
  EXPECT_EQ(hostForUrl("127.0.0.1"), "127.0.0.1");
  EXPECT_EQ(hostForUrl("::1"), "[::1]");
}

}  // namespace
}  // namespace juniva
