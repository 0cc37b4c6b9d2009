#include "config/ScanHeadFormat.h"

#include <bit>
#include <stdexcept>

namespace VELTRO::KELVO::ClientLib {

namespace {

bool Has(ScanHeadFormat format, SHFlags flag) {
  return (format._to_integral() & flag) != 0;
}

void Check(ScanHeadFormat format) {
  if (!ScanHeadFormat::_is_valid(format)) throw std::runtime_error("Unknown head format");
}

// Defocus takes the place of the zoom.
bool HasZoom(ScanHeadFormat format) {
  return Has(format, SHFlags::FourD) && !Has(format, SHFlags::Defocus);
}

std::uint32_t BitOf(Axis axis) {
  return 1U << axis;
}

std::uint32_t BitsOf(ScanHeadFormat format) {
  std::uint32_t bits = format == ScanHeadFormat::SL2_Dual2D ? Axes::XY : Axes::XYZ;
  if (HasZoom(format)) bits |= BitOf(Axis::ZoomZ);
  if (HasAuxiliary(format)) bits |= BitOf(Axis::Auxiliary);
  if (IsExtended(format)) bits |= BitOf(Axis::SensorZ);
  return bits;
}

[[noreturn]] void RefuseAxis() {
  throw std::runtime_error("The head format has no such axis.");
}

}  // namespace

std::int32_t GetHeadCount(ScanHeadFormat format) {
  Check(format);
  return Has(format, SHFlags::DualHead) ? 2 : 1;
}

std::int32_t GetAxisCount(ScanHeadFormat format) {
  Check(format);
  return std::popcount(BitsOf(format));
}

std::int32_t GetDimensions(ScanHeadFormat format) {
  Check(format);
  if (format == ScanHeadFormat::SL2_Dual2D) return 2;
  return Has(format, SHFlags::FourD) ? 4 : 3;
}

bool HasOpticalZoom(ScanHeadFormat format) {
  Check(format);
  return HasZoom(format);
}

Axes GetAxes(ScanHeadFormat format) {
  if (!ScanHeadFormat::_is_valid(format)) throw std::runtime_error("Unknown head format.");
  return static_cast<Axes::_enumerated>(BitsOf(format));
}

bool HasAuxiliary(ScanHeadFormat format) {
  return Has(format, SHFlags::Auxiliary);
}

bool IsExtended(ScanHeadFormat format) {
  return Has(format, SHFlags::Extended);
}

std::int32_t GetIndexOfAxis(ScanHeadFormat format, Axis axis) {
  const auto axes = static_cast<std::uint32_t>(GetAxes(format));
  if ((axes & BitOf(axis)) == 0) RefuseAxis();
  return std::popcount(axes & (BitOf(axis) - 1));
}

Axis GetAxisAtIndex(ScanHeadFormat format, std::int32_t index) {
  const auto axes = static_cast<std::uint32_t>(GetAxes(format));
  for (const Axis axis : Axis::_values()) {
    if ((axes & BitOf(axis)) != 0 && GetIndexOfAxis(format, axis) == index) return axis;
  }
  RefuseAxis();
}

}  // namespace VELTRO::KELVO::ClientLib
