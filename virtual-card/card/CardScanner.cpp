#include "card/CardScanner.h"

#include <bit>
#include <stdexcept>
#include <string>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Axis;
using ClientLib::MutexLock;
using ClientLib::Point3D;
using ClientLib::ScannerPositions;

namespace {

constexpr std::size_t MostWords = 65536;

void CheckAxes(std::int32_t axes) {
  if (axes < 0 || axes >> Axis::_values().size() != 0) {
    throw std::runtime_error("There are no axes " + std::to_string(axes) + ".");
  }
}

}  // namespace

void CardScanner::CheckHead(std::int32_t head) {
  if (head < 0 || head >= GetHeadCount(GetFormat())) {
    throw std::runtime_error("There is no scan head " + std::to_string(head) + ".");
  }
}

ScannerPositions CardScanner::ReadPositions() {
  const auto format = GetFormat();
  const Point3D galvos = executor_.GetPosition();
  const MutexLock lock(mutex_);
  ScannerPositions positions;
  for (std::int32_t head = 0; head < GetHeadCount(format); ++head) {
    auto& axes = positions.Heads.emplace_back();
    for (std::int32_t index = 0; index < GetAxisCount(format); ++index) {
      const auto axis = static_cast<std::size_t>(GetAxisAtIndex(format, index));
      axes.push_back(bias_[head][axis] + (axis < 3 ? galvos.Coordinates[axis] : 0));
    }
  }
  last_ = positions;
  return positions;
}

ScannerPositions CardScanner::ReadLastPositions() {
  {
    const MutexLock lock(mutex_);
    if (last_) return *last_;
  }
  return ReadPositions();
}

Point3D CardScanner::GetHeadBias(std::int32_t head) {
  CheckHead(head);
  const MutexLock lock(mutex_);
  const auto& bias = bias_[head];
  return {{bias[Axis::X], bias[Axis::Y], bias[Axis::Z]}};
}

void CardScanner::SetHeadBias(std::int32_t head, std::int32_t axes, const std::vector<double>& values) {
  CheckHead(head);
  CheckAxes(axes);
  const auto bits = static_cast<std::uint32_t>(axes);
  if (values.size() != static_cast<std::size_t>(std::popcount(bits))) {
    throw std::runtime_error("The number of values is not that of the axes.");
  }
  const MutexLock lock(mutex_);
  auto value = values.begin();
  for (const Axis axis : Axis::_values()) {
    if ((bits >> axis & 1) != 0) bias_[head][static_cast<std::size_t>(axis._to_integral())] = *value++;
  }
}

void CardScanner::CheckAxis(std::int32_t head, std::int32_t axis) {
  CheckHead(head);
  Axis::_from_integral(axis);
}

void CardScanner::Transmit(std::int32_t head, std::int32_t axes, Words commands) {
  CheckHead(head);
  CheckAxes(axes);
  if (commands.size() > MostWords) throw std::runtime_error("There are too many commands.");
  const MutexLock lock(mutex_);
  commands_[{head, axes}] = std::move(commands);
}

CardScanner::Words CardScanner::Receive(std::int32_t head, std::int32_t axes) {
  CheckHead(head);
  CheckAxes(axes);
  const MutexLock lock(mutex_);
  return commands_[{head, axes}];
}

}  // namespace VELTRO::KELVO::VirtualCard
