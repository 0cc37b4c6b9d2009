#include "card/Card.h"

#include <utility>

namespace VELTRO::KELVO::VirtualCard {

Card::Card(CardSettings settings, Notifier& clients)
    : state_(std::move(settings.StateDirectory)),
      Identity(std::move(settings.Identity)),
      Configuration(state_),
      System(Configuration),
      Laser(state_),
      Motf(Configuration.QuadratureDecoder),
      Inputs(runSignal_),
      Variables(runSignal_),
      Lists(Execution),
      Scanner(Configuration, Execution),
      Execution(std::move(settings.Execution),
                {clients, runSignal_, Inputs, Variables, Lists, Fonts, Configuration, System}) {}

}  // namespace VELTRO::KELVO::VirtualCard
