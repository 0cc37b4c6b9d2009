#include "rpc/LogText.h"

#include <locale>
#include <sstream>

namespace VELTRO::KELVO::ClientLib {

namespace {

// Bytes of the character at the front of a text that must be escaped; 0 when it need not.
std::size_t EscapedBytes(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (byte(0) < 0x20 || byte(0) == 0x7F || byte(0) == '\\') return 1;
  if (byte(0) == 0xC2 && text.size() > 1 && byte(1) >= 0x80 && byte(1) < 0xA0) return 2;
  if (text.starts_with("\xE2\x80\xA8") || text.starts_with("\xE2\x80\xA9")) return 3;
  return 0;
}

void AppendEscapedByte(std::string& line, char c) {
  constexpr std::string_view Named = "\n\r\t\\";
  constexpr std::string_view Digits = "0123456789abcdef";
  line += '\\';
  if (const std::size_t i = Named.find(c); i != std::string_view::npos) {
    line += "nrt\\"[i];
  } else {
    const auto byte = static_cast<unsigned char>(c);
    line.append(1, 'x').append(1, Digits[byte >> 4]).append(1, Digits[byte & 15U]);
  }
}

}  // namespace

void AppendEscaped(std::string& line, std::string_view text) {
  std::size_t plain = 0;  // of the front that is as it is
  while (plain < text.size()) {
    const std::size_t escaped = EscapedBytes(text.substr(plain));
    if (escaped == 0) {
      ++plain;
      continue;
    }
    line.append(text.substr(0, plain));
    text.remove_prefix(plain);
    for (const char c : text.substr(0, escaped)) AppendEscapedByte(line, c);
    text.remove_prefix(escaped);
    plain = 0;
  }
  line.append(text);
}

std::string LogText(const msgpack::object& value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << value;
  return stream.str();
}

}  // namespace VELTRO::KELVO::ClientLib
