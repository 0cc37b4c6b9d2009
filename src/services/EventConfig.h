// Which of its numbered events the card reports.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "config/Record.h"

namespace VELTRO::KELVO::ClientLib {

// The setting of one event: a group of fields without a version.
class EventStatus {
 public:
  KELVO_FIELDS((bool, EnableGlobally, false), (std::set<std::int32_t>, Exclusions, {}))

  std::string ToString() const;
};

class EventConfig : public Record<EventConfig> {
 public:
  static constexpr std::int32_t CurrentConfigVersion = 1;
  static constexpr std::string_view WireName = "EventConfig";
  using Settings = std::map<std::int32_t, EventStatus>;

  static constexpr std::string_view Name = WireName;

  KELVO_FIELDS((Settings, EventSettings, {}))

  // Unlike that of other records, in braces and with the version first.
  std::string ToString() const override;
};

extern template class Record<EventConfig>;

}  // namespace VELTRO::KELVO::ClientLib
