// The commands that the card can execute: a row each, its code and what it does.
//
// A row's function takes the run and the command's values, in their order and of exactly these types:
//   CommandRow(CommandCode::MARK_ABS, [](Run& run, Point2D p) { run.Galvos.Mark(run.Galvos.To(p)); })
// A type with a function Read(ValueReader&) stands for several values (Conditions.h) or an array.
// A command whose values vary is given the reader of its values instead.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <tuple>
#include <type_traits>

#include "execution/Run.h"
#include "lists/CommandValueReader.h"

namespace VELTRO::KELVO::Simulation {

using ValueReader = ClientLib::Command::CommandValueReader;

// An array value of a command.
template <class T>
struct Array {
  ClientLib::Command::ArrayValue Values;

  static Array Read(ValueReader& values) { return {values.AsArrayOf<T>()}; }
  std::size_t GetCount() const { return Values.GetCount(); }
  T operator[](std::size_t i) const { return Values.As<T>(i); }
};

struct CommandRow {
  // Throws std::exception when the values are not those of the command, or make no sense.
  using Function = void (*)(Run&, ValueReader&);

  template <class F>
  constexpr CommandRow(std::int32_t code, F) : Code(code), Execute(&Invoke<F>) {}

  std::int32_t Code;
  Function Execute;

 private:
  template <class T>
  static T Take(ValueReader& values) {
    if constexpr (std::is_same_v<T, bool>) {
      return values.AsBool();
    } else if constexpr (requires { T::Read(values); }) {
      return T::Read(values);
    } else {
      return values.As<T>();
    }
  }

  template <class F, class... Values>
  static void InvokeWith(Run& run, ValueReader& values, void (F::*)(Run&, Values...) const) {
    if constexpr ((std::is_same_v<Values, ValueReader&> || ...)) {
      F{}(run, values);
    } else {
      const std::tuple<Values...> taken{Take<Values>(values)...};
      if (values.HasNext()) throw std::runtime_error("Command has too many values.");
      std::apply([&run](const Values&... value) { F{}(run, value...); }, taken);
    }
  }

  template <class F>
  static void Invoke(Run& run, ValueReader& values) {
    InvokeWith(run, values, &F::operator());
  }
};

// The rows of each area.
std::span<const CommandRow> MotionCommands();
std::span<const CommandRow> ShapeCommands();
std::span<const CommandRow> PixelCommands();
std::span<const CommandRow> ParameterCommands();
std::span<const CommandRow> LaserCommands();
std::span<const CommandRow> FlowCommands();
std::span<const CommandRow> WaitCommands();
std::span<const CommandRow> VariableCommands();
std::span<const CommandRow> FontCommands();
std::span<const CommandRow> PeripheralCommands();

}  // namespace VELTRO::KELVO::Simulation
