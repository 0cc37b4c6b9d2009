#include "config/RecordText.h"

#include "common/NumberText.h"

namespace VELTRO::KELVO::ClientLib {

void RecordText::Value(double value) {
  AppendNumber(text_, value);
}

void RecordText::Value(const Transform3D& transform) {
  text_.append("{ ").append(transform.ToString()).append(" }");
}

}  // namespace VELTRO::KELVO::ClientLib
