// The command log.
#include "rpc/RpcLogger.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <locale>
#include <thread>

#include "Helpers.h"

namespace VELTRO::KELVO::Test {
namespace {

const std::string Path = testing::TempDir() + "kelvo-log-" + std::to_string(getpid());

// The lines of the log, from column `from` on: behind their prefixes; a "|" behind each.
std::string Lines(std::size_t from = 31) {
  std::ifstream file(Path);
  std::string lines;
  for (std::string line; std::getline(file, line);) lines += line.substr(from) + "|";
  std::filesystem::remove(Path);
  return lines;
}

TEST(Logger, WritesItsKindsOfLinesBehindTimeAndThread) {
  RpcLogger logger;
  logger.Write("no file is open");
  logger.BeginLine("TX", "Method").Append(1).EndLine();
  logger.Enable(Path, false, true, -1);
  logger.Write("free");
  logger.Write("RX", "ListDone 3", false);
  logger.Write("RX", "Reset", true);
  logger.BeginLine("TX", "Set").Append(std::int32_t{-7}).Append(true).Append(1.5).Append("a b").EndLine();
  EXPECT_EQ(Failure([&] { logger.Enable(Path, false, true, -1); }), "RpcLogger is already enabled!");
  logger.BeginLine("RX", "Set").Append(std::vector<std::int32_t>{1, 2}).EndLine();
  logger.Disable();
  logger.Enable(Path, false, false, -1);  // behind what is there
  Together(8, [&](std::uint32_t) {
    for (int i = 0; i < 200; ++i) logger.BeginLine("TX", "M").Append(12).Append(34).EndLine();
  });
  logger.Disable();
  std::string expected =
      "Logging enabled|free|RX: ListDone 3|RX: Reset()|TX: Set( -7 1 1.5 a b )|RX: Set( [ 1, 2 ] )|"
      "Logging disabled|Logging enabled|";
  for (int i = 0; i < 8 * 200; ++i) expected += "TX: M( 12 34 )|";
  EXPECT_EQ(Lines(), expected + "Logging disabled|");
  logger.Enable(Path, false, true, -1);
  logger.Disable();
  std::string lines = Lines(0);
  std::replace_if(
      lines.begin(), lines.begin() + 24, [](char c) { return c >= '0' && c <= '9'; }, '#');
  const std::string id = std::to_string(gettid());
  EXPECT_EQ(lines.substr(0, lines.find("enabled")),
            "####-##-## ##:##:##.###\t" + std::string(6 - id.size(), ' ') + id + "\tLogging ");
}

TEST(Logger, ValuesAreCutAtTheLimit) {
  RpcLogger logger;
  for (const auto& [limit, value] : std::vector<std::pair<int, std::string>>{
           {-1, "abcde"}, {5, "abcde"}, {6, "abcde"}, {4, "abcd...[truncated]"}, {0, "...[truncated]"}}) {
    std::ofstream(Path) << "what was there is replaced\n";
    logger.Enable(Path, false, true, limit);
    logger.BeginLine("TX", "M").Append("abcde").EndLine();
    logger.Write("free lines are never cut");
    logger.Disable();
    EXPECT_EQ(Lines(), "Logging enabled|TX: M( " + value + " )|free lines are never cut|Logging disabled|");
  }
}

TEST(LogText, DoesNotDependOnTheLocale) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  msgpack::zone zone;
  EXPECT_EQ(LogText(1234567.5) + LogText(1234567), "1234567.51234567");
  EXPECT_EQ(LogText(msgpack::object(std::vector<double>{12345.5, 1}, zone)), "[12345.5,1]");
  std::locale::global(before);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
