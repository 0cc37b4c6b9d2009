// Files on their way between this machine and a card.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Interrupt.h"
#include "Session.h"
#include "Spinner.h"

namespace VELTRO::KELVO::Tool {

// A transfer's bar, and Ctrl-C, which ends the transfer.
class Transfer {
 public:
  Transfer(Session& session, const Interrupt& interrupt, std::string text)
      : session_(session), interrupt_(interrupt), bar_(session.Out, std::move(text)) {}

  // To be passed to a function of the library, with the transfer itself as `user`.
  static bool Show(void* user, std::uint64_t moved, std::uint64_t whole);
  std::uint64_t Moved() const { return moved_; }
  // Calls the function. Throws Failure: Interrupted after Ctrl-C, else as Session::Check.
  void Run(const std::function<std::int32_t()>& call);

 private:
  Session& session_;
  const Interrupt& interrupt_;
  Bar bar_;
  std::uint64_t moved_ = 0;
};

// Throws Failure, Refused, with the reason for which a local file cannot be sent.
void CheckReadable(const std::string& path);

std::vector<std::string> NamesIn(Session& session, std::int32_t directory);

struct CardFile {
  std::int32_t Directory;
  std::string Name;

  std::string Path() const;  // "JOBFILES/plate.bin"
};

// A file that was sent in part is deleted on the card again; the Failure says so, or that it could not be done.
void SendFile(Session& session, const Interrupt& interrupt, const std::string& local, const CardFile& remote);
// What is at `local` stays unless all of the file has come.
void FetchFile(Session& session, const Interrupt& interrupt, const CardFile& remote,
               const std::string& local);

}  // namespace VELTRO::KELVO::Tool
