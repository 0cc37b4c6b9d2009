// Where a run finds the lists that it calls.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "lists/CommandList.h"

namespace VELTRO::KELVO::Simulation {

// A list as it was at one moment. No other list from the same source has the same version.
struct ListSnapshot {
  std::uint64_t Version;
  ClientLib::CommandList Commands;
  std::shared_ptr<const void> Hold = {};  // the source's own: it lives as long as anybody has the snapshot
};

class ListSource {
 public:
  virtual ~ListSource() = default;
  // The list as it is now, or nothing when it still is that of version `known`. Throws std::runtime_error
  // "There is no list ID on the card.".
  virtual std::optional<ListSnapshot> FindChanged(std::int32_t id, std::uint64_t known) = 0;
};

}  // namespace VELTRO::KELVO::Simulation
