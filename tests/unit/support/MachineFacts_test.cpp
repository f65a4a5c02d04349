#include "support/MachineFacts.h"

#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using platform::Dictionary;

const std::string kMeminfo =
    "MemTotal:        8048412 kB\n"
    "MemFree:         2097152 kB\n"
    "Buffers:           10244 kB\n"
    "Unevictable:      102400 kB\n"
    "Mlocked:          102400 kB\n"
    "SUnreclaim:        51200 kB\n"
    "KernelStack:       10240 kB\n"
    "PageTables:        20480 kB\n"
    "Percpu:             1024 kB\n";

TEST(MachineFacts, CountsMemoryInPages) {
  const auto statistics = lumo::memoryStatistics(kMeminfo, 4096);
  ASSERT_TRUE(statistics);
  EXPECT_EQ(statistics->freePages, 524288U);
  EXPECT_EQ(statistics->wiredPages, (102400U + 51200 + 10240 + 20480 + 1024) / 4);
}

TEST(MachineFacts, MemoryHasItsFourValues) {
  const lumo::MemoryStatistics statistics{524289, 47000};
  EXPECT_EQ(lumo::memoryDictionary(statistics, 4096, true),
            (Dictionary{{"freePages", 524289},
                        {"freeBytes", std::int64_t{2147487744}},
                        {"freeMB", 2048},
                        {"wiredMB", 183}}));
  EXPECT_EQ(lumo::memoryDictionary(statistics, 4096, false),
            (Dictionary{{"freePages", 524289}, {"freeBytes", std::int64_t{2147487744}}, {"freeMB", 2048}}));
}

TEST(MachineFacts, ProductsAreComputedIn64Bits) {
  const lumo::MemoryStatistics statistics{std::numeric_limits<std::uint32_t>::max(), 1ULL << 33};
  const auto dictionary = lumo::memoryDictionary(statistics, 65536, true);
  EXPECT_EQ(*dictionary.find("freeBytes"), platform::PropertyList(std::int64_t{281474976645120}));
  EXPECT_EQ(*dictionary.find("wiredMB"), platform::PropertyList(std::int64_t{1} << 29));
}

TEST(MachineFacts, MoreFreePagesThanTheNumberHoldsCountAsItsGreatest) {
  const auto statistics = lumo::memoryStatistics("MemFree: 99999999999999 kB", 4096);
  ASSERT_TRUE(statistics);
  EXPECT_EQ(statistics->freePages, std::numeric_limits<std::uint32_t>::max());
}

TEST(MachineFacts, AMachineThatDoesNotTellItsMemoryHasNone) {
  for (const std::string text : {"", "MemTotal: 5 kB\n", "MemFree:\n", "MemFree: many kB", "MemFree 5 kB",
                                 "MemFree: 99999999999999999999999 kB", "MemFree: 18014398509481984 kB"}) {
    EXPECT_FALSE(lumo::memoryStatistics(text, 4096)) << text;
  }
  EXPECT_FALSE(lumo::memoryStatistics(kMeminfo, 0));
}

TEST(MachineFacts, TheModelIsTheFirstNameThatSaysSomething) {
  using Names = std::vector<std::string>;
  const std::vector<std::pair<Names, std::string>> rows = {
      {{"ThinkCentre M70q\n", "3180"}, "ThinkCentre M70q"},
      {{"", "3180\n"}, "3180"},
      {{"To be filled by O.E.M.\n", "H610M-K", ""}, "H610M-K"},
      {{"system product name", "Default string", std::string("Raspberry Pi 4 Model B\0", 23)},
       "Raspberry Pi 4 Model B"},
      {{" \n", "None", "N/A", "Intel(R) N100"}, "Intel(R) N100"},
      {{"", ""}, ""},
      {{}, ""},
  };
  for (const auto& [names, model] : rows) {
    EXPECT_EQ(lumo::hardwareModel(names), model);
  }
}

TEST(MachineFacts, TheProcessorsNameIsThatOfTheFirst) {
  EXPECT_EQ(lumo::processorName(
                "processor\t: 0\nmodel name\t: Intel(R) N100: 4\nprocessor\t: 1\nmodel name\t: x\n"),
            "Intel(R) N100: 4");
  EXPECT_EQ(lumo::processorName("processor\t: 0\n"), "");
}

TEST(MachineFacts, AModelShorterThan16BytesStillGetsABufferOf16) {
  // The machine's name shows how much of it there is.
  EXPECT_EQ(lumo::modelAndMachine("Pi", "0123456789abcdefgh"), "Pi (0123456789abcdef)");
  EXPECT_EQ(lumo::modelAndMachine("", "x86_64"), " (x86_64)");
  EXPECT_EQ(lumo::modelAndMachine("A model of 20 bytes.", "0123456789abcdefghijklm"),
            "A model of 20 bytes. (0123456789abcdefghijk)");
  EXPECT_EQ(lumo::modelAndMachine("MacBookPro18,3", "arm64"), "MacBookPro18,3 (arm64)");
}

