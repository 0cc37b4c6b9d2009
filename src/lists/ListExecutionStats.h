// Statistics of the latest execution of a list.
#pragma once

#include <cstdint>
#include <string>

#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib {

struct ListExecutionStats {
  std::int32_t MacroVectors = 0;
  std::int32_t MicroVectors = 0;
  double ComputationTime = 0;
  double ExecutionTime = 0;
  double ComputationTimePerMicroVector = 0;

  std::string ToString() const;

  // On the wire: an array of the five, in this order.
  MSGPACK_DEFINE_ARRAY(MacroVectors, MicroVectors, ComputationTime, ExecutionTime,
                       ComputationTimePerMicroVector)
};

inline std::string to_string(const ListExecutionStats& stats) {
  return stats.ToString();
}

}  // namespace VELTRO::KELVO::ClientLib
