// Cards on networks that the test makes for itself, on hosts of their own: finding them, and those that are busy or
// dead.
#include <linux/capability.h>
#include <sys/syscall.h>

#include "int/CardProcess.h"
#include "support/FakeCard.h"
#include "support/NetworkLab.h"

namespace VELTRO::KELVO::Test {
namespace {

constexpr const char* Target = "urn:schemas-upnp-veltro:device:kelvocarddevice:1";
constexpr double SearchMs = 17000;  // a search takes 9000, two of them twice as long

// A discovery's outcome as text: "SERIAL ADDRESS, ", for each card, or the error.
template <class Find>
std::string Found(Find&& find, std::uint32_t capacity = 200) {
  std::vector<vlCardInfo> cards(capacity);
  std::uint32_t count = 0;
  if (find(cards.data(), capacity, &count) != 0) return LastError();
  std::string text;
  for (std::uint32_t i = 0; i < count; ++i) {
    EXPECT_EQ(cards[i].Port, KELVO_DEFAULT_PORT);
    text.append(cards[i].SerialNumber).append(" ").append(cards[i].IPAddress).append(", ");
  }
  return text;
}

std::string Pinged(std::int32_t first, std::int32_t last, std::int32_t sweeps, std::int32_t timeout,
                   std::int32_t most, std::uint32_t capacity = 200) {
  return Found(
      [=](auto... out) { return vlDiscoverByPingingCustomized(first, last, out..., sweeps, timeout, most); },
      capacity);
}

// The serial number of the card that a record leads to, or the error.
std::string Reached(const std::string& serial, const std::string& address,
                    std::int32_t port = KELVO_DEFAULT_PORT) {
  vlCardInfo card = {};
  serial.copy(card.SerialNumber, 39);
  address.copy(card.IPAddress, 59);
  card.Port = port;
  const std::int32_t handle = vlConnectByCardInfo(&card);
  char text[40] = "";
  std::uint32_t length = 0;
  if (handle < 0 || vlSystemGetCardSerialNumber(handle, text, sizeof text, &length) != 0) return LastError();
  EXPECT_OK(vlDisconnect(handle));
  return text;
}

class Discovery : public NetworkTest {};

struct CardHost {
  CardHost(Host& network, const std::string& port, const std::string& addresses,
           std::vector<std::string> options)
      : Place(network, port, addresses) {
    const Inside inside(Place.Space());
    options.insert(options.end(), {"--port", std::to_string(KELVO_DEFAULT_PORT)});
    Card.emplace(options);
  }
  Host Place;
  std::optional<CardProcess> Card;
};

TEST_F(Discovery, FindsCardsInOrderAndLeavesNothingBehind) {
  Host network("192.168.77.1/24 169.254.200.1/16 fe80::1/64");
  CardHost second(network, "second", "192.168.77.11/24 fe80::11/64", {"--ssdp", "--serial", "20002"});
  CardHost first(network, "first", "169.254.3.4/16",
                 {"--ssdp", "--serial", "10001", "--address", "169.254.3.4"});
  CardHost third(network, "third", "fe80::33/64", {"--ssdp", "--serial", "30003"});
  CardHost silent(network, "silent", "192.168.77.12/24", {"--serial", "40004", "--address", "::"});
  silent.Place.Ip(
      "link add name other type veth peer name other2\nlink set other up\nlink set other2 up\naddr add "
      "10.1.1.1/24 dev other");
  Inside silentHost(silent.Place.Space());
  CardProcess elsewhere({"--ssdp", "--ssdp-interface", "other", "--port", "49375"});
  const std::string scope = "%" + [&] {
    const Inside inside(network.Space());
    return std::to_string(if_nametoindex("br0"));
  }();
  const std::string all =
      "10001 169.254.3.4, 20002 192.168.77.11, 20002 fe80::11" + scope + ", 30003 fe80::33" + scope + ", ";
  std::size_t descriptors = 0, threads = 0, bytes = 0;
  for (int round = 0; round < 2; ++round) {
    const Stopwatch watch;
    Together(20, [&](std::uint32_t i) {
      const Inside inside(network.Space());
      if (i == 0) {
        const auto [code, output] = Shell(EXAMPLES_PROGRAMS "/list_cards");
        EXPECT_EQ(code, 0);
        EXPECT_EQ(output, "10001        169.254.3.4 port 49374\n20002        192.168.77.11 port 49374\n" +
                              ("20002        fe80::11" + scope) + " port 49374\n30003        fe80::33" +
                              scope + " port 49374\nfound: 4\n");
      } else {
        EXPECT_EQ(Found(&vlDiscover, i == 1 ? 3 : 4), i == 1 ? "Buffer is too small" : all);
      }
    });
    EXPECT_LT(watch.Milliseconds(), SearchMs);
    if (round == 0) descriptors = OpenDescriptors(), threads = Threads(), bytes = ResidentBytes();
  }
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_EQ(Threads(), threads);
  EXPECT_TRUE(Sanitized || ResidentBytes() < bytes + (4 << 20));
}

TEST_F(Discovery, OfACardThatCannotBeFoundIsRefusedAtItsStart) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"--address", "127.0.0.1",
       "A card on 127.0.0.1 is not to be found: it needs an address of the network, or :: for all of "
       "them.\n"},
      {"--ssdp-interface", "none", "There is no interface 'none'.\n"},
      {"--serial", "1-2", "The answer to a search cannot tell the serial number '1-2'.\n"},
  };
  for (const auto& [option, value, text] : rows) {
    CardProcess refused({"--ssdp", option, value});
    EXPECT_EQ(refused.GetFirstLine(), text);
    EXPECT_EQ(refused.End(0), 1);
  }
}

