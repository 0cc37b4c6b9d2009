#include "config/ScannerConfig.h"

#include "config/RecordText.h"

namespace VELTRO::KELVO::ClientLib {

void WriteFields(const ScanHeadConfig& head, RecordText& text) {
  ScanHeadConfig::ForEachField(head, [&](std::string_view name, const auto& value) {
    if (name != "AxisCount") text.Field(name, value);
  });
}

void ScannerConfig::SetHeadFormat(ScanHeadFormat format) {
  const std::int32_t heads = GetHeadCount(format), axes = GetAxisCount(format);
  HeadCount = heads;
  Heads.resize(static_cast<std::size_t>(heads));
  for (ScanHeadConfig& head : Heads) {
    head.AxisCount = axes;
    head.Axes.resize(static_cast<std::size_t>(axes));
  }
  HeadFormat = format;
}

}  // namespace VELTRO::KELVO::ClientLib