TEST(MachineFacts, AModelThatIsNoTextIsAbsentAndSuchAMachineShowsAsNone) {
  EXPECT_EQ(lumo::modelAndMachine("\xFF\xFE", "x86_64"), std::nullopt);
  EXPECT_EQ(lumo::modelAndMachine("Pi", "\xFF\xFE"), "Pi ((null))");
}

TEST(MachineFacts, ReadsTheSystemsName) {
  const std::string text =
      "# comment\nPRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nNAME='Debian $x'\nVERSION_ID=12\n"
      "QUOTED=\"a \\\"b\\\" \\$c\"\nEMPTY=\nPRETTY=no\n";
  EXPECT_EQ(lumo::osReleaseValue(text, "PRETTY_NAME"), "Debian GNU/Linux 12 (bookworm)");
  EXPECT_EQ(lumo::osReleaseValue(text, "NAME"), "Debian $x");
  EXPECT_EQ(lumo::osReleaseValue(text, "VERSION_ID"), "12");
  EXPECT_EQ(lumo::osReleaseValue(text, "QUOTED"), "a \"b\" $c");
  EXPECT_EQ(lumo::osReleaseValue(text, "EMPTY"), "");
  EXPECT_EQ(lumo::osReleaseValue(text, "PRETTY"), "no");
  EXPECT_EQ(lumo::osReleaseValue(text, "VERSION"), std::nullopt);
  const std::vector<std::pair<std::string, std::string>> values = {
      {"\"", "\""},     {"'a\\b'", "a\\b"}, {"\"a\\", "\"a\\"}, {"a\\", "a\\"},
      {"\"a'", "\"a'"}, {"''", ""},         {"a\\ b", "a b"},
  };
  for (const auto& [written, meant] : values) {
    EXPECT_EQ(lumo::osReleaseValue("X=" + written, "X"), meant) << written;
  }
}

TEST(MachineFacts, AVersionIsANumberWhateverTheLanguage) {
  EXPECT_DOUBLE_EQ(lumo::versionNumber("2.36"), 2.36);
  EXPECT_DOUBLE_EQ(lumo::versionNumber("2.41-rc1"), 2.41);
  EXPECT_DOUBLE_EQ(lumo::versionNumber("none"), 0);
}

lumo::SystemFacts facts() {
  lumo::SystemFacts facts;
  facts.operatingSystemVersion = "Debian GNU/Linux 12 (bookworm) (Linux 6.1.0)";
  facts.foundationVersion = 2.36;
  facts.physicalMemory = 8241573888;
  facts.processors = 4;
  facts.memory = Dictionary{{"freeMB", 2048}, {"wiredMB", 181}};
  facts.modelAndArch = "ThinkCentre M70q (x86_64)";
  return facts;
}

TEST(MachineFacts, TheSummaryHasTwoLines) {
  EXPECT_EQ(lumo::systemVersionText(facts(), true),
            "Mac OS X Debian GNU/Linux 12 (bookworm) (Linux 6.1.0) foundation (2.360);\n7859MB (181MB wired, "
            "2048MB free); 4 CPU; LittleEndian (64-bit); ThinkCentre M70q (x86_64)");
  EXPECT_EQ(
      lumo::systemVersionText(facts(), false),
      "Mac OS X Debian GNU/Linux 12 (bookworm) (Linux 6.1.0) foundation (2.360);\n7859MB (2048MB free); 4 "
      "CPU; LittleEndian (64-bit); ThinkCentre M70q (x86_64)");
}

TEST(MachineFacts, MemoryThatIsNotKnownShowsAsZero) {
  auto unknown = facts();
  unknown.memory = std::nullopt;
  unknown.modelAndArch = std::nullopt;
  EXPECT_EQ(
      lumo::systemVersionText(unknown, true),
      "Mac OS X Debian GNU/Linux 12 (bookworm) (Linux 6.1.0) foundation (2.360);\n7859MB (0MB wired, 0MB "
      "free); 4 CPU; LittleEndian (64-bit); (null)");
  EXPECT_EQ(
      lumo::systemVersionText(unknown, false),
      "Mac OS X Debian GNU/Linux 12 (bookworm) (Linux 6.1.0) foundation (2.360);\n7859MB (0MB free); 4 CPU; "
      "LittleEndian (64-bit); (null)");
}

TEST(MachineFacts, TheBannerBeginsWithEightyCarets) {
  EXPECT_EQ(lumo::startupText("lumobrowser", "one\ntwo"),
            "^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^^\nlumobrowser "
            "starting "
            "up\none\ntwo");
}

}  // namespace
