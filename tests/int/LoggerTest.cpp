// The command log.
#include "rpc/RpcLogger.h"

#include "Helpers.h"
#include "support/FailingMemory.h"

namespace VELTRO::KELVO::Test {
namespace {

const std::string Path = testing::TempDir() + "kelvo-log-" + std::to_string(getpid());

// Of this thread's lines; the id in it has six digits or, on a machine that has long been up, seven.
std::size_t PrefixSize() {
  return 24 + std::max<std::size_t>(6, std::to_string(gettid()).size()) + 1;
}

// The lines of the log, with or without their prefixes; a "|" behind each.
std::string Lines(bool arePrefixed = false) {
  std::ifstream file(Path);
  std::string lines;
  for (std::string line; std::getline(file, line);) {
    const std::size_t behind = line.find('\t', line.find('\t') + 1) + 1;
    lines += line.substr(arePrefixed ? 0 : behind) + "|";
  }
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
  EXPECT_FAILURE(logger.Enable(Path, false, true, -1), "RpcLogger is already enabled!");
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
  std::string lines = Lines(true);
  std::replace_if(
      lines.begin(), lines.begin() + 24, [](char c) { return c >= '0' && c <= '9'; }, '#');
  const std::string id = std::to_string(gettid());
  EXPECT_EQ(
      lines.substr(0, lines.find("enabled")),
      "####-##-## ##:##:##.###\t" + std::string(PrefixSize() - 25 - id.size(), ' ') + id + "\tLogging ");
}

TEST(Logger, StampsALineWithTheTimeAtWhichItIsWritten) {
  using std::chrono::milliseconds, std::chrono::system_clock;
  const auto now = [] { return std::chrono::time_point_cast<milliseconds>(system_clock::now()); };
  RpcLogger logger;
  const auto before = now();
  logger.Enable(Path, false, true, -1);
  const auto after = now();
  logger.Disable();
  const std::string line = Lines(true);
  const std::time_t about = system_clock::to_time_t(before);
  std::tm stamp{};
  localtime_r(&about, &stamp);  // for whether it is summer time
  const char* const rest = strptime(line.c_str(), "%Y-%m-%d %H:%M:%S.", &stamp);
  ASSERT_NE(rest, nullptr) << line;
  const auto written = system_clock::from_time_t(std::mktime(&stamp)) + milliseconds(std::atoi(rest));
  EXPECT_TRUE(before <= written && written <= after) << line;
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

TEST(Logger, ALineIsOneLineWhateverIsInIt) {
  RpcLogger logger;
  const std::string odd = "\n\r\t\\\x01\x7F\xC2\x85\xE2\x80\xA8z\xC3\xA9\xE2\x82\xAC";
  const std::string shown = R"(\n\r\t\\\x01\x7f\xc2\x85\xe2\x80\xa8)"
                            "z\xC3\xA9\xE2\x82\xAC";
  logger.Enable(Path, false, true, 2);
  logger.Write(odd.c_str());
  logger.Write("RX", odd + std::string(1, '\0'), false);
  logger.BeginLine("TX", "A\nB").Append("\n\n\n").EndLine();
  logger.Disable();
  EXPECT_EQ(Lines(), "Logging enabled|" + shown + "|RX: " + shown +
                         R"(\x00|TX: A\nB( \n\n...[truncated] )|)" + "Logging disabled|");
}

TEST(Logger, SaysThatLinesAreMissing) {
  RpcLogger logger;
  logger.Enable(Path, false, true, -1);
  logger.Write("first");
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  const rlimit full{std::filesystem::file_size(Path) + PrefixSize() + 3, limit.rlim_max};
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &full);
  logger.Write("lost but for its beginning");
  logger.BeginLine("TX", "Lost").EndLine();
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, before);
  logger.Write("last");
  EXPECT_FAILURE(logger.Disable(), "Unable to write log file '" + Path + "': File too large");
  EXPECT_FALSE(logger.IsEnabled());
  EXPECT_EQ(Lines(), "Logging enabled|first|los|2 lines are missing here|last|Logging disabled|");
  EXPECT_FAILURE(logger.Disable(), "no failure");
}

TEST(Logger, WithoutMemoryLosesLinesAndNothingElse) {
  const std::string text(100, 'x');
  const std::string whole = "Logging enabled|RX: " + text + "()|TX: M( " + text + " )|Logging disabled|";
  std::string lines;
  for (int count = 0; lines != whole; ++count) {
    ASSERT_LT(count, 50);
    std::optional<RpcLogger> logger(std::in_place);
    logger->Enable(Path, false, true, -1);
    {
      const FailingMemory memory(count);
      logger->Write("RX", text, true);
      logger->BeginLine("TX", "M").Append(text).EndLine();
      logger.reset();
    }
    lines = Lines();
    std::istringstream each(lines);
    for (std::string line; std::getline(each, line, '|');) {
      EXPECT_TRUE(whole.find(line + "|") != std::string::npos || line.ends_with(" missing here")) << line;
    }
  }
}

TEST(LogText, DoesNotDependOnTheLocale) {
  const CommaLocale commas;
  msgpack::zone zone;
  EXPECT_EQ(LogText(1234567.5) + LogText(1234567), "1234567.51234567");
  EXPECT_EQ(LogText(msgpack::object(std::vector<double>{12345.5, 1}, zone)), "[12345.5,1]");
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
