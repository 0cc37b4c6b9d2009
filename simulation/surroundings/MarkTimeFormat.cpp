#include "surroundings/MarkTimeFormat.h"

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace VELTRO::KELVO::Simulation {

using ClientLib::DateTime;
using ClientLib::MutexLock;

namespace {

constexpr std::size_t MostFormatBytes = 100;
constexpr std::int64_t SecondsPerDay = 86400;

std::string Digits(std::int64_t number, std::size_t count) {
  std::string text = std::to_string(number);
  if (text.size() < count) text.insert(0, count - text.size(), '0');
  return text;
}

struct CalendarTime {
  explicit CalendarTime(const DateTime& time) {
    const std::int64_t seconds = time.GetTicks() / DateTime::TicksPerSecond;
    SecondOfDay = seconds % SecondsPerDay;
    const std::chrono::sys_days begin = std::chrono::year{1} / 1 / 1;
    Days = begin + std::chrono::days(seconds / SecondsPerDay);
    Date = Days;
    WeekDay = std::chrono::weekday(Days).iso_encoding();
    // The year of a week is that of its Thursday.
    const std::chrono::sys_days thursday = Days + std::chrono::days(4) - std::chrono::days(WeekDay);
    WeekYear = std::chrono::year_month_day(thursday).year();
    Week = (thursday - std::chrono::sys_days(WeekYear / 1 / 1)).count() / 7 + 1;
  }

  std::int64_t SecondOfDay;
  std::chrono::sys_days Days;
  std::chrono::year_month_day Date;
  unsigned WeekDay;
  std::chrono::year WeekYear;
  std::int64_t Week;
};

std::string Part(char letter, const CalendarTime& moment) {
  switch (letter) {
    case 'H':
      return Digits(moment.SecondOfDay / 3600, 2);
    case 'M':
      return Digits(moment.SecondOfDay / 60 % 60, 2);
    case 'S':
      return Digits(moment.SecondOfDay % 60, 2);
    case 'd':
      return Digits(unsigned{moment.Date.day()}, 2);
    case 'm':
      return Digits(unsigned{moment.Date.month()}, 2);
    case 'Y':
      return Digits(int{moment.Date.year()}, 4);
    case 'y':
      return Digits(int{moment.Date.year()} % 100, 2);
    case 'j':
      return Digits((moment.Days - std::chrono::sys_days(moment.Date.year() / 1 / 1)).count() + 1, 3);
    case 'G':
      return Digits(int{moment.WeekYear}, 4);
    case 'V':
      return Digits(moment.Week, 2);
    case 'u':
      return Digits(moment.WeekDay, 1);
    case '%':
      return "%";
    default:
      throw std::runtime_error(std::string("'%") + letter + "' is no part of a time.");
  }
}

}  // namespace

std::string TimeText(std::string_view format, const DateTime& time) {
  const CalendarTime moment(time);
  std::string text;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%') {
      text += format[i];
    } else if (++i < format.size()) {
      text += Part(format[i], moment);
    } else {
      throw std::runtime_error("'%' is no part of a time.");
    }
  }
  return text;
}

void MarkTimeFormat::Set(std::string format) {
  if (format.empty() || format.size() > MostFormatBytes) {
    throw std::runtime_error("The format of a time has 1 to 100 bytes.");
  }
  TimeText(format, DateTime());
  const MutexLock lock(mutex_);
  format_ = std::move(format);
}

std::string MarkTimeFormat::Get() {
  const MutexLock lock(mutex_);
  return format_;
}

}  // namespace VELTRO::KELVO::Simulation
