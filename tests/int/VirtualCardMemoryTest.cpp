// The virtual card when there is no memory left: its inside in this process, where allocations fail at will.
#include "drawing/Drawing.h"
#include "int/CardClient.h"
#include "server/OutputQueue.h"
#include "server/Server.h"
#include "support/FailingMemory.h"

namespace VELTRO::KELVO::Test {
namespace {

using VirtualCard::Card;
using VirtualCard::Drawing;
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
  using Bytes = std::vector<unsigned char>;
  OutputQueue queue;
  Bytes sent, taken;
  std::size_t mostMemory = 0;
  for (int frame = 0; frame < 300; ++frame) {
    const auto kind = frame % 3 == 0 ? FrameKind::Notification : FrameKind::Answer;
    const Bytes bytes(frame % 50 == 0 ? 100000 : 10, static_cast<unsigned char>(frame));
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
