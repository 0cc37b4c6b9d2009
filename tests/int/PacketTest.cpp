// Frames to the byte.
#include <optional>

#include "Helpers.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::ClientLib::Testing {
namespace {

InputPacket RequestWithId7() {
  return Received(OutputPacket::AllocateRequest(7).Close());
}

TEST(Packet, RequestIdTakesItsShortestForm) {
  const struct {
    unsigned int Id;
    const char* Frame;
  } rows[] = {
      {0, "94 00 01 00 00 00 00"},
      {127, "94 00 01 00 00 00 7F"},
      {128, "94 00 02 00 00 00 CC 80"},
      {255, "94 00 02 00 00 00 CC FF"},
      {256, "94 00 03 00 00 00 CD 01 00"},
      {65535, "94 00 03 00 00 00 CD FF FF"},
      {65536, "94 00 05 00 00 00 CE 00 01 00 00"},
      {4294967295, "94 00 05 00 00 00 CE FF FF FF FF"},
  };
  for (const auto& row : rows) {
    OutputPacket packet = OutputPacket::AllocateRequest(row.Id);
    EXPECT_EQ(Hex(packet.Close()), row.Frame);
    EXPECT_EQ(Received(packet.Close()).GetRequestId(), row.Id);
  }
}

TEST(Packet, ArgumentsArePackedAsOneArrayInOrder) {
  CallRecorder caller;
  caller.Call("Ping");
  caller.Call("Move", std::int32_t{-1}, true, 1.5, std::string("ab"));
  ASSERT_EQ(caller.Calls.size(), 2U);
  EXPECT_EQ(Hex(caller.Calls[0].Arguments), "90");
  EXPECT_EQ(Hex(caller.Calls[1].Arguments), "94 FF C3 CB 3F F8 00 00 00 00 00 00 A2 61 62");
}

TEST(Packet, LengthFieldCountsTheBodyOnly) {
  OutputPacket packet = OutputPacket::AllocateNotification();
  packet.write(std::string(300, 'x').data(), 300);
  const auto frame = packet.Close();
  EXPECT_EQ(frame.size(), 306U);
  EXPECT_EQ(packet.GetSize(), 306U);
  EXPECT_EQ(Hex(frame.first(7)), "94 02 2C 01 00 00 78");
  EXPECT_EQ(Packet::BodyLength(frame.data()), 300U);
}

TEST(Packet, FactoriesBeginTheirFrames) {
  const InputPacket request = RequestWithId7();
  const RpcRemoteException inner("i", "t");
  const RpcRemoteException error("e", std::nullopt, inner);
  const struct {
    OutputPacket Packet;
    const char* Frame;
  } rows[] = {
      {OutputPacket::AllocateResponse(request), "94 01 01 00 00 00 07"},
      {OutputPacket::AllocateResponse(request, std::runtime_error("no")),
       "94 81 07 00 00 00 07 93 A2 6E 6F C0 C0"},
      {OutputPacket::AllocateResponse(request, error), "94 81 0B 00 00 00 07 93 A1 65 C0 93 A1 69 A1 74 C0"},
      {OutputPacket::AllocateNotification(), "94 02 00 00 00 00"},
      {OutputPacket::AllocateErrorNotification(), "94 82 00 00 00 00"},
  };
  for (auto& row : rows) EXPECT_EQ(Hex(const_cast<OutputPacket&>(row.Packet).Close()), row.Frame);
}

TEST(Packet, NothingAnswersARequestWithoutAnId) {
  const InputPacket request = Received(OutputPacket::AllocateNotification().Close());
  EXPECT_FALSE(request.GetRequestId().has_value());
  EXPECT_THROW(OutputPacket::AllocateResponse(request), std::bad_optional_access);
  EXPECT_THROW(OutputPacket::AllocateResponse(request, std::runtime_error("")), std::bad_optional_access);
  EXPECT_THROW(OutputPacket::AllocateResponse(request, RpcRemoteException("")), std::bad_optional_access);
}

TEST(Packet, WhatIsNoFrameIsRefused) {
  EXPECT_EQ(Failure([] { InputPacket::Allocate(nullptr, 0, 100); }), "Invalid packet!");
  const char* const rows[] = {
      "94",                                            // hardly anything
      "94 01",                                         //
      "94 02 00 00 00",                                // no whole header
      "95 01 01 00 00 00 07",                          // another start marker
      "94 01 00 00 00 00",                             // no id
      "94 01 03 00 00 00 CD 01",                       // an id cut short
      "94 01 01 00 00 00 FF",                          // a negative id
      "94 81 01 00 00 00 C0",                          // no number: nil,
      "94 00 01 00 00 00 C2",                          // false,
      "94 01 02 00 00 00 A1 37",                       // a text,
      "94 01 02 00 00 00 91 07",                       // an array,
      "94 01 05 00 00 00 CA 40 E0 00 00",              // a float
      "94 01 01 00 00 00 C1",                          // no MessagePack
      "94 01 09 00 00 00 CF 00 00 00 01 00 00 00 00",  // 2^32
  };
  for (const char* row : rows) {
    const std::string frame = Bytes(row);
    EXPECT_EQ(Failure([&] { Received(Unsigned(frame)); }), "Invalid packet!") << row;
  }
}

TEST(Packet, AFrameIsTakenApart) {
  // Within a larger buffer, with an id in a signed form, followed by the result.
  const std::string buffer = Bytes("00 00 94 01 05 00 00 00 D1 00 05 A1 72 FF");
  InputPacket packet = InputPacket::Allocate(Unsigned(buffer).data(), 2, 11);
  EXPECT_EQ(packet.GetType(), PacketType::Response);
  EXPECT_EQ(packet.GetRequestId(), 5U);
  EXPECT_EQ(packet.Rest().size(), 2U);
  InputPacket moved = std::move(packet);
  EXPECT_EQ(moved.Unpack().get().as<std::string>(), "r");
  EXPECT_EQ(Failure([&] { moved.Unpack(); }), "Invalid packet! The body holds no object.");
}

TEST(Packet, GrowsAndKeepsWhatItHolds) {
  for (const std::size_t headerLength : {6U, 8192U, 8193U, 40000U}) {
    std::string expected(headerLength, 'h');
    OutputPacket packet(expected.data(), static_cast<unsigned int>(headerLength), PacketType::Notification,
                        {});
    for (std::size_t size = 0; size < 30000; size = size * 3 + 1) {
      const std::string piece(size, static_cast<char>('a' + size % 26));
      packet.write(piece.data(), piece.size());
      expected += piece;
    }
    packet.write(nullptr, 0);
    const auto frame = packet.Close();
    std::string got(frame.begin(), frame.end());
    EXPECT_EQ(Packet::BodyLength(frame.data()), expected.size() - 6);
    got.replace(2, 4, 4, 'h');
    EXPECT_TRUE(got == expected) << headerLength;
  }
}

}  // namespace
}  // namespace VELTRO::KELVO::ClientLib::Testing
