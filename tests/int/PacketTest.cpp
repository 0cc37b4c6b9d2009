// Frames to the byte, bodies as a hostile peer might send them, the buffer they arrive in, remote errors.
#include <pthread.h>

#include "Helpers.h"
#include "rpc/Body.h"
#include "rpc/ReceiveBuffer.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::Test {
namespace {

TEST(Packet, FramesBeginWithTheirKindAndIdInItsShortestForm) {
  std::string ids;
  for (const char* frame : {"94 00 01 00 00 00 00", "94 00 01 00 00 00 7F", "94 00 02 00 00 00 CC 80",
                            "94 00 03 00 00 00 CD 01 00", "94 00 03 00 00 00 CD FF FF",
                            "94 00 05 00 00 00 CE 00 01 00 00", "94 00 05 00 00 00 CE FF FF FF FF"}) {
    const auto id = Received(Bytes(frame)).GetRequestId().value();
    EXPECT_EQ(Hex(Whole(OutputPacket::AllocateRequest(id))), frame);
    ids += std::to_string(id) + " ";
  }
  EXPECT_EQ(ids, "0 127 128 256 65535 65536 4294967295 ");
  const RpcRemoteException error("e", std::nullopt, RpcRemoteException("i", "t"));
  const auto answer = [](const std::string& request, const auto&... e) {
    return Hex(Whole(OutputPacket::AllocateResponse(Received(request), e...)));
  };
  const std::string request = Bytes("94 00 01 00 00 00 07");
  EXPECT_EQ(answer(request), "94 01 01 00 00 00 07");
  EXPECT_EQ(answer(request, std::runtime_error("no")), "94 81 07 00 00 00 07 93 A2 6E 6F C0 C0");
  EXPECT_EQ(answer(request, error), "94 81 0B 00 00 00 07 93 A1 65 C0 93 A1 69 A1 74 C0");
  const std::string withoutId = Notification(1, 2);
  EXPECT_THROW(answer(withoutId), std::bad_optional_access);
  EXPECT_THROW(answer(withoutId, std::runtime_error("no")), std::bad_optional_access);
  EXPECT_THROW(answer(withoutId, error), std::bad_optional_access);
  EXPECT_EQ(Hex(Whole(OutputPacket::AllocateErrorNotification())), "94 82 00 00 00 00");
  OutputPacket packet = OutputPacket::AllocateNotification();
  packet.write(std::string(300, 'o').data(), 300);
  EXPECT_EQ(Hex(packet.Close().first(7)), "94 02 2C 01 00 00 6F");  // the length of the body only
  CallRecorder caller;
  caller.Call(UncheckedMethod{"Ping"});
  caller.Call(UncheckedMethod{"Move"}, std::int32_t{-1}, true, 1.5, std::string("ab"));
  EXPECT_EQ(Hex(caller.Calls.at(0)), "90");
  EXPECT_EQ(Hex(caller.Calls.at(1)), "94 FF C3 CB 3F F8 00 00 00 00 00 00 A2 61 62");
}

TEST(Packet, WhatIsNoFrameIsRefused) {
  EXPECT_FAILURE(InputPacket::Allocate(nullptr, 0, 100), "Invalid packet!");
  // No whole header, another start marker, no id, half of one, and ids that are no number of 32 bits.
  for (const char* row :
       {"94", "94 02 00 00 00", "95 01 01 00 00 00 07", "94 01 00 00 00 00", "94 01 03 00 00 00 CD 01",
        "94 01 01 00 00 00 FF", "94 81 01 00 00 00 C0", "94 00 01 00 00 00 C2", "94 01 02 00 00 00 A1 37",
        "94 01 02 00 00 00 91 07", "94 01 05 00 00 00 CA 40 E0 00 00", "94 01 01 00 00 00 C1",
        "94 01 09 00 00 00 CF 00 00 00 01 00 00 00 00"}) {
    EXPECT_FAILURE(Received(Bytes(row)), "Invalid packet!") << row;
  }
  // Within a larger buffer, with an id in a signed form, followed by the result.
  const std::string buffer = Bytes("00 00 94 01 05 00 00 00 D1 00 05 A1 72 FF");
  InputPacket packet = InputPacket::Allocate(Unsigned(buffer).data(), 2, 11);
  EXPECT_EQ(packet.GetRequestId(), 5U);
  EXPECT_EQ(packet.Unpack().get().as<std::string>(), "r");
}

std::string Repeated(const char* hex, std::size_t count) {
  std::string body;
  for (const std::string bytes = Bytes(hex); count > 0; --count) body += bytes;
  return body;
}

TEST(Body, NestingIsBounded) {
  const auto nested = [](std::size_t depth) { return Repeated("91", depth) + "\x07"; };
  EXPECT_EQ(Body::Check(nested(256), Body::UsualDepth), 257U);
  EXPECT_THROW(Body::Check(nested(257), Body::UsualDepth), std::runtime_error);
  EXPECT_EQ(Body::Check(Bytes("93 91 90 91 80 91 07"), 3), 7U);  // side by side is not nested
}

// Ends the process: 0 when each hostile body is refused with so little memory more, else the number of one.
[[noreturn]] void RefuseWithin(std::size_t bytes) {
  std::vector<std::string> bodies;
  for (const char* hex : {"91", "DD FF FF FF FF", "DD 00 01 86 A0", "DF 00 00 C3 50"}) {
    bodies.push_back(Repeated(hex, 20000));  // the last two claim as much as there are bytes
  }
  for (const char* hex : {"DD FF FF FF FF", "DF FF FF FF FF 01", "DB FF FF FF FF 61", "C6 FF FF FF FF 00",
                          "C9 FF FF FF FF 01 00", "DC FF FF 00", "", "93 01 02", "82 01 02 03", "CE 01 02",
                          "DB 00 00", "C1", "92 C1 01"}) {
    bodies.push_back(Bytes(hex));
  }
  std::size_t pages[6] = {};
  std::ifstream status("/proc/self/statm");
  for (std::size_t& number : pages) status >> number;
  rlimit limit{};
  getrlimit(RLIMIT_DATA, &limit);
  limit.rlim_cur = pages[5] * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + bytes;
  if (setrlimit(RLIMIT_DATA, &limit) != 0) std::_Exit(100);
  for (std::size_t i = 0; i < bodies.size() * 2; ++i) {
    std::size_t used = 0;
    const auto depth = i % 2 == 0 ? Body::UsualDepth : Body::AnyDepth;
    const std::string text = Failure([&] { Body::Unpack(bodies[i / 2], used, depth); });
    if (!text.starts_with("Invalid packet!")) std::_Exit(static_cast<int>(i / 2 + 1));
  }
  std::_Exit(0);
}

TEST(BodyDeathTest, HostileBodiesAreRefusedAndCostNoMemory) {
  // A sanitizer's own allocator takes more at a time.
  EXPECT_EXIT(RefuseWithin((Sanitized ? 64U : 1U) << 20), testing::ExitedWithCode(0), "");
}

TEST(ReceiveBuffer, KeepsWhatArrivesAndMakesNoRoomForClaims) {
  SKIP_UNDER_THREAD_SANITIZER();
  ReceiveBuffer claimed(8192);
  EXPECT_EQ(claimed.Room(0x7FFFFFFF).size(), 8192U);
  claimed.Add(8192);
  EXPECT_LE(claimed.Room(0x7FFFFFFF).size(), 8192U);  // as much again as has arrived
  claimed.Drop(8192);
  EXPECT_EQ(claimed.Room(1).size(), 8192U);  // and given back
  for (unsigned seed = 0; seed < 20; ++seed) {
    std::mt19937 random(seed);
    const auto upTo = [&](std::size_t most) { return random() % (most + 1); };
    ReceiveBuffer buffer(1 + upTo(10000));
    std::string expected;
    for (int step = 0; step < 300; ++step) {
      const auto room = buffer.Room(upTo(2) == 0 ? 6 : expected.size() + upTo(200000));
      ASSERT_GE(room.size(), 1U);
      const std::size_t count = std::min(room.size(), upTo(20000));
      for (std::size_t i = 0; i < count; ++i) expected += static_cast<char>(room[i] = random() & 0xFF);
      buffer.Add(count);
      const std::size_t dropped = upTo(3) == 0 ? upTo(4) == 0 ? expected.size() : upTo(expected.size()) : 0;
      buffer.Drop(dropped);
      expected.erase(0, dropped);
      ASSERT_EQ(buffer.Size(), expected.size());
      ASSERT_TRUE(std::equal(expected.begin(), expected.end(), reinterpret_cast<const char*>(buffer.Data())));
    }
  }
}

RpcRemoteException FromBody(const std::string& body) {
  InputPacket packet = Received(Frame(0x82, body));
  return RpcRemoteException::FromObject(packet.Unpack().get());
}

std::string PackedAgain(const RpcRemoteException& error) {
  OutputPacket packet = OutputPacket::AllocateErrorNotification();
  error.Pack(packet);
  return Whole(std::move(packet)).substr(Packet::FullHeaderLen);
}

TEST(RemoteError, ConvertsEveryGoodShapeAndNoOther) {
  // The body, text, stack trace, inner error's text ("-": none), and how it is packed again (null: as it came).
  const std::array<const char*, 5> rows[] = {
      {"93 A1 65 A1 73 C0", "e", "s", "-", nullptr},
      {"93 C4 01 65 C4 01 73 C0", "e", "s", "-", "93 A1 65 A1 73 C0"},  // byte strings
      {"93 A1 65 C0 C0", "e", "e: \n", "-", nullptr},                   // no second text: the collected one
      {"93 A0 A0 C0", "", "", "-", nullptr},
      {"95 A1 65 A1 73 07 90 C0", "e", "s", "-", "93 A1 65 A1 73 C0"},  // the first two and the last count
      {"93 A1 65 A1 73 93 A1 69 A1 74 C0", "e", "s", "i", nullptr},
      {"93 A1 65 C0 93 A1 69 C0 93 A1 6A A1 75 C0", "e", "e: \ni: \nj: u\n", "i", nullptr},
      {"C0", "", "", "-", "93 A0 A0 C0"},
  };
  for (const auto& [body, text, stackTrace, innerText, packed] : rows) {
    const RpcRemoteException error = FromBody(Bytes(body));
    EXPECT_EQ(error.GetText(), text);
    EXPECT_EQ(error.GetStackTrace(), stackTrace) << body;
    const auto inner = error.GetInner();
    EXPECT_EQ(inner ? inner->GetText() : "-", innerText);
    EXPECT_EQ(Hex(PackedAgain(error)), packed == nullptr ? body : packed);
    EXPECT_TRUE(PackedAgain(error).ends_with(inner ? PackedAgain(*inner) : "\xC0"));
  }
  // No array, too short, without a text, a second that is none, an inner that is no error.
  for (const char* body : {"07", "A1 65", "80", "90", "92 A1 65 C0", "93 C0 A1 73 C0", "93 07 A1 73 C0",
                           "93 A1 65 07 C0", "93 A1 65 90 C0", "93 A1 65 A1 73 C3", "93 A1 65 A1 73 A1 69",
                           "93 A1 65 A1 73 92 A1 69 C0", "93 A1 65 A1 73 93 A1 69 A1 74 90"}) {
    EXPECT_THROW(FromBody(Bytes(body)), msgpack::type_error) << body;
  }
}

TEST(RemoteError, DescribesItselfBetweenFourLines) {
  const RpcRemoteException middle("middle", std::nullopt, RpcRemoteException("cause", "at c"));
  const std::string behind = "middle: \ncause: at c\n";
  const auto line = [](std::string word) { return word.append(50 - word.size(), '-'); };
  for (const auto& [error, inner, stackTrace] :
       std::vector<std::tuple<RpcRemoteException, std::string, std::string>>{
           {RpcRemoteException("top", "at t"), "", "at t\n"},
           {RpcRemoteException("top", "at t\nat u\n", middle), behind, "at t\nat u\n"},
           {RpcRemoteException("top", std::nullopt, middle), behind, "top: \n" + behind}}) {
    EXPECT_EQ(error.what(), line("BeginException") + "\ntop\n" + line("InnerException") + "\n" + inner +
                                line("StackTrace") + "\n" + stackTrace + line("EndException"));
  }
}

// The milliseconds that all that is done with a chain so deep takes.
double UseChain(std::size_t depth) {
  std::string body;
  for (std::size_t i = 0; i < depth; ++i) body += Bytes("93 A1 65 C0");
  body += Bytes("C0");
  const double start = ComputingTime();
  {
    const RpcRemoteException error = FromBody(body);
    const RpcRemoteException wrapped("w", std::nullopt, error);
    EXPECT_EQ(error.GetStackTrace().size(), depth * 4);
    EXPECT_EQ(error.GetInner()->GetStackTrace().size(), (depth - 1) * 4);
    EXPECT_GT(std::string(wrapped.what()).size(), depth * 8);
    EXPECT_TRUE(PackedAgain(error) == body);
  }
  return ComputingTime() - start;
}

TEST(RemoteError, ADeepChainNeedsNoStackAndTimeInProportion) {
  SKIP_UNDER_THREAD_SANITIZER();
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 256 * 1024), 0);
  double best[2] = {1e9, 1e9};  // of five
  const auto run = [](void* result) -> void* {
    for (int i = 0; i < 10; ++i) {
      double& least = static_cast<double*>(result)[i % 2];
      least = std::min(least, UseChain(i % 2 == 0 ? 5000 : 200000));
    }
    return nullptr;
  };
  pthread_t thread{};
  ASSERT_EQ(pthread_create(&thread, &attributes, run, best), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  // In proportion: 40 times as long. Were anything done for each error with all behind it: 1600 times.
  EXPECT_LT(best[1] / best[0], 600);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
