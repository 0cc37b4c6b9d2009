// Lists as text, and as the bytes in which they reach a card.
#pragma once

#include "support/FakeCard.h"

namespace VELTRO::KELVO::Test {

inline std::string TextOf(std::int64_t list) {
  std::string text(static_cast<std::size_t>(vlListStringLen(list)) + 2, '?');
  std::uint32_t length = 0;
  EXPECT_FAILS(vlListToString(list, text.data(), static_cast<std::uint32_t>(text.size() - 1), &length),
               "Buffer is too small.");
  EXPECT_OK(vlListToString(list, text.data(), static_cast<std::uint32_t>(text.size()), &length));
  return text.substr(0, length);
}

// A card that keeps "CODE:PAYLOAD" in hexadecimal digits of the first command of every list that is uploaded.
struct UploadCard {
  std::vector<std::string> Wire;
  FakeCard Card{FakeCard::Answering([this](const Request& request) {
    if (request.Method == "SetList") Wire.push_back(FirstCommand(request.Arguments.get()));
    return Response(request.Id, false);
  })};
  Connection Handle{Card.Port()};

 private:
  static std::string FirstCommand(const msgpack::object& arguments) {
    char digits[16];
    const auto list = arguments.via.array.ptr[1];
    const auto [code, payload] = list.via.array.ptr[1].as<std::tuple<std::int32_t, std::vector<char>>>();
    std::snprintf(digits, sizeof digits, "%X:", static_cast<unsigned>(code));
    std::string text = digits;
    for (const char byte : payload) {
      std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(byte));
      text += digits;
    }
    return text;
  }
};

}  // namespace VELTRO::KELVO::Test
