// What surrounds the calls: the table of handles, the last error, the command log.
#include "capi/APIContext.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <locale>
#include <optional>
#include <thread>

#include "Helpers.h"
#include "capi/Frame.h"
#include "rpc/RpcLogger.h"

namespace VELTRO::KELVO::Test {
namespace {

TEST(APIContext, HandlesRiseAndComeRound) {
  constexpr int most = INT32_MAX;
  for (const auto& [last, handles] : {std::pair(0, std::vector{1, 2, 3}), {most - 2, {most - 1, most, 1}}}) {
    APIContext table(last);
    for (const int handle : handles) {
      EXPECT_EQ(table.CreateNew(), handle);
      table.Remove(handle);  // not handed out again for that
    }
  }
  constexpr int tried = 0x10001;
  APIContext table(0, tried + 1);
  for (int i = 0; i < tried + 1; ++i) table.CreateNew();
  table.Remove(tried + 1);  // all that is free lies one further than is looked,
  EXPECT_EQ(Failure([&] { table.CreateNew(); }),
            "Maximum number of handles created. Disconnect has to be called to remove previous connections.");
  EXPECT_EQ(table.CreateNew(), tried + 1);  // and is the next
  table.Remove(tried);
  EXPECT_EQ(table.CreateNew(), tried);
}

TEST(Frame, TurnsWhateverIsThrownIntoAnError) {
  const std::pair<std::function<void()>, const char*> rows[] = {
      {[] {}, ""},
      {[] { throw std::runtime_error("some text"); }, "some text"},
      {[] { throw std::bad_alloc(); }, "std::bad_alloc"},
      {[] { throw 7; }, "Unexpected error!"},
  };
  for (const auto& [work, text] : rows) {
    Guarded([] { throw std::runtime_error("of an earlier call"); });
    EXPECT_EQ(Guarded(work), *text == '\0' ? 0 : -1);
    std::thread([] { EXPECT_EQ(LastError(), ""); }).join();  // each has its own
    EXPECT_EQ(LastError(), text);
    EXPECT_EQ(LastError(), "");  // read once
  }
  EXPECT_EQ(Guarded([]() -> std::uint32_t { throw 7; }), 0xFFFFFFFFU);
  EXPECT_EQ(Guarded([] { return std::int64_t{1} << 40; }), std::int64_t{1} << 40);
}

TEST(LastError, FitsOrIsReplaced) {
  const std::string text30(30, 'e');
  const auto small = "Error buffer too small";
  // The text, the buffer's size, what it gets; nothing: nothing is written and the error is kept.
  using Row = std::tuple<std::string, std::int32_t, std::optional<std::string>>;
  for (const auto& [text, size, got] :
       {Row{text30, 32, text30}, Row{text30, 31, text30}, Row{text30, 30, small}, Row{text30, 23, small},
        Row{text30, 22, ""}, Row{text30, 1, ""}, Row{text30, 0, {}}, Row{text30, -1, {}},
        Row{"short", 6, "short"}, Row{"short", 5, ""}, Row{"", 1, ""}, Row{std::string(22, 'e'), 22, ""}}) {
    KelvoErrorHandler::getThreadLocalInstance().InsertError(text.c_str());
    EXPECT_EQ(vlGetLastErrorLen(), static_cast<std::int32_t>(text.size()) + 2);
    std::string buffer(40, '#');
    vlGetLastError(buffer.data(), size);
    EXPECT_EQ(buffer.substr(0, buffer.find('#')), got ? *got + '\0' : "") << text << " " << size;
    EXPECT_EQ(LastError(), got ? "" : text);
  }
  vlGetLastError(nullptr, 10);
}

TEST(EndOfProcessDeathTest, CallsStillWork) {
  // As the destructor of an application's static object may call: the thread's own objects are gone then.
  const auto fail = [] {
    Guarded([] { throw std::runtime_error(std::string(200, 'e')); });
    if (LastError().size() != 200) std::_Exit(2);
  };
  EXPECT_EXIT((fail(), std::atexit(fail), std::exit(0)), testing::ExitedWithCode(0), "");
}

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
