#include "Reference.h"

#include <algorithm>
#include <vector>

namespace VELTRO::KELVO::Fuzz {

namespace {

// What the head of an object says.
struct Head {
  unsigned NumberBytes = 0;      // of a big-endian number behind the head
  std::size_t DataBytes = 0;     // behind that number
  bool NumberIsSize = false;     // the number counts further data bytes
  bool NumberIsCount = false;    // the number counts elements
  std::uint64_t Count = 0;       // elements, as far as the head itself says
  unsigned ObjectsPerCount = 0;  // 0: no container
  bool Malformed = false;
};

Head HeadOf(unsigned char byte) {
  Head head;
  if (byte < 0x80 || byte >= 0xE0) return head;  // a small number
  if (byte < 0xA0) {                             // a small map or array
    head.Count = byte & 0x0FU;
    head.ObjectsPerCount = byte < 0x90 ? 2 : 1;
    return head;
  }
  if (byte < 0xC0) {  // a short text
    head.DataBytes = byte & 0x1FU;
    return head;
  }
  switch (byte) {
    case 0xC1:
      head.Malformed = true;
      break;
    case 0xC4:
    case 0xC5:
    case 0xC6:
      head.NumberBytes = 1U << (byte - 0xC4U);
      head.NumberIsSize = true;
      break;
    case 0xC7:
    case 0xC8:
    case 0xC9:  // an extension has a type byte besides its data
      head.NumberBytes = 1U << (byte - 0xC7U);
      head.NumberIsSize = true;
      head.DataBytes = 1;
      break;
    case 0xCA:
      head.DataBytes = 4;
      break;
    case 0xCB:
      head.DataBytes = 8;
      break;
    case 0xCC:
    case 0xCD:
    case 0xCE:
    case 0xCF:
      head.DataBytes = std::size_t{1} << (byte - 0xCCU);
      break;
    case 0xD0:
    case 0xD1:
    case 0xD2:
    case 0xD3:
      head.DataBytes = std::size_t{1} << (byte - 0xD0U);
      break;
    case 0xD4:
    case 0xD5:
    case 0xD6:
    case 0xD7:
    case 0xD8:
      head.DataBytes = 1 + (std::size_t{1} << (byte - 0xD4U));
      break;
    case 0xD9:
    case 0xDA:
    case 0xDB:
      head.NumberBytes = 1U << (byte - 0xD9U);
      head.NumberIsSize = true;
      break;
    case 0xDC:
    case 0xDD:
      head.NumberBytes = byte == 0xDC ? 2 : 4;
      head.NumberIsCount = true;
      head.ObjectsPerCount = 1;
      break;
    case 0xDE:
    case 0xDF:
      head.NumberBytes = byte == 0xDE ? 2 : 4;
      head.NumberIsCount = true;
      head.ObjectsPerCount = 2;
      break;
    default:  // nil and the booleans
      break;
  }
  return head;
}

std::size_t BodyLength(std::span<const unsigned char> header) {
  return header[2] | std::size_t{header[3]} << 8 | std::size_t{header[4]} << 16 |
         std::size_t{header[5]} << 24;
}

std::uint64_t BigEndian(std::span<const char> bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) number = number << 8 | static_cast<unsigned char>(byte);
  return number;
}

}  // namespace

std::optional<std::size_t> LengthOfObject(std::span<const char> bytes, std::uint32_t depth) {
  std::vector<std::uint64_t> missing;  // objects yet to come in every container that is open
  std::size_t at = 0;
  do {
    if (!missing.empty()) --missing.back();
    if (at == bytes.size()) return std::nullopt;
    const Head head = HeadOf(static_cast<unsigned char>(bytes[at++]));
    if (head.Malformed || head.NumberBytes > bytes.size() - at) return std::nullopt;
    const std::uint64_t number = BigEndian(bytes.subspan(at, head.NumberBytes));
    at += head.NumberBytes;
    const std::uint64_t data = head.DataBytes + (head.NumberIsSize ? number : 0);
    if (data > bytes.size() - at) return std::nullopt;
    at += static_cast<std::size_t>(data);
    if (head.ObjectsPerCount > 0) {
      missing.push_back((head.NumberIsCount ? number : head.Count) * head.ObjectsPerCount);
      if (missing.size() > depth) return std::nullopt;
    }
    while (!missing.empty() && missing.back() == 0) missing.pop_back();
  } while (!missing.empty());
  return at;
}

std::optional<RequestId> RequestIdOf(std::span<const char> bytes) {
  if (bytes.empty()) return std::nullopt;
  const auto head = static_cast<unsigned char>(bytes[0]);
  if (head < 0x80) return RequestId{head, 1};
  if (head < 0xCC || head > 0xD3) return std::nullopt;
  const bool isSigned = head >= 0xD0;
  const std::size_t width = std::size_t{1} << (head - (isSigned ? 0xD0U : 0xCCU));
  if (bytes.size() < 1 + width) return std::nullopt;
  const std::uint64_t number = BigEndian(bytes.subspan(1, width));
  if (isSigned && (static_cast<unsigned char>(bytes[1]) & 0x80U) != 0) return std::nullopt;
  if (number > UINT32_MAX) return std::nullopt;
  return RequestId{static_cast<std::uint32_t>(number), 1 + width};
}

std::span<const unsigned char> FirstFrame(std::span<const unsigned char> stream) {
  if (stream.size() < HeaderBytes) return stream;
  return stream.first(std::min(stream.size(), HeaderBytes + BodyLength(stream)));
}

bool IsWhole(std::span<const unsigned char> frame) {
  return frame.size() >= HeaderBytes && frame.size() == HeaderBytes + BodyLength(frame);
}

std::span<const char> BodyOf(std::span<const unsigned char> frame) {
  return {reinterpret_cast<const char*>(frame.data()) + HeaderBytes, frame.size() - HeaderBytes};
}

}  // namespace VELTRO::KELVO::Fuzz
