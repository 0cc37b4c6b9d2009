// What the tests of the inside share.
#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "rpc/OutputPacket.h"
#include "rpc/RpcCaller.h"

namespace VELTRO::KELVO::ClientLib::Testing {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool Sanitized = true;
#else
inline constexpr bool Sanitized = false;
#endif

// Bytes as "94 0A FF".
inline std::string Hex(std::span<const unsigned char> bytes) {
  std::string text;
  for (const unsigned char byte : bytes) {
    constexpr const char* digits = "0123456789ABCDEF";
    text.append(text.empty() ? "" : " ").append({digits[byte >> 4], digits[byte & 15]});
  }
  return text;
}

// The bytes of a text like "94 0A FF".
inline std::string Bytes(std::string_view hex) {
  std::string bytes;
  for (std::size_t at = 0; at + 1 < hex.size(); at += 3) {
    bytes += static_cast<char>(std::stoi(std::string(hex.substr(at, 2)), nullptr, 16));
  }
  return bytes;
}

inline std::span<const unsigned char> Unsigned(const std::string& bytes) {
  return {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()};
}

inline std::string Hex(const std::string& bytes) {
  return Hex(Unsigned(bytes));
}

// The body of a finished packet.
inline std::string BodyOf(OutputPacket& packet) {
  const auto body = packet.Close().subspan(Packet::FullHeaderLen);
  return {body.begin(), body.end()};
}

// A whole frame as it is received.
inline InputPacket Received(std::span<const unsigned char> frame) {
  return InputPacket::Allocate(frame.data(), 0, static_cast<int>(frame.size()));
}
inline InputPacket Received(PacketType type, const std::string& body) {
  OutputPacket packet("\x94\0\0\0\0", 6, type, {});
  packet.write(body.data(), body.size());
  const auto frame = packet.Close();
  std::string bytes(frame.begin(), frame.end());
  bytes[1] = static_cast<char>(type);
  return Received(Unsigned(bytes));
}

// What `f` fails with; "no failure" when it does not.
inline std::string Failure(const std::function<void()>& f) {
  try {
    f();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "no failure";
}

// Runs f(0) to f(count - 1) at once.
inline void Together(std::uint32_t count, const std::function<void(std::uint32_t)>& f) {
  std::vector<std::jthread> threads;
  for (std::uint32_t i = 0; i < count; ++i) threads.emplace_back([&f, i] { f(i); });
}

// Takes calls in place of a connection: notes the method and the packed arguments, and fails or answers nil.
class CallRecorder : public RpcCaller {
 public:
  struct Noted {
    std::string Method;
    std::string Arguments;
  };
  std::vector<Noted> Calls;
  std::function<void()> OnCall;

  std::uint32_t GetTimeout() const override { return 50; }
  void CheckMayWait() const override {}
  void Log(const char*) override {}

 protected:
  void Perform(RemoteCall& call) override {
    OutputPacket packet = OutputPacket::AllocateNotification();
    call.PackArguments(packet);
    Calls.push_back({std::string(call.GetMethod()), BodyOf(packet)});
    if (OnCall) OnCall();
    call.TakeResult(answer_, {});
  }

 private:
  InputPacket answer_;
};

}  // namespace VELTRO::KELVO::ClientLib::Testing
