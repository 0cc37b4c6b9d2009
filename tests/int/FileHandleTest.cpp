// The oddities of handles of card files.
#include "services/FileHandle.h"

#include "Helpers.h"

namespace VELTRO::KELVO::Test {
namespace {

TEST(FileHandles, SendAsMuchAsTheyMay) {
  const std::vector<std::uint8_t> bytes(3 * 921600, 7);
  const std::tuple<int, const char*, std::size_t, std::string> rows[] = {
      // count, failure, calls and the last one's end
      {0, "no failure", 1, "C4 00 00"},
      {1, "no failure", 1, "C4 01 07 01"},
      {921600, "no failure", 1, "07 CE 00 0E 10 00"},
      {2 * 921600, "no failure", 2, "93 05 C4 00 CE 00 0E 10 00"},
      {921601, "cannot create std::vector larger than max_size()", 1, "07 CE 00 0E 10 00"},
      {3 * 921600, "cannot create std::vector larger than max_size()", 2, "93 05 C4 00 CE 00 0E 10 00"},
  };
  for (const auto& [count, failure, calls, end] : rows) {
    CallRecorder caller;
    EXPECT_EQ(Failure([&, count = count] { FileHandle(caller, 5).Write(bytes.data(), count); }), failure);
    ASSERT_EQ(caller.Calls.size(), calls + 1) << "one closes the file";
    EXPECT_TRUE(
        Hex(caller.Calls[calls - 1].substr(std::max<std::size_t>(caller.Calls[calls - 1].size(), 20) - 20))
            .ends_with(end))
        << count;
    EXPECT_EQ(Hex(caller.Calls.back()), "91 05");
  }
}

// Notes which answers are waited for; a silent card gives none.
struct WaitRecorder : CallRecorder {
  explicit WaitRecorder(bool silent) : IsSilent(silent) {}
  void Perform(RemoteCall& call) override {
    Waits += call.IsAwaited() ? "awaited " : "told ";
    if (IsSilent) throw std::runtime_error("Response was not received in the given timespan.");
    CallRecorder::Perform(call);
  }
  const bool IsSilent;
  std::string Waits;
};

TEST(FileHandles, WaitForTheirCloseUnlessTheCardHasLeftACallUnanswered) {
  for (const bool silent : {false, true}) {
    WaitRecorder caller(silent);
    Failure([&] { FileHandle(caller, 5).WriteTextLine("a"); });
    EXPECT_EQ(caller.Waits, silent ? "awaited told " : "awaited awaited ");
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