TEST_F(Discovery, CardsAnswerForThemselvesOnly) {
  Host network("192.168.77.1/24");
  CardHost host(network, "port", "192.168.77.11/24 10.1.1.1/24 fe80::11/64", {"--ssdp", "--serial", "7"});
  Host searcher(network, "searcher", "192.168.77.2/24 fe80::2/64");
  const Inside inside(searcher.Space());
  const std::string search = "M-SEARCH * HTTP/1.1\r\nMAN:\"ssdp:discover\"\r\n";
  for (const int family : {AF_INET, AF_INET6}) {
    for (const int port : {1900, 1909}) {
      GroupSocket socket(family, port + 1000);
      const auto ask = [&](const std::string& text) {
        socket.Peer = GroupSocket::Group(family, port);
        socket.Send(text);
      };
      for (const std::string& other : {search + "ST: ssdp:all\r\n\r\n", search + "ST:" + Target + "2\r\n\r\n",
                                       search, "NOTIFY * HTTP/1.1\r\nST:" + std::string(Target) + "\r\n\r\n",
                                       std::string(), std::string(1500, 'S')})
        ask(other);
      ask(search + "st: " + Target + "\r\n\r\n");
      const std::string place = family == AF_INET ? "192.168.77.11" : "[fe80::11]";
      const std::string answer = socket.Receive(30000);
      EXPECT_THAT(answer, StartsWith("HTTP/1.1 200 OK\r\n"));
      EXPECT_THAT(answer, HasSubstr("\r\nLOCATION: http://" + place + ":49374/\r\n"));
      EXPECT_THAT(answer, HasSubstr("\r\nUSN: uuid:kelvo-virtual-card-7::" + std::string(Target) + "\r\n"));
      EXPECT_EQ(socket.Receive(50), "") << "one answer, to one of them";
    }
  }
}

// A searcher in the middle of a search, and who answers it.
struct Answer {
  std::string name;
  std::vector<std::string> replies;
  std::string expected;
  int repeat = 1;
  std::string addresses = "192.168.77.1/24 fe80::1/64";
};

std::string Reply(const std::string& location, const std::string& usn) {
  return "HTTP/1.1 200 OK\r\nLOCATION: " + location + "\r\nUSN: " + usn + "\r\n\r\n";
}

