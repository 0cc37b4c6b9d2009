#include "lists/ListExecutionStats.h"

#include <charconv>

namespace VELTRO::KELVO::ClientLib {

namespace {

// As printf's "%f" writes it in the C locale.
std::string Fixed(double value) {
  char text[400];
  return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6).ptr};
}

}  // namespace

std::string ListExecutionStats::ToString() const {
  return "{ MacroVectors=" + std::to_string(MacroVectors) + ", MicroVectors=" + std::to_string(MicroVectors) +
         ", ComputationTime=" + Fixed(ComputationTime) + ", ExecutionTime=" + Fixed(ExecutionTime) +
         ", ComputationTimePerMicroVector=" + Fixed(ComputationTimePerMicroVector) + " }";
}

}  // namespace VELTRO::KELVO::ClientLib
