// Handles, the last error, and the frame of the exported functions.
#include "capi/APIContext.h"

#include <atomic>
#include <cstdlib>
#include <limits>

#include "Helpers.h"
#include "capi/Frame.h"
#include "kelvo/kelvo.h"
#include "rpc/Inbox.h"

namespace VELTRO::KELVO::ClientLib::Testing {
namespace {

constexpr int MostHandle = std::numeric_limits<int>::max();

std::string LastError() {
  std::string text(static_cast<std::size_t>(vlGetLastErrorLen()), '?');
  vlGetLastError(text.data(), static_cast<int32_t>(text.size()));
  return text.c_str();
}

TEST(APIContext, HandlesRiseAndComeRound) {
  const struct {
    int Last;
    std::vector<int> Handles;
  } rows[] = {{0, {1, 2, 3, 4}}, {MostHandle - 2, {MostHandle - 1, MostHandle, 1, 2}}};
  for (const auto& row : rows) {
    APIContext table(row.Last);
    for (const int handle : row.Handles) {
      EXPECT_EQ(table.CreateNew(), handle);
      table.Remove(handle);  // not handed out again for that
    }
  }
}

TEST(APIContext, LooksForAFreeHandleSoFarAndNoFurther) {
  constexpr int tried = 0x10001;
  APIContext table(0, tried + 1);
  for (int i = 0; i < tried + 1; ++i) table.CreateNew();
  table.Remove(tried + 1);  // all that is free lies one too far,
  EXPECT_EQ(Failure([&] { table.CreateNew(); }),
            "Maximum number of handles created. Disconnect has to be called to remove previous connections.");
  EXPECT_EQ(table.CreateNew(), tried + 1);  // and is the next
  table.Remove(tried);
  EXPECT_EQ(table.CreateNew(), tried);
}

TEST(APIContext, UnknownHandlesHaveTheirTexts) {
  APIContext table;
  const int handle = table.CreateNew();
  const auto held = table.Share(handle);
  EXPECT_EQ(&table.Get(handle), &held->Client);
  table.Remove(handle);
  for (const int unknown : {handle, 0, 2, MostHandle}) {
    EXPECT_EQ(Failure([&] { table.Share(unknown); }), "There is no connection corresponding to this handle.");
  }
  for (const int negative : {-1, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(Failure([&] { table.Get(negative); }), "Illegal handle.");
    EXPECT_EQ(table.Find(negative), nullptr);
  }
  EXPECT_FALSE(held->Client.IsConnected());  // lives on while it is held
}

TEST(Frame, TurnsWhateverIsThrownIntoAnError) {
  const struct {
    std::function<void()> Work;
    const char* Text;
  } rows[] = {
      {[] {}, ""},
      {[] { throw std::runtime_error("some text"); }, "some text"},
      {[] { throw std::bad_alloc(); }, "std::bad_alloc"},
      {[] { throw 7; }, "Unexpected error!"},
      {[] { throw "text"; }, "Unexpected error!"},
  };
  for (const auto& row : rows) {
    Guarded([] { throw std::runtime_error("of an earlier call"); });
    EXPECT_EQ(Guarded(row.Work), *row.Text == '\0' ? 0 : -1);
    EXPECT_EQ(LastError(), row.Text);
    EXPECT_EQ(LastError(), "");  // read once
  }
  EXPECT_EQ(Guarded([]() -> std::int64_t { throw 7; }), std::int64_t{-1});
  EXPECT_EQ(Guarded([]() -> std::uint32_t { throw 7; }), 0xFFFFFFFFU);
  EXPECT_EQ(Guarded([] { return std::int64_t{1} << 40; }), std::int64_t{1} << 40);
}

TEST(LastError, FitsOrIsReplaced) {
  const std::string text30(30, 'e');
  const struct {
    std::string Text;
    int32_t Size;
    const char* Got;  // null: nothing is written and the error is kept
  } rows[] = {
      {text30, 32, text30.c_str()},
      {text30, 31, text30.c_str()},
      {text30, 30, "Error buffer too small"},
      {text30, 23, "Error buffer too small"},
      {text30, 22, ""},
      {text30, 1, ""},
      {text30, 0, nullptr},
      {text30, -1, nullptr},
      {"short", 6, "short"},
      {"short", 5, ""},
      {std::string(22, 'e'), 22, ""},
      {"", 1, ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Text + " " + std::to_string(row.Size));
    KelvoErrorHandler::getThreadLocalInstance().InsertError(row.Text.c_str());
    EXPECT_EQ(vlGetLastErrorLen(), static_cast<int32_t>(row.Text.size()) + 2);
    char buffer[40];
    std::fill(std::begin(buffer), std::end(buffer), '#');
    vlGetLastError(buffer, row.Size);
    if (row.Got == nullptr) {
      EXPECT_EQ(buffer[0], '#');
      EXPECT_EQ(LastError(), row.Text);
    } else {
      EXPECT_STREQ(buffer, row.Got);
      EXPECT_EQ(buffer[std::string(row.Got).size() + 1], '#');
      EXPECT_EQ(vlGetLastErrorLen(), 2);
    }
  }
  vlGetLastError(nullptr, 10);
}

TEST(LastError, IsEachThreadsOwn) {
  EXPECT_EQ(vlGetTimeout(-1, nullptr), -1);
  std::thread([] {
    EXPECT_EQ(LastError(), "");
    EXPECT_EQ(vlDisconnect(MostHandle), -1);
    EXPECT_EQ(LastError(), "There is no connection corresponding to this handle.");
  }).join();
  EXPECT_EQ(LastError(), "Illegal handle.");
}

TEST(LastError, AConnectionThatIsNoneIsDownWithoutOne) {
  for (const int handle : {-5, MostHandle}) {
    bool connected = true;
    EXPECT_EQ(vlIsConnected(handle, &connected), 0);
    EXPECT_FALSE(connected);
    EXPECT_EQ(LastError(), "");
  }
}

// A connection handle in the process's table that was never connected.
class Unconnected : public ::testing::Test {
 protected:
  ~Unconnected() override { APIContext::getInstance().Remove(handle_); }
  const int handle_ = APIContext::getInstance().CreateNew();
};

TEST_F(Unconnected, ListHandlesHoldTheConnectionsAndCountFromOne) {
  const std::int64_t first = vlListAllocate(handle_);
  EXPECT_EQ(first, (std::int64_t{handle_} << 32) + 1);
  EXPECT_EQ(vlListReleaseHandle(first), 0);
  EXPECT_EQ(vlListReleaseHandle(first), 0);  // whether or not it exists, unlike this:
  EXPECT_EQ(vlListDeleteHandle(first), -1);
  EXPECT_EQ(LastError(), "List does not exist.");
  EXPECT_EQ(vlListAllocate(handle_), first + 1);
  EXPECT_EQ(vlListCommandCount((std::int64_t{-2} << 32) + 1), -1);
  EXPECT_EQ(LastError(), "Illegal handle.");
}

TEST_F(Unconnected, AListMayGoWhileOthersAppend) {
  for (int round = 0; round < 50; ++round) {
    const std::int64_t list = vlListAllocate(handle_);
    std::atomic<int> deleted = 0;
    Together(4, [&](std::uint32_t thread) {
      if (thread % 2 == 0) {
        deleted += vlListDeleteHandle(list) == 0;
        return;
      }
      while (vlListAppendLaserOn(list) == 0) continue;
      EXPECT_EQ(LastError(), "List does not exist.");
    });
    EXPECT_EQ(deleted, 1);
  }
}

// Uses what every thread has of its own, as the destructor of an application's static object may.
void UseThreadsOwn() {
  Guarded([] { throw std::runtime_error(std::string(200, 'e')); });
  if (LastError().size() != 200) std::_Exit(2);
  Inbox inbox;
  const InputPacket request = Received(OutputPacket::AllocateRequest(1).Close());
  Inbox::Ticket ticket(inbox, 1, false);
  inbox.Deliver(Received(OutputPacket::AllocateResponse(request).Close()));
  if (ticket.Wait(DeadlineAfter(std::chrono::milliseconds(1000))).GetRequestId() != 1U) std::_Exit(3);
}

TEST(EndOfProcessDeathTest, CallsStillWork) {
  const auto end = [] {
    UseThreadsOwn();
    std::atexit(&UseThreadsOwn);  // after the thread's own objects are gone
    std::exit(0);
  };
  EXPECT_EXIT(end(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace VELTRO::KELVO::ClientLib::Testing
