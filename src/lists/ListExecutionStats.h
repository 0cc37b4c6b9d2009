// Statistics of the latest execution of a list.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "rpc/WireFields.h"

namespace VELTRO::KELVO::ClientLib {

struct ListExecutionStats {
  static constexpr std::string_view WireName = "statistics";

  std::int32_t MacroVectors = 0;
  std::int32_t MicroVectors = 0;
  double ComputationTime = 0;
  double ExecutionTime = 0;
  double ComputationTimePerMicroVector = 0;

  std::string ToString() const;

  template <class Self>
  static auto WireFields(Self& self) {
    return std::tie(self.MacroVectors, self.MicroVectors, self.ComputationTime, self.ExecutionTime,
                    self.ComputationTimePerMicroVector);
  }
};

inline std::string to_string(const ListExecutionStats& stats) {
  return stats.ToString();
}

}  // namespace VELTRO::KELVO::ClientLib
