// The virtual card under clients and readers that would bring it down, or keep others from it; and its inside, in this
// process, when there is no memory left.
#include "drawing/Drawing.h"
#include "int/CardClient.h"
#include "server/OutputQueue.h"
#include "server/Server.h"
#include "services/Font.h"
#include "support/FailingMemory.h"

namespace VELTRO::KELVO::Test {
namespace {

using Bytes8 = std::vector<std::uint8_t>;

constexpr std::size_t MiB = 1 << 20;

// The most memory that the card has had so far.
std::size_t MostMemory(const CardProcess& card) {
  std::ifstream status("/proc/" + std::to_string(card.GetId()) + "/status");
  Text line;
  while (std::getline(status, line) && !line.starts_with("VmHWM:")) {
  }
  return std::stoul("0" + line.substr(line.find_first_of("0123456789"))) << 10;
}

std::size_t Growth(const CardProcess& card, std::size_t before) {
  return Sanitized ? 0 : MostMemory(card) - before;
}

std::size_t Descriptors(const CardProcess& card) {
  const std::filesystem::directory_iterator entries("/proc/" + std::to_string(card.GetId()) + "/fd");
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

// What a client does who has nothing to do with the others: connects, uploads, runs, fetches.
void WorkHonestly(const CardProcess& card) {
  const AtMost promptly(60000);
  Client client(card);
  CommandList list;
  for (int i = 0; i < 60000; ++i) list.AppendMarkAbs(Point2D{{0.001 * i, 0}});
  client.Lists.Set(5, list, false, -1);
  EXPECT_EQ(client.Run("PI 3 CL 5"), (Events{"progress 3", "done 7", "idle 7"}));
  EXPECT_EQ(client.Lists.Get(5).GetCommandCount(), 60000U);
  client.Lists.Delete(5, true);
}

CommandList Noops(std::size_t count) {
  CommandList list;
  for (std::size_t i = 0; i < count; ++i) list.Append(CommandCode::NOOP);
  return list;
}

TEST(VirtualCardPressure, NobodyWhoReadsItsLogHoldsItUp) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const int room = fcntl(ends[1], F_GETPIPE_SZ);
  const Text full(static_cast<std::size_t>(room), '.');
  ASSERT_EQ(write(ends[1], full.data(), full.size()), room);
  CardProcess card({"--verbose", "--speed", "max"}, ends[1]);
  close(ends[1]);
  constexpr int Calls = 3000;
  {
    Client client(card), other(card);
    const AtMost promptly(60000);
    for (int i = 0; i < Calls; ++i) client.Call("SetExecutionLimit", i);
    EXPECT_EQ(other.Run("PI 1").back(), "idle 7");
  }
  // Somebody reads at last: what was kept, then what is missing, then what is new.
  Text log;
  const auto readUntil = [&](const Text& part) {
    char bytes[4096];
    ssize_t count = 0;
    while (log.find(part) == Text::npos && (count = read(ends[0], bytes, sizeof bytes)) > 0) {
      log.append(bytes, static_cast<std::size_t>(count));
    }
    return log.find(part);
  };
  const Text missing = "Nobody read what was written here: ";
  const std::size_t at = readUntil(" lines are missing.\n");
  ASSERT_NE(at, Text::npos);
  const int dropped = std::stoi(log.substr(log.find(missing) + missing.size()));
  const auto kept = std::count(log.begin(), log.begin() + static_cast<std::ptrdiff_t>(at), '\n');
  EXPECT_NEAR(static_cast<double>(dropped + kept), Calls, 20) << "with connects, handshakes and a run";
  log.clear();
  Client client(card);
  client.Call("SetExecutionLimit", 987654);
  EXPECT_NE(readUntil("SetExecutionLimit(987654)"), Text::npos);
  // And stops again, in the middle of much.
  for (int i = 0; i < Calls; ++i) client.Call("SetExecutionLimit", i);
  const Stopwatch watch;
  EXPECT_EQ(card.End(SIGTERM), 0);
  EXPECT_LT(watch.Milliseconds(), 30000);
  close(ends[0]);
}

TEST(VirtualCardPressure, FilesAreOfTheCardsMemoryAndTakeNoDescriptors) {
  const CardProcess card({"--speed", "max", "--memory", std::to_string(24 * MiB)});
  Client hostile(card);
  constexpr int Bin = 0, Create = 2;
  const std::size_t before = Descriptors(card);
  for (int i = 0; i < 1500; ++i)
    hostile.Call("FileClose", hostile.Call<int>("FileOpen", Bin, std::to_string(i), Create));
  EXPECT_LE(Descriptors(card), before + 2);
  const int file = hostile.Call<int>("FileOpen", Bin, Text("large"), Create);
  const Bytes8 piece(900000, 'x');
  Text refusal;
  for (int i = 0; i < 40 && (refusal.empty() || refusal == "no failure"); ++i) {
    refusal = hostile.Refusal("FileWrite", file, piece, 900000);
  }
  EXPECT_EQ(refusal, "Cannot write 'large': No space left on device.");
  const std::size_t size = hostile.Call<std::uint64_t>("FileGetSize", file);
  EXPECT_TRUE(size > 8 * MiB && size < 24 * MiB && size % 900000 == 0) << size;
  EXPECT_EQ(hostile.Refusal("FileOpen", Bin, Text("one more"), Create), "no failure")
      << "less than a piece is left";
  CommandList noops = Noops(250000);
  EXPECT_NE(Failure([&] { hostile.Lists.Set(1, noops, false, -1); }).find("The card's memory is full."),
            Text::npos);
  hostile.Disconnect();
  Client other(card);
  while (other.Refusal("FileDelete", Bin, Text("large")) == "The file 'large' is open.")
    std::this_thread::yield();
  WorkHonestly(card);
}

TEST(VirtualCardPressure, UnfinishedAndBloatedRequestsShareTheirMemory) {
  SKIP_UNDER_THREAD_SANITIZER();  // it moves a gigabyte, to measure memory
  const CardProcess card({"--speed", "max"});
  WorkHonestly(card);
  const std::size_t before = MostMemory(card);
  {
    const Text most(12 * MiB, '\0');
    const Text head = Frame(0x00, Text(16 * MiB, 'x')).substr(0, Packet::FullHeaderLen) + "\x01";
    std::list<Peer> peers;
    for (int i = 0; i < 40; ++i) {
      peers.emplace_back(Connect(card)).Send(head);
      peers.back().Send(most);
    }
    WorkHonestly(card);
    // Those for whose there was no room are told so, once all of it has come.
    const Text refusal =
        FrameOf(0x81, 1,
                std::make_tuple(Text("The card has too many large requests to take at once."), "",
                                msgpack::type::nil_t()));
    for (Peer& peer : peers) peer.Send(Text(4 * MiB - 1, '\0'));
    EXPECT_GE(std::ranges::count_if(peers, [&](Peer& peer) { return peer.Fill(refusal.size()); }), 30);
  }
  EXPECT_LT(Growth(card, before), 250 * MiB) << "40 requests of which 12 MiB have come";
  // Each of these bytes is an object once it is unpacked.
  Text bloated = Packed(1, "SetList") + Bytes("93 01 DD 00 80 00 00") + Text(8 * MiB, '\xC0') + "\xC2";
  bloated = Frame(0x00, bloated);
  Together(12, [&](std::uint32_t i) {
    if (i == 0) return WorkHonestly(card);
    Peer peer(Connect(card));
    EXPECT_TRUE(peer.Send(bloated));
    EXPECT_TRUE(peer.Fill(20)) << "it has no answer";
  });
  EXPECT_LT(Growth(card, before), 700 * MiB) << "eleven of 200 MiB each";
}

TEST(VirtualCardPressure, ListsFontsAndWhatIsNotReadStayWithinTheCardsMemory) {
  SKIP_UNDER_THREAD_SANITIZER();  // it moves a gigabyte, to measure memory
  const CardProcess card({"--speed", "max", "--memory", std::to_string(60 * MiB)});
  Client hostile(card);
  CommandList noops = Noops(10 * MiB);
  hostile.Lists.Set(1, noops, false, -1);
  const std::size_t before = MostMemory(card);
  EXPECT_NE(Failure([&] { hostile.Lists.Set(2, noops, false, -1); }).find("The card's memory is full."),
            Text::npos);
  hostile.Lists.Delete(2, true);
  EXPECT_EQ(hostile.Refusal("StoreList", 1), "no failure") << "it takes nothing as long as it is the same";
  Font font(1);
  font.CharContainer['A'].Append(Noops(3 * MiB));
  hostile.Call("SetFont", font);
  font.Id = 2;
  EXPECT_EQ(hostile.Refusal("SetFont", font), "The card's memory is full.");
  hostile.Call("DeleteFont", 1);
  EXPECT_EQ(hostile.Call<CommandList>("GetList", 1).GetCommandCount(), 10 * MiB);
  // Runs, and the run itself adds little.
  const std::size_t beforeRun = MostMemory(card);
  hostile.Lists.Execute(1);
  EXPECT_EQ(hostile.EventsUpTo("idle"), (Events{"done 1", "idle 1"}));
  EXPECT_LT(Growth(card, beforeRun), 40 * MiB) << "a run of 40 MiB of NOOPs";
  // Twenty who ask for all of it and read nothing.
  std::list<Peer> peers;
  for (int i = 0; i < 20; ++i)
    peers.emplace_back(Connect(card)).Send(FrameOf(0x00, 1, "GetList", std::make_tuple(1)));
  std::size_t closed = 0;
  for (Peer& peer : peers) closed += !peer.Fill(40 * MiB);
  EXPECT_GE(closed, 1U) << "nobody was disconnected";
  WorkHonestly(card);
  EXPECT_LT(Growth(card, before), 600 * MiB);
}

TEST(VirtualCardPressure, WhoAsksWithoutReadingWaitsAndGetsEverything) {
  constexpr std::size_t Commands = 250000, Answers = 40;
  const CardProcess card({"--memory", std::to_string(8 * MiB)});
  Client client(card);
  CommandList noops = Noops(Commands);
  client.Lists.Set(1, noops, false, -1);
  Peer peer(Connect(card));
  for (int i = 0; i < static_cast<int>(Answers); ++i)
    peer.Send(FrameOf(0x00, 1, "GetList", std::make_tuple(1)));
  usleep(300000);  // in which a card that asks for more would have made more of them than it has room for
  EXPECT_TRUE(peer.Fill(Answers * Commands * 4)) << "it was disconnected";
}

TEST(VirtualCardPressure, ConnectionsBeyondTheLimitAreClosed) {
  CardProcess card({"--connections", "6"});
  Client client(card);
  EXPECT_EQ(client.Call<std::uint32_t>("GetConnectionLimit"), 6U);
  std::list<Peer> peers;
  for (int i = 0; i < 5; ++i) peers.emplace_back(Connect(card));
  Peer refused(Connect(card));
  EXPECT_FALSE(refused.Fill(1));
  EXPECT_THAT(card.ReadLine(), EndsWith(" refused: all connections are taken\n"));
  const Text call = FrameOf(0x00, 1, "IsUpdateActive", std::vector<int>());
  for (Peer& peer : peers) EXPECT_TRUE(peer.Send(call) && peer.Fill(Response(1, false).size()));
  peers.pop_back();
  for (bool served = false; !served;) {  // as soon as the card has noticed
    Peer next(Connect(card));
    served = next.Send(call) && next.Fill(Response(1, false).size());
  }
}

using Simulation::Drawing;
using VirtualCard::Card;
using VirtualCard::FrameKind;
using VirtualCard::OutputQueue;
using VirtualCard::Server;

TEST(VirtualCardMemory, ADrawingIsWholeWhereverAnAllocationFails) {
  for (int allocations = 0; allocations < 12; ++allocations) {
    Drawing drawing;
    std::size_t drawn = 0;
    Failure([&] {
      for (const FailingMemory memory(allocations);; ++drawn) {
        const auto at = static_cast<double>(drawn);
        drawing.AddSegment(drawn % 2 == 0 ? Drawing::Kind::Jump : Drawing::Kind::Mark, {{at, 0}},
                           {{at + 1, 0}});
      }
    });
    EXPECT_EQ(drawing.GetStrokes().size(), drawn) << allocations;
    drawing.AddSegment(Drawing::Kind::Mark, {{-1, 0}}, {{-2, 0}});
    for (const Drawing::Stroke& stroke : drawing.GetStrokes()) {
      ASSERT_EQ(stroke.Count, 2U) << allocations;
      const auto points = drawing.PointsOf(stroke);
      EXPECT_EQ(std::abs(points[1].X() - points[0].X()), 1) << allocations;
    }
  }
}

TEST(VirtualCardMemory, AQueueIsClearedWithoutAny) {
  OutputQueue queue;
  queue.Append(FrameKind::Notification, std::vector<unsigned char>(200000));
  (FailingMemory(), queue.Clear());
  EXPECT_TRUE(queue.IsEmpty() && queue.GetSize() == 0 && queue.GetNotificationBytes() == 0);
}

TEST(VirtualCardMemory, AQueueForgetsWhatIsSentAndKeepsTheRestInOrder) {
  OutputQueue queue;
  std::vector<unsigned char> sent, taken;
  std::size_t mostMemory = 0;
  for (int frame = 0; frame < 300; ++frame) {
    const auto kind = frame % 3 == 0 ? FrameKind::Notification : FrameKind::Answer;
    const std::vector<unsigned char> bytes(frame % 50 == 0 ? 100000 : 10, static_cast<unsigned char>(frame));
    queue.Append(kind, bytes);
    EXPECT_EQ(queue.GetNotificationBytes(), kind == FrameKind::Notification ? bytes.size() : 0U) << frame;
    sent.insert(sent.end(), bytes.begin(), bytes.end());
    mostMemory = std::max(mostMemory, queue.GetMemory());
    while (!queue.IsEmpty()) {  // a part, and what is left of the piece
      const auto part = queue.Front().first((queue.Front().size() + 1) / 2);
      taken.insert(taken.end(), part.begin(), part.end());
      queue.Drop(part.size());
      EXPECT_EQ(queue.GetSize(), sent.size() - taken.size());
    }
    EXPECT_EQ(queue.GetMemory() + queue.GetNotificationBytes(), 0U) << frame;
  }
  EXPECT_TRUE(taken == sent);
  EXPECT_LT(mostMemory, 101000U);
}

TEST(VirtualCardMemory, WantOfItEndsCallsAndConnectionsAndNothingElse) {
  const PictureFile picture;
  Server server(IPAddress::Resolve("127.0.0.1"), 0, {30, 1 << 20, {}});
  Card card({{"F", "S", 30},
             {{std::numeric_limits<double>::infinity()}, {picture.Name(), 0.1, false}},
             "",
             std::size_t{1} << 20},
            server);
  server.Start(card);
  const Text call = FrameOf(0x00, 1, "IsUpdateActive", std::vector<int>());
  const std::size_t answer = Response(1, false).size();
  Peer watching(Connect(server.GetPort())), calling(Connect(server.GetPort()));
  for (Peer* peer : {&watching, &calling}) ASSERT_TRUE(peer->Send(call) && peer->Fill(answer));
  card.Lists.Set(7, List("MR 1,0"), false);

  std::optional<FailingMemoryOfOthers> failing(std::in_place);
  for (int i = 0; i < 10; ++i) {
    Peer refused(Connect(server.GetPort()));
    EXPECT_FALSE(refused.Fill(1)) << "there was memory for it";
  }
  calling.Send(FrameOf(0x00, 1, Text(1000, 'M'), std::vector<int>()));
  EXPECT_FALSE(calling.Fill(answer + 1)) << "there was memory for an answer";
  card.Lists.Execute(7);
  while (card.Execution.GetRunningList()) std::this_thread::yield();
  failing.reset();

  // Who is still there is told, and all works again.
  const Text told = FrameOf(0x82, std::make_tuple(Text("Out of memory."), "", msgpack::type::nil_t())) +
                    Notification(0x01, 7);
  EXPECT_TRUE(watching.Fill(answer + told.size()));
  Peer next(Connect(server.GetPort()));
  EXPECT_TRUE(next.Send(call) && next.Fill(answer));
  card.Lists.Execute(7);
  EXPECT_TRUE(next.Fill(answer + 2 * Notification(0x01, 7).size())) << "done and idle";
  card.Execution.Stop();
  server.Stop();
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