TEST_F(Discovery, TakesWhateverIsAnswered) {
  const std::string beyond(1024, 'x');
  std::string hundred;
  std::vector<std::string> many;
  for (int i = 100; i < 200; ++i) {
    many.push_back(Reply("http://192.168.77.9:1/", "uuid:kelvo-" + std::to_string(i) + "::" + Target));
    hundred += std::to_string(i) + " 192.168.77.9, ";
  }
  const Answer rows[] = {
      {"nobody", {}, ""},
      {"odd ones",
       {"", "HTTP/1.1 200 OK\r\n\r\n", Reply("192.168.77.9", "uuid:a-1"),
        Reply("http://192.168.77.9:80/", "2::upnp:rootdevice"), Reply("http://a.b.c:80/", "uuid:a-400::x"),
        Reply("http://[fe80::5]:80/", "u-6"), Reply("http://[fe80::5%9]:80/", "u-6")},
       "2 192.168.77.9, 400 0.0.0.0, 6 fe80::5%SCOPE, 6 fe80::5%9, "},
      {"too long",
       {beyond + "\n" + Reply("http://192.168.77.9:80/", "u-1"),
        Reply("http://192.168.77.8:80/", "u-" + beyond)},
       beyond.substr(0, 39) + " 192.168.77.8, "},
      {"10000 of one sender", many, hundred, 100},
      {"no address",
       {Reply("http://192.168.77.9:80/", "u-1"), Reply("http://host:80/", "u-2")},
       "Invalid IP address."},
      {"link down", {"down"}, "Socket is not open. Error code: " + std::to_string(ENETUNREACH)},
      {"no address yet", {}, "Socket is not open. Error code: " + std::to_string(EADDRNOTAVAIL), 1, ""},
      {"no network", {}, "", 1, "none"},
  };
  Together(std::size(rows), [&](std::uint32_t index) {
    const Answer& row = rows[index];
    Host network = row.addresses == "none" ? Host() : Host(row.addresses);
    std::optional<Host> other;
    std::optional<GroupSocket> socket;
    std::atomic<bool> over{false};
    std::jthread answering;
    std::uint32_t scope = 0;
    if (row.addresses != "none") {
      other.emplace(network, "port", "192.168.77.2/24");
      // Without "nodad", so many tries of finding out whether it is anybody else's that it is never anybody's.
      if (row.addresses.empty()) {
        const Inside inside(network.Space());
        Shell("echo 1000 >/proc/sys/net/ipv6/conf/br0/dad_transmits; ip addr add fe80::1/64 dev br0");
      }
      (Inside(other->Space()), socket.emplace(AF_INET, 1909));
      answering = std::jthread([&] {
        std::string request;
        while (request.empty() && !over) request = socket->Receive(100);
        if (over) return;
        // Its last byte is the zero.
        EXPECT_EQ(
            request,
            std::string("M-SEARCH * HTTP/1.1\r\nHOST:239.255.255.250:1909\r\nMAN:\"ssdp:discover\"\r\nST:") +
                Target + "\r\nMX:3\r\n\r\n" + '\0');
        for (int i = 0; i < row.repeat; ++i) {
          for (const std::string& reply : row.replies)
            reply == "down" ? network.Ip("link set br0 down") : socket->Send(reply);
          usleep(1000);
        }
      });
    }
    {
      const Inside inside(network.Space());
      scope = if_nametoindex("br0");
      std::string expected = row.expected;
      if (const auto at = expected.find("SCOPE"); at != std::string::npos)
        expected.replace(at, 5, std::to_string(scope));
      // What fails does so ahead of the end of the search.
      const AtMost promptly(expected.starts_with("Socket") ? 8900 : SearchMs, row.name);
      EXPECT_EQ(Found(&vlDiscover), expected) << row.name;
    }
    over = true;
  });
}

