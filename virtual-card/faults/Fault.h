// A fault that somebody asked for, so that an application's authors can test what it does about it.
//   SetList:error=Out of memory         every SetList fails with this text
//   *:connection=2:from=10:drop         the second connection ends with its tenth call
//   ListIdle:chance=0.1:silent          one in ten of these notifications is not sent
#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace VELTRO::KELVO::VirtualCard {

enum class FaultAction { Error, Delay, Drop, Silent, Garbage, Truncate, Reorder, Slow };
// What it befalls: a request before it is carried out, or what the card sends.
enum class FaultSide { Request, Answer };

struct Fault {
  static constexpr std::string_view AllRequests = "*", AllNotifications = "notification";
  static constexpr std::uint64_t Always = std::numeric_limits<std::uint64_t>::max();

  std::string Text;    // as it was asked for
  std::string Target;  // a method, a kind of notification, or all of either
  FaultAction Action = FaultAction::Silent;
  FaultSide Side = FaultSide::Request;
  std::uint64_t Connection = 0;  // counted from 1; 0: all
  std::uint64_t From = 1;        // the first call that it may befall, counted since it was asked for
  std::uint64_t Count = Always;  // calls that it befalls at most
  double Chance = 1;
  std::string ErrorText;               // of an error
  std::chrono::microseconds Delay{0};  // of a delay, and the longest of a reorder
  double Rate = 0;                     // of a slow one: bytes in a second
};

constexpr std::size_t MostFaultBytes = 1000;

// "TARGET[:CONDITION...]:ACTION". Throws std::invalid_argument, which says what is wrong and what is allowed.
Fault ParseFault(std::string_view text);
// Throws std::invalid_argument when there is no such target.
void CheckFaultTarget(std::string_view target);

// The target that stands for a notification, by its frame.
std::string_view NotificationTarget(const unsigned char* frame, std::size_t size);

}  // namespace VELTRO::KELVO::VirtualCard
