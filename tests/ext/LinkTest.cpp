// What the library makes of the network below it: cards that are busy, dead, or not yet to be reached.
#include "int/CardProcess.h"
#include "support/NetworkLab.h"

namespace VELTRO::KELVO::Test {
namespace {

bool IsUp(std::int32_t handle) {
  bool connected = false;
  EXPECT_OK(vlIsConnected(handle, &connected));
  return connected;
}

// Milliseconds until the connection is down, or `most`.
double DownAfter(std::int32_t handle, double most) {
  const Stopwatch watch;
  while (IsUp(handle) && watch.Milliseconds() < most) usleep(50000);
  return watch.Milliseconds();
}

class Link : public testing::Test {
 protected:
  // The test leaves the machine's own network first and never sends anything there.
  void SetUp() override {
    if (unshare(CLONE_NEWNET) != 0) GTEST_SKIP() << "This user may not make network namespaces.";
  }
};

TEST_F(Link, TellsABusyCardFromADeadOne) {
  constexpr double BusyMs = 34000;  // more than a card that is dead gets
  Host network("192.168.77.1/24");
  Host place(network, "card", "192.168.77.11/24");
  std::optional<CardProcess> dead;
  {
    const Inside inside(place.Space());
    dead.emplace(std::vector<std::string>{"--address", "192.168.77.11"});
  }
  const Inside inside(network.Space());
  CardProcess busy;
  const Connection unread(busy.GetPort());
  const std::int32_t idle = vlConnect("192.168.77.11", dead->GetPort());
  const std::int32_t unacknowledged = vlConnect("192.168.77.11", dead->GetPort());
  ASSERT_TRUE(IsUp(idle) && IsUp(unacknowledged) && IsUp(unread)) << LastError();

  network.Ip("link set dev card down");
  kill(busy.GetId(), SIGSTOP);
  Together(4, [&](std::uint32_t i) {
    if (i == 0) {  // it takes nothing, for longer than one that is dead would be given
      vlSetTimeout(unread, 120000);
      const std::int64_t list = vlListAllocate(unread);
      for (int n = 0; n < 600000; ++n) vlListAppendMarkAbs2D(list, n, n);
      EXPECT_OK(vlListSet(unread, 1, list, false, -1));
      EXPECT_TRUE(IsUp(unread));
    } else if (i == 1) {
      usleep(static_cast<useconds_t>(BusyMs * 1000));
      kill(busy.GetId(), SIGCONT);
    } else if (i == 2) {  // asked by keep-alive
      EXPECT_LT(DownAfter(idle, 60000), 40000);
    } else {  // what was sent is not acknowledged
      vlSetTimeout(unacknowledged, 100);
      EXPECT_EQ(vlListExecute(unacknowledged, 1), -1);
      const double down = DownAfter(unacknowledged, 60000);
      EXPECT_GT(down, 15000) << "a short time-out is no reason to give a card up";
      EXPECT_LT(down, 45000);
    }
  });
  vlDisconnect(idle);
  vlDisconnect(unacknowledged);
}

TEST_F(Link, AnAddressThatIsNotReadyIsWaitedFor) {
  Host network("192.168.77.1/24 fe80::1/64");
  Host unplugged(network, "unplugged", "192.168.77.2/24");
  Host doubled(network, "doubled", "192.168.77.3/24");
  Together(2, [&](std::uint32_t i) {
    const bool isFree = i == 0;  // or somebody else's: the system never lets it be used
    const Inside inside((isFree ? unplugged : doubled).Space());
    const auto [code, output] = Shell(std::string("ip addr add ") + (isFree ? "fe80::2" : "fe80::1") +
                                      "/64 dev eth0 && ip addr show dev eth0");
    ASSERT_THAT(output, HasSubstr("tentative"));
    const Stopwatch watch;
    std::uint32_t count = 77;
    EXPECT_EQ(vlDiscover(nullptr, 0, &count), isFree ? 0 : -1);
    EXPECT_EQ(LastError(), isFree ? "" : "Socket is not open. Error code: 99");
    EXPECT_TRUE(isFree || watch.Milliseconds() < 4000);
  });
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
