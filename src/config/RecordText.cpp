#include "config/RecordText.h"

namespace VELTRO::KELVO::ClientLib {

void RecordText::Value(double value) {
  constexpr int StreamPrecision = 6;
  char digits[32];
  text_.append(
      digits,
      std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, StreamPrecision).ptr);
}

void RecordText::Value(const Transform3D& transform) {
  text_ += "{ ";
  Elements("( ", transform.A, " ), ");
  Elements("( ", transform.B, " ) }");
}

}  // namespace VELTRO::KELVO::ClientLib
