// The command log.
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <locale>
#include <map>

#include "Helpers.h"
#include "rpc/RpcLogger.h"

namespace VELTRO::KELVO::ClientLib::Testing {
namespace {

// To the second, in the form of the log.
std::string LocalTime() {
  const std::time_t now = std::time(nullptr);
  char text[20];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", std::localtime(&now));
  return text;
}

// With a "#" for every digit.
std::string Shape(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }, '#');
  return text;
}

class Logger : public ::testing::Test {
 protected:
  Logger() {
    std::string name = ::testing::TempDir() + "kelvo-log-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no directory for the test");
    directory_ = name;
    path_ = directory_ / "log";
  }
  ~Logger() override { std::filesystem::remove_all(directory_); }

  // The lines of the log, from column `from` on: behind their prefixes.
  std::vector<std::string> Lines(std::size_t from = 31) const {
    std::ifstream file(path_);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line.substr(from));
    return lines;
  }
  using Texts = std::vector<std::string>;

  std::filesystem::path directory_;
  std::filesystem::path path_;
  RpcLogger logger_;
};

TEST_F(Logger, EveryLineBeginsWithTimeAndThread) {
  const std::string before = LocalTime();
  logger_.Enable(path_, false, true, -1);
  logger_.Write("text");
  logger_.BeginLine("TX", "Method").EndLine();
  logger_.Disable();
  const auto lines = Lines(0);
  ASSERT_EQ(lines.size(), 4U);
  const std::string id = std::to_string(gettid());
  const std::string prefix = "####-##-## ##:##:##.###\t" + std::string(6 - id.size(), ' ') + id + "\t";
  for (const std::string& line : lines) EXPECT_EQ(Shape(line.substr(0, 24)) + line.substr(24, 7), prefix);
  EXPECT_GE(lines.front().substr(0, before.size()), before);
  EXPECT_LE(lines.back().substr(0, before.size()), LocalTime());
}

TEST_F(Logger, WritesItsKindsOfLines) {
  logger_.Enable(path_, false, true, -1);
  logger_.Write("free");
  logger_.Write("RX", "ListDone 3", false);
  logger_.Write("RX", "Reset", true);
  logger_.BeginLine("TX", "Set").Append(std::int32_t{-7}).Append(true).Append(1.5).Append("a b").EndLine();
  logger_.BeginLine("RX", "Set").Append(std::vector<std::int32_t>{1, 2}).EndLine();
  logger_.BeginLine("RX", "Get").EndLine();
  logger_.Disable();
  EXPECT_EQ(Lines(),
            (Texts{"Logging enabled", "free", "RX: ListDone 3", "RX: Reset()", "TX: Set( -7 1 1.5 a b )",
                   "RX: Set( [ 1, 2 ] )", "RX: Get( )", "Logging disabled"}));
}

TEST_F(Logger, DoesNothingWithoutAFile) {
  logger_.Write("text");
  logger_.Write("RX", "text", true);
  logger_.BeginLine("TX", "Method").Append(1).EndLine();
  logger_.Flush();
  logger_.Disable();
  EXPECT_TRUE(std::filesystem::is_empty(directory_));
}

TEST_F(Logger, ValuesAreCutAtTheLimit) {
  const struct {
    int Limit;
    const char* Line;
  } rows[] = {
      {-1, "TX: M( abcde )"},         {5, "TX: M( abcde )"},
      {6, "TX: M( abcde )"},          {4, "TX: M( abcd...[truncated] )"},
      {0, "TX: M( ...[truncated] )"},
  };
  for (const auto& row : rows) {
    logger_.Enable(path_, false, true, row.Limit);
    logger_.BeginLine("TX", "M").Append("abcde").EndLine();
    logger_.Write("free lines are never cut");
    logger_.Disable();
    EXPECT_EQ(Lines(), (Texts{"Logging enabled", row.Line, "free lines are never cut", "Logging disabled"}));
  }
}

TEST_F(Logger, OpensOneFileAtATime) {
  EXPECT_EQ(
      Failure([&] { logger_.Enable(directory_ / "none" / "log", false, true, 0); }),
      "Unable to open log file '" + (directory_ / "none" / "log").string() + "': No such file or directory");
  EXPECT_FALSE(logger_.IsEnabled());
  logger_.Enable(path_, false, true, -1);
  EXPECT_EQ(Failure([&] { logger_.Enable(path_, false, true, -1); }), "RpcLogger is already enabled!");
  logger_.Write("goes on");
  logger_.Disable();
  EXPECT_EQ(Lines(), (Texts{"Logging enabled", "goes on", "Logging disabled"}));
  logger_.Enable(path_, false, false, -1);  // behind what is there
  logger_.Disable();
  EXPECT_EQ(Lines().size(), 5U);
  logger_.Enable(path_, false, true, -1);  // in its place
  logger_.Disable();
  EXPECT_EQ(Lines().size(), 2U);
}

TEST_F(Logger, PutsTheTimeIntoTheNameWhenAsked) {
  logger_.Enable(path_, true, true, -1);
  const std::filesystem::directory_iterator entry(directory_);
  EXPECT_EQ(Shape(entry->path().filename()), "log-" + std::string(14, '#'));
}

TEST_F(Logger, LinesOfManyThreadsStayWhole) {
  constexpr std::uint32_t threadCount = 8;
  constexpr int lineCount = 200;
  logger_.Enable(path_, false, true, -1);
  Together(threadCount, [&](std::uint32_t thread) {
    for (int i = 0; i < lineCount; ++i) {
      auto line = logger_.BeginLine("TX", "Method");
      for (int value = 0; value < 10; ++value) line.Append(thread);
      line.EndLine();
    }
  });
  logger_.Disable();
  std::map<std::string, int> counts;
  for (const std::string& line : Lines()) ++counts[line];
  ASSERT_EQ(counts.size(), threadCount + 2U);
  for (std::uint32_t thread = 0; thread < threadCount; ++thread) {
    std::string line = "TX: Method(";
    for (int value = 0; value < 10; ++value) line += " " + std::to_string(thread);
    EXPECT_EQ(counts[line + " )"], lineCount);
  }
}

TEST(LogText, DoesNotDependOnTheLocale) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
  EXPECT_EQ(LogText(1234567.5), "1234567.5");
  EXPECT_EQ(LogText(1234567), "1234567");
  msgpack::zone zone;
  EXPECT_EQ(LogText(msgpack::object(std::vector<double>{12345.5, 1}, zone)), "[12345.5,1]");
  std::locale::global(before);
}

}  // namespace
}  // namespace VELTRO::KELVO::ClientLib::Testing
