#include "config/ProcessVariables.h"

#include <string_view>

#include "config/RecordText.h"

namespace VELTRO::KELVO::ClientLib {

void WriteFields(const ProcessVariables& variables, RecordText& text) {
  ProcessVariables::ForEachField(variables, [&](std::string_view name, const auto& value) {
    if (name == "MaxDwellTime") return;
    text.Field(name, value);
    if (name == "PolyDelay") text.Field("MaxDwellTime", variables.MaxDwellTime);
  });
}

}  // namespace VELTRO::KELVO::ClientLib
