// Recorded sessions: lines that anybody may have written, frames that become lines, whole recordings that are replayed, and
// captured packets. Input: 'L' and a line, 'F' and a frame, 'R', a call's arguments in JSON, a line feed and a recording, or
// 'P', a link type, and packets with a byte of their length each.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <string>

#include "CapturedSession.h"
#include "Cursor.h"
#include "Require.h"
#include "replay/ReplayedConnection.h"
#include "rpc/JsonForm.h"
#include "session/LineMaker.h"
#include "session/LineReader.h"

namespace VELTRO::KELVO::Fuzz {

namespace {

using namespace ClientLib;
using namespace ClientLib::Recording;

void ReadText(const std::string& text) {
  try {
    const Line line = ReadLine(text);
    // What was read can be shown.
    static_cast<void>(JsonForm::TextOf(line.Content));
  } catch (const std::runtime_error&) {
    return;
  }
}

void WriteFrame(std::span<const unsigned char> frame) {
  for (const bool hasContent : {false, true}) {
    LineMaker maker(hasContent);
    std::string text;
    maker.AppendFrame(text, {{}, 1, FrameWay::ToCard, {}}, frame);
    Require(std::ranges::count(text, '\n') == 1 && text.ends_with('\n'), "a frame is one line");
    text.pop_back();
    const Line line = ReadLine(text);
    if (!hasContent) continue;
    const bool isSame =
        std::ranges::equal(line.Raw, frame, {}, [](char c) { return static_cast<unsigned char>(c); });
    Require(line.Head.Kind != LineKind::Raw || isSame, "raw bytes come back as they were");
    // Once more through MessagePack, so that an answer can be given again.
    const std::string content = JsonForm::TextOf(line.Content);
    const std::string packed = JsonForm::Pack("[" + content + "]");
    const auto again = msgpack::unpack(packed.data(), packed.size());
    Require(JsonForm::TextOf(again->via.array.ptr[0]) == content, "a value comes back as it was");
  }
}

// A file that is nowhere but in memory.
const std::string& PathOf(std::string_view content) {
  static const int file = memfd_create("recording", MFD_CLOEXEC);
  static const std::string path = "/proc/self/fd/" + std::to_string(file);
  Require(ftruncate(file, 0) == 0 && pwrite(file, content.data(), content.size(), 0) == std::ssize(content),
          "a recording is in memory");
  return path;
}

void Replay(std::string_view input) {
  const std::size_t end = std::min(input.find('\n'), input.size());
  try {
    const VirtualCard::RecordedCalls recording(PathOf(input.substr(std::min(end + 1, input.size()))));
    static_cast<void>(recording.GetSerialNumber());
    for (const auto& connection : recording.GetConnections()) {
      VirtualCard::ReplayedConnection replay(recording, connection, false);
      // Each call is answered as it was, in any case not as one that is not there.
      for (const auto& call : connection.Calls) {
        const bool isText = call.Arguments.starts_with('[');
        const std::string arguments = isText ? JsonForm::Pack(call.Arguments) : call.Arguments;
        const auto answer = replay.Answer(call.Method, arguments);
        if (recording.GetHead().HasContent) Require(answer.Call != nullptr, "what was recorded is found");
      }
      const std::string arguments = JsonForm::Pack(input.substr(0, end));
      for (const auto& call : connection.Calls) static_cast<void>(replay.Answer(call.Method, arguments));
    }
  } catch (const std::runtime_error&) {
    return;
  }
}

void Import(Cursor& input) {
  constexpr int Links[] = {0, 1, 12, 101, 113, 228, 276};
  const int link = Links[input.Next<std::uint8_t>() % std::size(Links)];
  std::string text;
  Tool::CapturedSession session(49374, true, [&](std::string_view lines) { text += lines; });
  std::uint64_t time = 0;
  while (!input.Empty()) {
    const auto size = input.Next<std::uint8_t>();
    const auto cut = input.Next<std::uint8_t>();
    const auto packet = input.Take(size);
    Tool::TcpSegment segment;
    const std::span bytes(reinterpret_cast<const unsigned char*>(packet.data()), packet.size());
    if (Tool::ReadSegment(link, bytes, bytes.size() + cut % 16, segment) != Tool::PacketKind::Tcp) continue;
    Require(segment.Bytes.size() <= bytes.size(), "a segment is in its packet");
    session.Take(segment, std::chrono::microseconds(++time));
  }
  session.Finish();
  // All that was written can be read.
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    Require(end != std::string::npos, "every line ends");
    static_cast<void>(ReadLine(std::string_view(text).substr(at, end - at)));
    at = end + 1;
  }
}

}  // namespace

}  // namespace VELTRO::KELVO::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace VELTRO::KELVO::Fuzz;
  Cursor input(data, size);
  const auto kind = input.Next<std::uint8_t>();
  if (kind == 'P') {
    Import(input);
    return 0;
  }
  const auto rest = input.Rest();
  if (kind == 'R') {
    Replay({reinterpret_cast<const char*>(rest.data()), rest.size()});
  } else if (kind == 'F') {
    WriteFrame({reinterpret_cast<const unsigned char*>(rest.data()), rest.size()});
  } else {
    ReadText({rest.begin(), rest.end()});
  }
  return 0;
}
