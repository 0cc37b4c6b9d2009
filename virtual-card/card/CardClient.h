// One client, as the card knows it.
#pragma once

#include "card/Card.h"
#include "card/OpenFile.h"

namespace VELTRO::KELVO::VirtualCard {

// One thread's. Its end closes the client's files.
struct CardClient {
  explicit CardClient(Card& card) : Owner(card), Files(card.Files) {}

  Card& Owner;
  OpenFiles Files;
};

}  // namespace VELTRO::KELVO::VirtualCard
