// The optics that a correction was made for.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "common/Point.h"
#include "config/Record.h"
#include "config/ScanHeadFormat.h"

namespace VELTRO::KELVO::ClientLib {

class OpticalParameters : public Record<OpticalParameters> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 7;
  static constexpr std::string_view WireName = "OpticalParameters";
  // For a hash that the plain struct has no room for.
  static constexpr const char* TooMany = "Illegal hash!";
  static constexpr const char* IllegalNumber = "Illegal hash!";

  // clang-format off
  KELVO_FIELDS(
      (std::int32_t, MinorVersion, 0),
      (std::int32_t, UsedAxes, 0),
      (ScanHeadFormat, HeadFormat, ScanHeadFormat::XY2_Single3D),
      (std::int32_t, XLayers, 0),
      (std::int32_t, YLayers, 0),
      (std::int32_t, ZLayers, 0),
      (std::int32_t, MLayers, 0),
      (double, MaxAngleX, 0),
      (double, MaxAngleY, 0),
      (double, MaxMagnification, 0),
      (double, Y2Z0, 0),
      (double, X2Y, 0),
      (double, O2X, 0),
      (double, FocalLength, 0),
      (double, MaxLensTravel, 0),
      (Point3D, FieldSize, {}),
      (Point3D, FieldOffset, {}),
      (double, Aperture, 0),
      (double, WorkingDistance, 0),
      (double, Wavelength, 0),
      (double, BitPerMicronZ0, 0),
      (double, BitPerMicronZ1, 0),
      (double, BitPerMicronE0, 0),
      (double, BitPerMicronE1, 0),
      (std::string, Hash, {}),
      (Point4D, InputScale, {}),
      (Point4D, InputOffset, {}))
  // clang-format on

  // Unlike that of other records, with the version first.
  std::string ToString() const override;

  // One object with the fields under their names, in their order; the version is the current one. What is no finite
  // number is null. Throws nlohmann::json::type_error for a hash that is no UTF-8.
  nlohmann::ordered_json ToJson() const;
  // The same as text, in lines that are indented by two blanks a level.
  std::string ToJsonText() const;
  // Every key must be there; others are ignored. Throws nlohmann::json::exception in that library's words, as
  // "[json.exception.type_error.302] type must be number, but is null", std::runtime_error "ScanHeadFormat::
  // _from_integral: invalid argument", or where an integer is wanted "NAME is no integer." (2.0 is one) or "NAME is out of
  // range." for one that is none of 32 bits.
  static OpticalParameters FromJson(const nlohmann::ordered_json& json);
  // The same from a text; of a key that comes twice the last counts. Takes time that grows with the text, and memory for
  // little more than its fields, so it may come from anybody. Throws also nlohmann::json::parse_error, and
  // std::runtime_error "The JSON text is nested too deeply." beyond 64 levels and "The JSON text is too long." beyond 16 MiB.
  static OpticalParameters FromJsonText(std::string_view text);

  // Of everything ahead of Hash.
  std::uint32_t GetHashCode() const;
  // Whether both have as many layers for each axis.
  bool EqualLayers(const OpticalParameters& other) const;
};

// What a double adds to the hash code: its two halves, and nothing for a zero of either sign...
std::uint32_t hashDouble(double value);
// ...and a number of its own for what is no number, and for what is infinite.
std::uint32_t doubleHash(double value);

extern template class Record<OpticalParameters>;

}  // namespace VELTRO::KELVO::ClientLib
