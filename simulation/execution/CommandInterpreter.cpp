#include "execution/CommandInterpreter.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <unordered_map>

#include "execution/CommandTable.h"

namespace VELTRO::KELVO::Simulation {

namespace {

using Table = std::unordered_map<std::int32_t, CommandRow::Function>;

const Table& AllCommands() {
  static const Table table = [] {
    Table all;
    for (const auto area :
         {MotionCommands(), ShapeCommands(), PixelCommands(), ParameterCommands(), LaserCommands(),
          FlowCommands(), WaitCommands(), VariableCommands(), FontCommands(), PeripheralCommands()}) {
      for (const CommandRow& row : area) all.emplace(row.Code, row.Execute);
    }
    return all;
  }();
  return table;
}

// Calls `act`; what it throws is about the command that the run is at.
template <class F>
void Attribute(Run& run, F act) {
  Frame& frame = run.Calls.Top();
  const Program& program = *frame.Commands;  // which outlives its command
  const std::size_t index = frame.Current;
  try {
    act(program, index, frame);
    run.Time.CheckLimit();
  } catch (const CommandError&) {  // in the list that it calls
    throw;
  } catch (const std::bad_alloc&) {  // no fault of the command
    throw;
  } catch (const std::exception& error) {
    throw CommandError(program, index, error.what());
  }
}

}  // namespace

void Interpret(Run& run) {
  const Table& table = AllCommands();
  while (!run.Time.IsAborted()) {
    if (!run.Calls.Step()) {
      if (run.Calls.Leave()) continue;
      // What is still to be waited for belongs to the latest command.
      return Attribute(run, [&](const Program&, std::size_t, const Frame&) {
        run.Galvos.EndMarks();
        run.Time.CatchUp();
      });
    }
    Attribute(run, [&](const Program& program, std::size_t index, Frame& frame) {
      const ClientLib::CommandView command = program.At(index, frame.Place);
      const auto row = table.find(command.Code);
      if (row == table.end()) throw std::runtime_error("not supported by the virtual card.");
      ValueReader values(command.Payload);
      const std::uint64_t executed = run.Executed.load(std::memory_order_relaxed);
      if (executed >= run.MostCommands) throw std::runtime_error("The run does not come to an end.");
      run.Executed.store(executed + 1, std::memory_order_relaxed);
      row->second(run, values);
    });
  }
}

}  // namespace VELTRO::KELVO::Simulation
