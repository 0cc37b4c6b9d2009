// One client, as the card knows it.
#pragma once

#include "base/WorkMemory.h"
#include "card/Card.h"
#include "card/OpenFile.h"

namespace VELTRO::KELVO::VirtualCard {

// One thread's. Its end closes the client's files.
struct CardClient {
  CardClient(Card& card, WorkMemories& memories) : Owner(card), Work(memories), Files(card.Files) {}

  Card& Owner;
  WorkLease Work;  // for the request that is being carried out
  OpenFiles Files;
};

}  // namespace VELTRO::KELVO::VirtualCard
