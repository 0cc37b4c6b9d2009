// Makes a recorded session of captured segments: puts them together, and tells what came twice and what is missing.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TcpSegment.h"
#include "session/FrameSplitter.h"
#include "session/LineMaker.h"

namespace VELTRO::KELVO::Tool {

class CapturedSession : public ClientLib::Recording::FrameSink {
 public:
  // Of the connections to this port of whatever card. `write` is given the lines.
  CapturedSession(std::uint16_t port, bool hasContent, std::function<void(std::string_view)> write);
  ~CapturedSession() override;

  // The time is since the session began.
  void Take(const TcpSegment& segment, std::chrono::microseconds time);
  // Nothing more comes.
  void Finish();

  std::uint32_t GetConnections() const { return connections_; }
  std::uint64_t GetRepeatedSegments() const { return repeated_; }
  std::uint64_t GetMissingBytes() const { return missingBytes_; }
  std::uint64_t GetGaps() const { return gaps_; }

 private:
  struct Way;
  struct Connection;
  using Pair = std::pair<Endpoint, Endpoint>;  // application and card

  // Null: it is of none that is worth one.
  Connection* FindConnection(const Pair& pair, const TcpSegment& segment);
  void TakeBytes(Way& way, const TcpSegment& segment);
  void Deliver(Way& way, std::uint64_t begin, std::span<const unsigned char> bytes, std::uint64_t cut);
  void DeliverEarly(Way& way);
  void Lose(Way& way, std::uint64_t bytes);
  void LoseAllEarly(Way& way);
  static void End(Way& way);
  void EndConnection(Connection& connection);
  void TakeFrame(std::uint32_t connection, ClientLib::FrameWay way, const ClientLib::FramePieces& frame,
                 const std::shared_ptr<const void>& owner) override;
  void TakeOther(std::uint32_t connection, ClientLib::FrameWay way, ClientLib::Recording::LineKind kind,
                 std::span<const unsigned char> bytes) override;
  void Write();

  const std::uint16_t port_;
  const std::function<void(std::string_view)> write_;
  ClientLib::Recording::LineMaker lines_;
  std::chrono::microseconds now_{};
  std::string text_;
  std::map<Pair, std::unique_ptr<Connection>> open_;
  std::uint32_t connections_ = 0;
  std::uint64_t repeated_ = 0, missingBytes_ = 0, gaps_ = 0;
};

}  // namespace VELTRO::KELVO::Tool
