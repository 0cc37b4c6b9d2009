// Programs of ours as child processes: the virtual card on a port of its own.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace VELTRO::KELVO::Test {

// A running program whose output is read through a pipe. It is ended with the object.
class ChildProcess {
 public:
  ChildProcess(const char* program, std::vector<std::string> arguments);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // The next line of stdout, or "" when none comes in time or the output has ended.
  std::string ReadLine();
  void Signal(int signal);
  bool IsRunning() const { return pid_ > 0; }
  // Waits for the end and returns the exit code; -1 when it does not come in time, or came by a signal.
  int WaitForExit();
  // All that it wrote to stderr.
  std::string ReadErrors() const;

 private:
  pid_t pid_ = -1;
  int output_ = -1;
  int errors_ = -1;
};

// The virtual card on a free port. At the end it is asked to end, and the test fails unless it does so in
// order.
class CardProcess : public ChildProcess {
 public:
  explicit CardProcess(std::vector<std::string> arguments = {});
  ~CardProcess();
  const std::string& GetAddress() const { return address_; }
  int GetPort() const { return port_; }

 private:
  std::string address_;
  int port_ = 0;
};

}  // namespace VELTRO::KELVO::Test