TEST_F(Discovery, ConnectsToWhereACardIsByNow) {
  Host network("192.168.77.1/24 fe80::1/64");
  CardHost moving(network, "moving", "192.168.77.11/24 fe80::11/64", {"--ssdp", "--serial", "100"});
  const Inside inside(network.Space());
  EXPECT_EQ(Reached("100", "192.168.77.11"), "100");
  EXPECT_EQ(Reached("100", "fe80::11%" + std::to_string(if_nametoindex("br0"))), "100");
  moving.Place.Ip("addr del 192.168.77.11/24 dev eth0\naddr add 192.168.77.22/24 dev eth0");
  CardHost wrong(network, "wrong", "192.168.77.11/24", {"--ssdp", "--serial", "200"});
  Host liar(network, "liar", "192.168.77.5/24");
  FakeCard refusing([](Peer& peer) {
    Request request;
    if (peer.Next(request)) peer.Send(ErrorResponse(request.Id, "Go away"));
    peer.WaitForEnd();
  });
  EXPECT_NE(Reached("100", "127.0.0.1", refusing.Port()).find("Go away"), std::string::npos);
  for (const char* none :
       {"", "192.168.77", "192.168.77.11%2", "localhost", "fe80::1%eth0", "fe80::1%", "fe80::1%4294967296"}) {
    EXPECT_EQ(Reached("100", none), "Invalid IP address.") << none;
  }
  const std::tuple<const char*, const char*, int, const char*> rows[] = {
      {"100", "192.168.77.11", KELVO_DEFAULT_PORT, "100"},  // moved, and another card is there
      {"100", "192.168.77.22", 1, "100"},
      {"100", "192.168.77.22", 0x10000 + KELVO_DEFAULT_PORT, "100"},
      {"200", "0.0.0.0", 0, "200"},
      {"200", "::", 0, "200"},
      {"200", "::1", KELVO_DEFAULT_PORT, "200"},
      {"300", "192.168.77.11", KELVO_DEFAULT_PORT, "Could not re-discover card 300"},
      {"400", "0.0.0.0", 0, "Could not re-discover card 400"},  // found, at an address that is none
  };
  GroupSocket socket = (Inside(liar.Space()), GroupSocket(AF_INET, 1900));
  std::jthread lying([&](const std::stop_token& over) {  // to everybody, and of a card that is elsewhere, too
    while (!over.stop_requested()) {
      if (socket.Receive(100).empty()) continue;
      for (const char* usn : {"u-100", "u-400"}) socket.Send(Reply("http://card.local:80/", usn));
    }
  });
  Together(std::size(rows) + 2, [&](std::uint32_t i) {
    const Inside here(network.Space());
    if (i < std::size(rows)) {
      const auto& [serial, address, port, expected] = rows[i];
      EXPECT_EQ(Reached(serial, address, port), expected) << serial << " " << address;
    } else {
      const bool there = i == std::size(rows);
      const auto [code, output] =
          Shell(EXAMPLES_PROGRAMS "/connect_by_serial " + std::string(there ? "100" : "300"));
      EXPECT_EQ(code, there ? 0 : 1);
      EXPECT_EQ(output, there ? "Card 100 runs firmware Virtual 3.10.\n"
                              : "vlConnectByCardInfo failed:\n  Could not re-discover card 300\n");
    }
  });
}

TEST_F(Discovery, CardsTellTheAddressThatIsNearestToTheSearcher) {
  // 2 has the most leading bits in common with 11, the most trailing ones with 130, and is in no network with 10.1.1.1.
  Host network("192.168.77.1/24");
  CardHost card(network, "card", "10.1.1.1/24 192.168.77.130/24 192.168.77.11/24 192.168.77.66/24",
                {"--ssdp"});
  Host searcher(network, "searcher", "192.168.77.2/24");
  const Inside inside(searcher.Space());
  GroupSocket socket(AF_INET, 2909);
  socket.Peer = GroupSocket::Group(AF_INET, 1909);
  socket.Send("M-SEARCH * HTTP/1.1\r\nMAN:\"ssdp:discover\"\r\nST: " + std::string(Target) + "\r\n\r\n");
  const std::string answer = socket.Receive(30000);
  EXPECT_THAT(answer, HasSubstr("\r\nLOCATION: http://192.168.77.11:"));
}

