#include "card/Card.h"

#include <utility>

namespace VELTRO::KELVO::VirtualCard {

Card::Card(CardSettings settings, Notifier& clients)
    : Identity(std::move(settings.Identity)),
      Execution(settings.Speed, std::move(settings.Plotter), clients),
      Lists(Execution) {}

}  // namespace VELTRO::KELVO::VirtualCard
