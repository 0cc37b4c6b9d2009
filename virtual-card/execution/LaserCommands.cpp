#include "execution/CommandTable.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::CommandCode;

std::span<const CommandRow> LaserCommands() {
  static constexpr CommandRow Rows[] = {
      {CommandCode::LASER_ON, [](Run& run) { run.Galvos.SwitchLaser(true); }},
      {CommandCode::LASER_OFF, [](Run& run) { run.Galvos.SwitchLaser(false); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
