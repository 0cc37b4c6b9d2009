// The card: what it is, what it holds, what it does. Each area is a part of it with a room of its own.
#pragma once

#include <string>

#include "card/CardFonts.h"
#include "card/CardLists.h"
#include "card/Notifier.h"
#include "execution/Executor.h"

namespace VELTRO::KELVO::VirtualCard {

struct CardIdentity {
  std::string FirmwareVersion;
  std::string SerialNumber;
};

struct CardSettings {
  CardIdentity Identity;
  double Speed = 1;
  PlotterSettings Plotter;
};

// Any thread may use any part at any time.
class Card {
 public:
  // Throws as Plotter does.
  Card(CardSettings settings, Notifier& clients);

  const CardIdentity Identity;
  CardFonts Fonts;
  Executor Execution;
  CardLists Lists;
};

}  // namespace VELTRO::KELVO::VirtualCard
