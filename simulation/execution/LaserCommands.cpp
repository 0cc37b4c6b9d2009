#include "execution/Checks.h"
#include "execution/CommandTable.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CommandCode;

namespace {

void ShootPulses(Motion& galvos, std::int32_t count, bool isWaitedFor) {
  NotNegative(count, "number of pulses");
  if (count > 0) galvos.Pulse(count / galvos.Parameters.LmFrequency, isWaitedFor);
}

}  // namespace

std::span<const CommandRow> LaserCommands() {
  // Power is the ink of what is marked; a ramp is at its end at once. Its scale decides what is dark.
  static constexpr CommandRow Rows[] = {
      {CommandCode::LASER_ON, [](Run& run) { run.Galvos.SwitchLaser(true); }},
      {CommandCode::LASER_OFF, [](Run& run) { run.Galvos.SwitchLaser(false); }},
      {CommandCode::LASER_ON_PULSES,
       [](Run& run, std::int32_t count, bool isWaitedFor) { ShootPulses(run.Galvos, count, isWaitedFor); }},
      {CommandCode::SET_POWER,
       [](Run& run, std::uint16_t power, std::int32_t channel) {
         run.Galvos.Parameters.Power[Channel(channel)] = power;
       }},
      {CommandCode::SET_POWER_CHANGE,
       [](Run& run, std::uint16_t power, double ramp, std::int32_t channel) {
         NotNegative(ramp, "length of the ramp");
         run.Galvos.Parameters.Power[Channel(channel)] = power;
       }},
      {CommandCode::POWER_SCALE,
       [](Run& run, double factor, std::int32_t channel) {
         run.Galvos.Parameters.PowerScale[Channel(channel)] = NotNegative(factor, "scale of the power");
       }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Simulation
