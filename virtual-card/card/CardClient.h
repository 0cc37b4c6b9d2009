// One client, as the card knows it.
#pragma once

#include <span>
#include <string_view>

#include "base/WorkMemory.h"
#include "card/Card.h"
#include "card/OpenFile.h"

namespace VELTRO::KELVO::VirtualCard {

// Takes what is told to a client later than when it asked. Any thread may call anything at any time; nothing waits.
class AnswerTaker {
 public:
  virtual ~AnswerTaker() = default;
  virtual void TakeAnswer(std::span<const unsigned char> frame) noexcept = 0;
  // Ends the connection, as an answer cannot be given.
  virtual void GiveUp(std::string_view reason) noexcept = 0;
};

// One thread's. Its end closes the client's files, and nothing is waited for any more for the client.
struct CardClient {
  CardClient(Card& card, WorkMemories& memories, AnswerTaker& answers)
      : Owner(card), Work(memories), Answers(answers), Files(card.Files) {
    ++Owner.Counters.Connections;
  }
  ~CardClient() {
    Owner.Pending.Drop(this);
    --Owner.Counters.Connections;
  }
  CardClient(const CardClient&) = delete;
  CardClient& operator=(const CardClient&) = delete;

  Card& Owner;
  WorkLease Work;  // for the request that is being carried out
  AnswerTaker& Answers;
  OpenFiles Files;
};

}  // namespace VELTRO::KELVO::VirtualCard
