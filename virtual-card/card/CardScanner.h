// The scan heads as clients see them outside of lists: positions, bias, messages.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "card/CardConfiguration.h"
#include "card/Executor.h"
#include "common/Mutex.h"
#include "config/ScannerAPI.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time. There are as many heads, with such axes, as the active configuration's
// head format says; all of them follow the galvos. Whoever names another head gets std::runtime_error "There is no
// scan head HEAD.".
class CardScanner {
 public:
  using Words = std::vector<std::uint32_t>;

  CardScanner(CardConfiguration& configuration, Executor& executor)
      : configuration_(configuration), executor_(executor) {}

  ClientLib::Point3D GetNominalPosition() const { return executor_.GetPosition(); }
  // x, y and z are where the galvos are, and every axis has its bias added.
  ClientLib::ScannerPositions ReadPositions();
  // What ReadPositions gave the last time; without such a time it reads them.
  ClientLib::ScannerPositions ReadLastPositions();

  ClientLib::Point3D GetHeadBias(std::int32_t head);
  // Throws std::runtime_error "There are no axes AXES." or "The number of values is not that of the axes.".
  void SetHeadBias(std::int32_t head, std::int32_t axes, const std::vector<double>& values);

  // Throws std::runtime_error "Axis::_from_integral: invalid argument".
  void CheckAxis(std::int32_t head, std::int32_t axis);
  // Keeps the commands for who receives from the same head and axes; nothing is there at first. Throw as SetHeadBias, or
  // std::runtime_error "There are too many commands.".
  void Transmit(std::int32_t head, std::int32_t axes, Words commands);
  Words Receive(std::int32_t head, std::int32_t axes);

 private:
  ClientLib::ScanHeadFormat GetFormat() { return configuration_.Scanner.Get().HeadFormat; }
  void CheckHead(std::int32_t head);

  CardConfiguration& configuration_;
  Executor& executor_;
  ClientLib::Mutex mutex_;
  std::map<std::int32_t, std::array<double, 6>> bias_ KELVO_GUARDED_BY(mutex_);  // of a head's axes
  std::optional<ClientLib::ScannerPositions> last_ KELVO_GUARDED_BY(mutex_);
  std::map<std::pair<std::int32_t, std::int32_t>, Words> commands_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::VirtualCard
