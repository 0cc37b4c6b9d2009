// What the tests of the inside share.
#pragma once

#include <locale>

#include "rpc/RpcCaller.h"
#include "support/FakeCard.h"

namespace VELTRO::KELVO::Test {

using namespace ClientLib;

// Bytes as "94 0A FF".
std::string Hex(const auto& bytes) {
  std::string text;
  for (const auto byte : bytes) {
    constexpr const char* digits = "0123456789ABCDEF";
    text.append(text.empty() ? "" : " ").append({digits[byte >> 4 & 15], digits[byte & 15]});
  }
  return text;
}

// The bytes of a text like "94 0A FF".
inline std::string Bytes(const std::string& hex) {
  std::istringstream words(hex);
  std::string bytes;
  for (unsigned byte = 0; words >> std::hex >> byte;) bytes += static_cast<char>(byte);
  return bytes;
}

inline std::span<const unsigned char> Unsigned(const std::string& bytes) {
  return {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()};
}

inline std::string Whole(OutputPacket packet) {
  std::string frame;
  for (const auto& piece : packet.CloseInPieces()) frame.append(piece.begin(), piece.end());
  return frame;
}

inline InputPacket Received(const std::string& frame) {
  return InputPacket::Allocate(Unsigned(frame).data(), 0, static_cast<int>(frame.size()));
}

// The object that is the body of a notification.
template <class T>
T Unpacked(const std::string& body) {
  InputPacket packet = Received(Frame(0x02, body));
  return packet.Unpack().get().as<T>();
}

// What `f` fails with; "no failure" when it does not.
std::string Failure(auto&& f) {
  try {
    f();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "no failure";
}

#define EXPECT_FAILURE(work, text) EXPECT_EQ(Failure([&] { work; }), text) << #work

// As long as it lives, numbers of the global locale look like "1.234,5"; it need not be installed.
struct CommaLocale {
  struct Commas : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\1"; }
  };
  ~CommaLocale() { std::locale::global(before); }
  const std::locale before = std::locale::global(std::locale(std::locale(), new Commas));
};

// Takes calls in place of a connection: keeps the packed arguments, and answers nil.
struct CallRecorder : RpcCaller {
  std::vector<std::string> Calls;
  std::uint32_t GetTimeout() const override { return 50; }
  CallbackWait BeginWait() const override { return {}; }
  bool IsDataPending() const override { return false; }
  void Log(const char*) override {}
  void Perform(RemoteCall& call) override {
    OutputPacket packet = OutputPacket::AllocateNotification();
    call.PackArguments(packet);
    Calls.push_back(Whole(std::move(packet)).substr(Packet::FullHeaderLen));
    InputPacket nil("\xC0", 1, PacketType::Response);
    call.TakeResult(nil);
  }
};

}  // namespace VELTRO::KELVO::Test
