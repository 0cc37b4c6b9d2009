// Which events the card reports.
#pragma once

#include "config/RecordAPI.h"
#include "services/EventConfig.h"

namespace VELTRO::KELVO::ClientLib {

class EventAPI : public RecordAPI<EventConfig> {
 public:
  using RecordAPI::RecordAPI;
};

}  // namespace VELTRO::KELVO::ClientLib