TEST_F(Discovery, PingsTheAddressesThatSerialNumbersPredict) {
  Host network("169.254.200.1/16 fe80::1/64");
  const std::vector<std::string> longSerial = {"--serial", std::string(19, '5'), "--address", "::"};
  CardHost inside1(network, "a", "169.254.0.6/16", {"--serial", "1", "--address", "::"});
  CardHost outside3(network, "b", "169.254.0.12/16 fe80::222:4aff:fe01:b/64",
                    {"--serial", "777", "--address", "::"});
  Host noCard(network, "c", "169.254.0.10/16");  // inside, by the number 2
  CardHost tooLong(network, "d", "169.254.0.16/16", longSerial);
  const std::string both = "1 169.254.0.6, 777 169.254.0.12, ";
  const Inside inside(network.Space());
  Pinged(0, 5, 1, 300, 24);
  const std::size_t descriptors = OpenDescriptors(), threads = Threads();
  EXPECT_EQ(Found([](auto... out) { return vlDiscoverByPinging(0, 5, out...); }), both);
  Together(2, [&](std::uint32_t) {
    const Inside here(network.Space());
    EXPECT_EQ(Pinged(0, 5, 3, 300, 100), both);
  });
  EXPECT_EQ(Pinged(0, 5, 1, 300, 24, 1), "CardInfo buffer too small.");
  const Stopwatch watch;
  EXPECT_EQ(Pinged(16383, 16383, 1, 200, -3), "1 169.254.0.6, ") << "the same addresses as those of 1";
  EXPECT_GT(watch.Milliseconds(), 595) << "one after the other";
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_EQ(Threads(), threads);
}

TEST_F(Discovery, PingsNothingWhereThereIsNothingToPing) {
  Host network("169.254.200.1/16");
  CardHost card(network, "a", "169.254.0.6/16", {"--serial", "1", "--address", "::"});
  const Inside inside(network.Space());
  const AtMost promptly(20000);
  EXPECT_EQ(Pinged(4, 5, 1, 0, 50), "") << "no time is not for ever";
  EXPECT_EQ(Pinged(2, 1, 1, 300, 50), "");
  EXPECT_EQ(Pinged(-3, -5, 1, 300, 50), "");
  EXPECT_EQ(Pinged(0, 5, 0, 300, 50), "");
  EXPECT_EQ(Pinged(-1, 5, 1, 300, 50), "Invalid negative serial number.");
}

TEST_F(Discovery, NamesWhatFailedWhenItCannotPing) {
  const Host nowhere;
  const Inside away(nowhere.Space());
  const AtMost promptly(20000);
  EXPECT_EQ(Pinged(0, 0x7FFFFFFF, 0x7FFFFFFF, -5, 2), "\"setsockopt\" failed in the \"Ping\" function.");
  EXPECT_EQ(Pinged(0, 5, 1, 300, 50), "\"sendto\" failed in the \"Ping\" function.");
  Together(1, [](std::uint32_t) {
    // This thread's own, and of those that it starts.
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> privileges{};
    syscall(SYS_capget, &header, privileges.data());
    privileges[0].effective &= ~(1U << CAP_NET_RAW);
    syscall(SYS_capset, &header, privileges.data());
    EXPECT_EQ(Pinged(0, 5, 1, 300, 50), "\"socket\" failed in the \"Ping\" function.");
  });
}

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

class Link : public NetworkTest {};

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
    // So many tries of finding out whether it is anybody else's that it is not free before the test says so.
    const std::string many = isFree ? "echo 1000 >/proc/sys/net/ipv6/conf/eth0/dad_transmits; " : "";
    const auto [code, output] = Shell(many + "ip addr add " + (isFree ? "fe80::2" : "fe80::1") +
                                      "/64 dev eth0 && ip addr show dev eth0");
    ASSERT_THAT(output, HasSubstr("tentative"));
    std::jthread freeing([&] {
      const Inside here((isFree ? unplugged : doubled).Space());
      usleep(500000);  // into the middle of it
      if (isFree) Shell("ip addr del fe80::2/64 dev eth0; ip addr add fe80::2/64 dev eth0 nodad");
    });
    const Stopwatch watch;
    std::uint32_t count = 77;
    EXPECT_EQ(vlDiscover(nullptr, 0, &count), isFree ? 0 : -1);
    EXPECT_EQ(LastError(), isFree ? "" : "Socket is not open. Error code: 99");
    EXPECT_TRUE(isFree || watch.Milliseconds() < 8900);
  });
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
