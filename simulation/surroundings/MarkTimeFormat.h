// How MARK_TIME writes the time.
#pragma once

#include <string>
#include <string_view>

#include "common/Mutex.h"
#include "config/DateTime.h"

namespace VELTRO::KELVO::Simulation {

// The time as `format` says, in which stand
//   %H %M %S  hour, minute and second          %Y %y %m %d  year, its last two digits, month, day
//   %j        day of the year, three digits    %G %V %u     year and number of the ISO week, day in it from Monday, 1
//   %%        a percent sign
// and what stands for itself. No locale plays a part. Throws std::runtime_error "'%x' is no part of a time.".
std::string TimeText(std::string_view format, const ClientLib::DateTime& time);

// The one that lists use. Any thread may call anything at any time.
class MarkTimeFormat {
 public:
  // Throws as TimeText, or std::runtime_error "The format of a time has 1 to 100 bytes.".
  void Set(std::string format);
  std::string Get();

 private:
  ClientLib::Mutex mutex_;
  std::string format_ KELVO_GUARDED_BY(mutex_) = "%H:%M:%S";
};

}  // namespace VELTRO::KELVO::Simulation
