// Bodies as a hostile peer might send them, and the buffer they arrive in.
#include "rpc/Body.h"

#include <sys/resource.h>

#include <cstring>
#include <fstream>
#include <random>

#include "Helpers.h"
#include "rpc/ReceiveBuffer.h"

namespace VELTRO::KELVO::ClientLib::Testing {
namespace {

// `count` containers, one in the other, with a head each.
std::string Nested(const std::string& head, std::size_t count) {
  std::string body;
  for (std::size_t i = 0; i < count; ++i) body += head;
  return body;
}

TEST(Body, TheFirstObjectIsMeasured) {
  const struct {
    const char* Body;
    std::size_t Length;
  } rows[] = {
      {"C0", 1},
      {"07 A1", 1},
      {"90", 1},
      {"80 FF", 1},
      {"92 90 A1 61 C0", 4},
      {"82 01 80 02 91 03", 6},
      {"C4 00", 2},
      {"D9 02 61 62 63", 4},
      {"C7 00 05", 3},
      {"DD 00 00 00 01 C2", 6},
  };
  for (const auto& row : rows)
    EXPECT_EQ(Body::Check(Bytes(row.Body), Body::UsualDepth), row.Length) << row.Body;
  const std::string values = Bytes("92 90 A1 61");
  std::size_t used = 0;
  EXPECT_EQ(Body::Unpack(values, used, Body::UsualDepth)->via.array.ptr[1].as<std::string>(), "a");
  EXPECT_EQ(used, 4U);
}

TEST(Body, NestingIsBounded) {
  const auto nested = [](std::size_t depth) { return Nested("\x91", depth) + "\x07"; };
  EXPECT_EQ(Body::Check(nested(256), 256), 257U);
  EXPECT_THROW(Body::Check(nested(257), 256), std::runtime_error);
  EXPECT_EQ(Body::Check(nested(100000), Body::AnyDepth), 100001U);
  // Side by side is not nested.
  EXPECT_EQ(Body::Check(Bytes("93 91 90 91 80 91 07"), 3), 7U);
}

struct Hostile {
  const char* Name;
  std::string Bytes;
};

std::vector<Hostile> HostileBodies() {
  const std::string wholeArray("\xDD\0\x01\x86\xA0", 5);  // 100000: as many bytes as 20000 of these have
  const std::string wholeMap("\xDF\0\0\xC3\x50", 5);      // 50000 pairs
  return {
      {"empty", {}},
      {"an array of 2^32-1", Bytes("DD FF FF FF FF")},
      {"a map of 2^32-1", Bytes("DF FF FF FF FF 01")},
      {"a text of 2^32-1", Bytes("DB FF FF FF FF 61")},
      {"bytes of 2^32-1", Bytes("C6 FF FF FF FF 00")},
      {"an extension of 2^32-1", Bytes("C9 FF FF FF FF 01 00")},
      {"an array of 16 bits", Bytes("DC FF FF 00")},
      {"an array one short", Bytes("93 01 02")},
      {"a map without its last value", Bytes("82 01 02 03")},
      {"a number cut short", Bytes("CE 01 02")},
      {"a length cut short", Bytes("DB 00 00")},
      {"no MessagePack", Bytes("C1")},
      {"no MessagePack inside", Bytes("92 C1 01")},
      {"arrays that claim everything", Nested(wholeArray, 20000)},
      {"maps that claim everything", Nested(wholeMap, 20000)},
      {"many arrays of 2^32-1", Nested(Bytes("DD FF FF FF FF"), 20000)},
      {"nested without end", Nested("\x91", 100000)},
  };
}

TEST(Body, HostileBodiesAreRefused) {
  for (const auto& row : HostileBodies()) {
    for (const std::uint32_t depth : {Body::UsualDepth, Body::AnyDepth}) {
      const std::string text = Failure([&] {
        std::size_t used = 0;
        Body::Unpack(row.Bytes, used, depth);
      });
      EXPECT_EQ(text.substr(0, 15), "Invalid packet!") << row.Name;
    }
  }
}

std::size_t DataBytes() {
  std::ifstream status("/proc/self/status");
  std::string word;
  std::size_t kilobytes = 0;
  while (status >> word) {
    if (word == "VmData:") status >> kilobytes;
  }
  return kilobytes * 1024;
}

// Ends the process: 0 when every hostile body is refused with no more memory than `bytes` beyond today's.
[[noreturn]] void RefuseWithin(std::size_t bytes) {
  const auto bodies = HostileBodies();
  rlimit limit{};
  getrlimit(RLIMIT_DATA, &limit);
  limit.rlim_cur = DataBytes() + bytes;
  if (setrlimit(RLIMIT_DATA, &limit) != 0) std::_Exit(2);
  for (const auto& row : bodies) {
    try {
      std::size_t used = 0;
      Body::Unpack(row.Bytes, used, Body::UsualDepth);
      std::_Exit(3);
    } catch (const std::bad_alloc&) {
      std::_Exit(4);
    } catch (const std::runtime_error&) {
    }
  }
  std::_Exit(0);
}

TEST(BodyDeathTest, ClaimsCostNoMemory) {
  // A sanitizer's own allocator takes more at a time.
  EXPECT_EXIT(RefuseWithin((Sanitized ? 64U : 1U) << 20), ::testing::ExitedWithCode(0), "");
}

TEST(ReceiveBuffer, AClaimBringsNoRoom) {
  ReceiveBuffer buffer(8192);
  EXPECT_EQ(buffer.Room(0x7FFFFFFF).size(), 8192U);
  buffer.Add(8192);
  EXPECT_LE(buffer.Room(0x7FFFFFFF).size(), 8192U);  // as much again as has arrived
  buffer.Drop(8192);
  EXPECT_EQ(buffer.Room(1).size(), 8192U);  // and given back
}

TEST(ReceiveBuffer, KeepsWhatArrives) {
  for (unsigned seed = 0; seed < 20; ++seed) {
    std::mt19937 random(seed);
    const auto below = [&](std::size_t bound) {
      return std::uniform_int_distribution<std::size_t>(0, bound)(random);
    };
    ReceiveBuffer buffer(1 + below(10000));
    std::string expected;
    std::size_t most = 0;
    for (int step = 0; step < 300; ++step) {
      const auto room = buffer.Room(below(2) == 0 ? 6 : expected.size() + below(200000));
      ASSERT_GE(room.size(), 1U);
      const std::size_t count = std::min(room.size(), below(20000));
      for (std::size_t i = 0; i < count; ++i) room[i] = static_cast<unsigned char>(random());
      expected.append(reinterpret_cast<const char*>(room.data()), count);
      buffer.Add(count);
      most = std::max(most, expected.size());
      if (below(3) == 0) {
        const std::size_t dropped = below(4) == 0 ? expected.size() : below(expected.size());
        buffer.Drop(dropped);
        expected.erase(0, dropped);
      }
      ASSERT_EQ(buffer.Size(), expected.size());
      ASSERT_EQ(std::memcmp(buffer.Data(), expected.data(), expected.size()), 0) << seed << " " << step;
    }
    EXPECT_GT(most, 10000U);  // it had to grow
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::ClientLib::Testing
