#include "card/TimeZones.h"

#include <algorithm>
#include <stdexcept>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::TimeZone;

std::vector<TimeZone> SupportedTimeZones() {
  return {
      {"Pacific/Honolulu", "(UTC-10:00) Hawaii", -600},
      {"America/Los_Angeles", "(UTC-08:00) Pacific Time", -480},
      {"America/Denver", "(UTC-07:00) Mountain Time", -420},
      {"America/Chicago", "(UTC-06:00) Central Time", -360},
      {"America/New_York", "(UTC-05:00) Eastern Time", -300},
      {"America/Sao_Paulo", "(UTC-03:00) Brasilia", -180},
      {"UTC", "(UTC) Coordinated Universal Time", 0},
      {"Europe/London", "(UTC+00:00) London, Dublin, Lisbon", 0},
      {"Europe/Berlin", "(UTC+01:00) Berlin, Paris, Rome, Madrid", 60},
      {"Europe/Athens", "(UTC+02:00) Athens, Helsinki, Bucharest", 120},
      {"Europe/Istanbul", "(UTC+03:00) Istanbul", 180},
      {"Asia/Dubai", "(UTC+04:00) Abu Dhabi, Muscat", 240},
      {"Asia/Kolkata", "(UTC+05:30) Chennai, Kolkata, Mumbai, New Delhi", 330},
      {"Asia/Kathmandu", "(UTC+05:45) Kathmandu", 345},
      {"Asia/Bangkok", "(UTC+07:00) Bangkok, Hanoi, Jakarta", 420},
      {"Asia/Shanghai", "(UTC+08:00) Beijing, Hong Kong, Singapore", 480},
      {"Asia/Tokyo", "(UTC+09:00) Tokyo, Seoul", 540},
      {"Australia/Sydney", "(UTC+10:00) Sydney, Melbourne", 600},
      {"Pacific/Auckland", "(UTC+12:00) Auckland, Wellington", 720},
  };
}

TimeZone FindTimeZone(const std::string& name) {
  const std::vector<TimeZone> zones = SupportedTimeZones();
  const auto found = std::ranges::find(zones, name, &TimeZone::Name);
  if (found == zones.end()) throw std::runtime_error("There is no time zone '" + name + "'.");
  return *found;
}

}  // namespace VELTRO::KELVO::VirtualCard
