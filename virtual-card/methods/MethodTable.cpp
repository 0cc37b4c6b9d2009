#include "methods/MethodTable.h"

#include <algorithm>
#include <unordered_map>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::OutputPacket;

namespace {

using Table = std::unordered_map<std::string_view, const Method*>;

const Table& AllMethods() {
  static const Table table = [] {
    Table all;
    for (const auto area : {CardMethods(), ListMethods(), FontMethods(), LaserMethods(),
                            ConfigurationMethods(), ScannerMethods(), ProcessMethods(), MotfMethods(),
                            RecordMethods(), FileMethods(), HeadCorrectionMethods(), PowerCorrectionMethods(),
                            PinMethods(), VariableMethods(), PeripheralMethods(), DiagnosticMethods()}) {
      for (const Method& method : area) all.emplace(method.GetName(), &method);
    }
    return all;
  }();
  return table;
}

std::string Quoted(std::string_view name) {
  return "'" + std::string(name) + "'";
}

}  // namespace

void Method::CheckCount(std::string_view name, std::size_t wanted, std::size_t given) {
  if (given == wanted) return;
  throw std::runtime_error("Method " + Quoted(name) + " takes " + std::to_string(wanted) + " arguments, " +
                           std::to_string(given) + " were given.");
}

void Method::RefuseType(std::string_view name, std::size_t index) {
  throw std::runtime_error("Method " + Quoted(name) + ": argument " + std::to_string(index) +
                           " is of the wrong type.");
}

void Method::Postpone(CardClient& client, std::chrono::milliseconds timeout, OutputPacket answer,
                      std::function<bool(OutputPacket& answer, bool isOver)> tryToPack) {
  constexpr std::chrono::milliseconds Longest = std::chrono::hours(1);
  const auto deadline = std::chrono::steady_clock::now() + std::min(timeout, Longest);
  const auto kept =
      std::make_shared<OutputPacket>(std::move(answer));  // functions are copied, packets are not
  client.Owner.Pending.Add(&client, deadline, [&client, kept, tryToPack = std::move(tryToPack)](bool isOver) {
    try {
      if (!tryToPack(*kept, isOver)) return false;
      client.Answers.TakeAnswer(kept->Close());
    } catch (const std::exception& error) {
      client.Answers.GiveUp(error.what());
    }
    return true;
  });
}

bool HasMethod(std::string_view name) {
  return AllMethods().contains(name);
}

const Method& FindMethod(std::string_view name) {
  const auto found = AllMethods().find(name);
  if (found == AllMethods().end()) throw std::runtime_error("Unknown method " + Quoted(name) + ".");
  return *found->second;
}

}  // namespace VELTRO::KELVO::VirtualCard
