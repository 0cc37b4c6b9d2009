#include "execution/CommandInterpreter.h"

#include <exception>
#include <unordered_map>

#include "execution/CommandTable.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

using Table = std::unordered_map<std::int32_t, CommandRow::Function>;

const Table& AllCommands() {
  static const Table table = [] {
    Table all;
    for (const auto area : {MotionCommands(), ShapeCommands(), PixelCommands(), ParameterCommands(),
                            LaserCommands(), FlowCommands()}) {
      for (const CommandRow& row : area) all.emplace(row.Code, row.Execute);
    }
    return all;
  }();
  return table;
}

}  // namespace

void Interpret(Run& run) {
  const Table& table = AllCommands();
  while (run.Next < run.Commands.GetCommandCount() && !run.Time.IsAborted()) {
    run.Current = run.Next++;
    const ClientLib::CommandView& command = run.Commands.At(run.Current);
    const auto row = table.find(command.Code);
    if (row == table.end()) {
      throw CommandError(run.Current, command.Code, "not supported by the virtual card.");
    }
    try {
      ValueReader values(command.Payload);
      row->second(run, values);
    } catch (const std::exception& error) {
      throw CommandError(run.Current, command.Code, error.what());
    }
  }
}

}  // namespace VELTRO::KELVO::VirtualCard
