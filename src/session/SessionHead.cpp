#include "session/SessionHead.h"

#include <cstdio>
#include <string_view>

#include "rpc/JsonForm.h"

namespace VELTRO::KELVO::ClientLib::Recording {

namespace {

void AppendQuoted(std::string& text, std::string_view name, std::string_view value) {
  text.append(",\"").append(name).append("\":");
  JsonForm::AppendString(text, value);
}

std::string UniversalTime(const timespec& time) {
  std::tm parts{};
  gmtime_r(&time.tv_sec, &parts);
  char text[80];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%06ldZ", parts.tm_year + 1900,
                parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                time.tv_nsec / 1000);
  return text;
}

}  // namespace

std::string HeadLine(const SessionHead& head, const timespec& started) {
  std::string text = "{\"kelvoSession\":" + std::to_string(SessionVersion);
  AppendQuoted(text, "started", UniversalTime(started));
  AppendQuoted(text, "by", head.By);
  if (!head.Firmware.empty()) AppendQuoted(text, "firmware", head.Firmware);
  if (!head.SerialNumber.empty()) AppendQuoted(text, "serialNumber", head.SerialNumber);
  if (!head.HasContent) text.append(",\"content\":false");
  return text + "}\n";
}

}  // namespace VELTRO::KELVO::ClientLib::Recording
