#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace VELTRO::KELVO::Bench {

inline constexpr const char* kRawServerArgument = "--raw-server";

// The file that the server has under any name, and what is read or written of it at once.
inline constexpr std::size_t kBenchFileSize = std::size_t{64} << 20;
inline constexpr std::size_t kFileChunkSize = 8192;

// The server's whole program: standard output carries the port, and the end of standard input ends it.
int RunRawServer();

// Starts this same program again as a server, this one or that which the arguments say. A new program rather than a bare fork, because by the time the
// second mode starts the code under test may have left threads behind. The server inherits the CPU affinity
// of the calling thread.
class RawServerProcess {
 public:
  explicit RawServerProcess(const std::vector<std::string>& arguments = {kRawServerArgument});
  ~RawServerProcess();
  RawServerProcess(const RawServerProcess&) = delete;
  RawServerProcess& operator=(const RawServerProcess&) = delete;

  std::uint16_t Port() const { return port_; }

 private:
  pid_t pid_ = -1;
  int controlFd_ = -1;
  std::uint16_t port_ = 0;
};

}  // namespace VELTRO::KELVO::Bench
