// What surrounds the calls: the table of handles and the last error.
#include "capi/APIContext.h"

#include "Helpers.h"
#include "capi/Frame.h"

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
  EXPECT_FAILURE(
      table.CreateNew(),
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

}  // namespace
}  // namespace VELTRO::KELVO::Test
