#include "execution/CommandTable.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::CommandCode;

namespace {

// Acts on the world outside when the run is there in real time, too.
template <class F>
void ActOutside(Run& run, F act) {
  run.Time.CatchUp();
  if (!run.Time.IsAborted()) act();
}

}  // namespace

std::span<const CommandRow> PeripheralCommands() {
  static constexpr CommandRow Rows[] = {
      {CommandCode::PERIPHERAL_PORT,
       [](Run& run, std::uint32_t port, std::uint32_t action, std::uint32_t value) {
         ActOutside(run, [&] {
           run.Around.Ports.Write(static_cast<std::int32_t>(port), static_cast<std::int32_t>(action), value);
         });
       }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
