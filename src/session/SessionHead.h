// What a recorded session begins with.
#pragma once

#include <ctime>
#include <string>

namespace VELTRO::KELVO::ClientLib::Recording {

inline constexpr int SessionVersion = 1;

// What the first line tells.
struct SessionHead {
  std::string By;  // who recorded it
  // Of the card, where a recording begins behind the calls that ask for them.
  std::string Firmware;
  std::string SerialNumber;
  bool HasContent = true;  // of files
};

// The first line, line end included, of a recording that began at this time.
std::string HeadLine(const SessionHead& head, const timespec& started);

}  // namespace VELTRO::KELVO::ClientLib::Recording
