#include <cmath>

#include "execution/CommandTable.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::CommandCode;

namespace {

double Speed(double value) {
  if (!std::isfinite(value) || value <= 0) throw std::runtime_error("The speed must be positive and finite.");
  return value;
}

double Delay(double value) {
  if (!std::isfinite(value) || value < 0) {
    throw std::runtime_error("The delay must be finite and not negative.");
  }
  return value;
}

double LaserDelay(double value) {
  if (!std::isfinite(value)) throw std::runtime_error("The delay must be finite.");
  return value;
}

}  // namespace

std::span<const CommandRow> ParameterCommands() {
  static constexpr CommandRow Rows[] = {
      {CommandCode::JUMP_SPEED, [](Run& run, double v) { run.Galvos.Parameters.JumpSpeed = Speed(v); }},
      {CommandCode::MARK_SPEED, [](Run& run, double v) { run.Galvos.Parameters.MarkSpeed = Speed(v); }},
      {CommandCode::JUMP_DELAY, [](Run& run, double t) { run.Galvos.Parameters.JumpDelay = Delay(t); }},
      {CommandCode::MARK_DELAY, [](Run& run, double t) { run.Galvos.Parameters.MarkDelay = Delay(t); }},
      {CommandCode::POLY_DELAY, [](Run& run, double t) { run.Galvos.Parameters.PolyDelay = Delay(t); }},
      {CommandCode::LON_DELAY,
       [](Run& run, double t) { run.Galvos.Parameters.LaserOnDelay = LaserDelay(t); }},
      {CommandCode::LOFF_DELAY,
       [](Run& run, double t) { run.Galvos.Parameters.LaserOffDelay = LaserDelay(t); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
