// A frame as a line of a recorded session: what both who makes (LineMaker.h) and who reads it (LineReader.h) know.
//
//   {"time":0.001234,"connection":1,"way":"to card","kind":"request","id":5,"method":"ExecuteList","arguments":[1]}
//   {"time":0.001301,"connection":1,"way":"from card","kind":"response","id":5,"method":"ExecuteList","result":null}
//
// docs/session.md has all kinds.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "rpc/FrameTap.h"

namespace VELTRO::KELVO::ClientLib::Recording {

// What a line tells. In the file stand the words of KindWords, in this order.
enum class LineKind : std::uint8_t {
  Opened,             // a connection has begun
  Request,            // method and arguments
  Response,           // its result
  Error,              // an answer that is an error
  Notification,       // its values
  ErrorNotification,  // its error
  Raw,                // bytes that are no such frame
  Ended,              // the side that sends this way has closed; nothing more comes this way
  Missing,            // frames that could not be kept, or bytes that a capture lacks
};
inline constexpr std::string_view KindWords[] = {"opened", "request",      "response",
                                                 "error",  "notification", "error notification",
                                                 "raw",    "ended",        "missing"};
// By FrameWay.
inline constexpr std::string_view WayWords[] = {"to card", "from card"};

// Values of more bytes, long lists, stay packed: nobody reads them as text, and making that text takes longer than
// sending them.
inline constexpr std::size_t MostAsText = 32768;

// What every line begins with.
struct LineHead {
  std::chrono::microseconds Time{};  // since the recording began
  std::uint32_t Connection = 1;
  FrameWay Way = FrameWay::ToCard;
  LineKind Kind = LineKind::Request;
};

// What a kind's value is called; nothing for a kind that has none.
std::string_view ContentName(LineKind kind);

}  // namespace VELTRO::KELVO::ClientLib::Recording
