// What the user says to the card on standard input while it runs, a line a word of command:
//   input PORT VALUE    sets the bits of an input port
//   start               gives the start input that WAIT_START waits for
//   signal NAME         sets a signal
//   resume              ends a SUSPEND
//   fault TEXT          sets a fault or ends it, see Faults::Set; without TEXT tells which there are
#pragma once

#include <string>
#include <string_view>
#include <thread>

#include "base/Wake.h"
#include "card/Card.h"
#include "common/Mutex.h"

namespace VELTRO::KELVO::VirtualCard {

// Reads in a thread of its own, to the end of standard input and no longer than the object lives.
class StandardInput {
 public:
  StandardInput(Card& card);
  ~StandardInput();
  StandardInput(const StandardInput&) = delete;
  StandardInput& operator=(const StandardInput&) = delete;

 private:
  static constexpr std::size_t MostLineBytes = 4096;

  void Work();
  void ReadAll();
  bool IsStopping();
  // Carries out the lines that the bytes complete.
  void Take(std::string_view bytes);
  void EndLine();

  Card& card_;
  Wake wake_;
  std::string line_;  // as far as it has come; a longer one is cut

  ClientLib::Mutex mutex_;
  ClientLib::CondVar changed_;
  bool stopping_ KELVO_GUARDED_BY(mutex_) = false;
  bool ended_ KELVO_GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace VELTRO::KELVO::VirtualCard
