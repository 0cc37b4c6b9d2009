// What exported functions ask the card, and what they make of its answers.
#pragma once

#include "support/FakeCard.h"

namespace VELTRO::KELVO::Test {

// A card that keeps what it was asked latest and always gives the same answer, nil at first.
struct AskedCard {
  // "Method[arguments]"; the arguments packed anew, in the shortest form of every number; and as they came.
  std::string Asked, Arguments, Sent, Answer = "\xC0";
  FakeCard Card{FakeCard::Answering([this](const Request& request) {
    std::ostringstream text;
    text << request.Method << request.Arguments.get();
    Asked = text.str();
    Arguments = Packed(request.Arguments.get());
    Sent = request.Sent;
    return Frame(0x01, Packed(request.Id) + Answer);
  })};
  Connection Handle{Card.Port()};
  operator std::int32_t() const { return Handle; }
};

// A call, what the card is asked by it, what the call ends with and has written then, and the card's packed answer.
struct AskingCall {
  const char* call;
  std::function<std::string()> told;
  std::string asked;
  std::string outcome = "0";
  std::string answer = "\xC0";
};
#define ASK(call, ...) #call, [&] { return Told(call __VA_OPT__(, ) __VA_ARGS__); }

inline void ExpectAsked(AskedCard& card, std::span<const AskingCall> calls) {
  for (const auto& [call, told, asked, outcome, answer] : calls) {
    card.Asked = "";
    card.Answer = answer;
    EXPECT_EQ(told(), outcome) << call;
    EXPECT_EQ(card.Asked, asked) << call;
  }
}

}  // namespace VELTRO::KELVO::Test
