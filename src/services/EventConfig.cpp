#include "services/EventConfig.h"

#include "config/RecordText.h"

namespace VELTRO::KELVO::ClientLib {

template class Record<EventConfig>;

std::string EventStatus::ToString() const {
  RecordText fields;
  WriteFields(*this, fields);
  return "{ " + fields.Take() + " }";
}

std::string EventConfig::ToString() const {
  RecordText fields;
  fields.Field("ConfigVersion", ConfigVersion);
  WriteFields(*this, fields);
  return "{ " + fields.Take() + " }";
}

}  // namespace VELTRO::KELVO::ClientLib
