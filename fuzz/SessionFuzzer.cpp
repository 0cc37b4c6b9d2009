// Recorded sessions: lines that anybody may have written, and frames that become lines. Input: 'L' and a line, or 'F' and
// a frame.
#include <algorithm>
#include <stdexcept>
#include <string>

#include "Cursor.h"
#include "Require.h"
#include "rpc/JsonForm.h"
#include "session/FrameLine.h"

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

}  // namespace

}  // namespace VELTRO::KELVO::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace VELTRO::KELVO::Fuzz;
  Cursor input(data, size);
  const auto kind = input.Next<std::uint8_t>();
  const auto rest = input.Rest();
  if (kind == 'F') {
    WriteFrame({reinterpret_cast<const unsigned char*>(rest.data()), rest.size()});
  } else {
    ReadText({rest.begin(), rest.end()});
  }
  return 0;
}
